#include "browser/StatusTexts.h"

#include "browser/BrowserList.h"
#include "i18n/i18n.h"
#include "platform/TextFormat.h"

using namespace Qt::StringLiterals;

namespace lanmira {
namespace {

QString fileName(const QString& path) {
    return path.mid(path.lastIndexOf(u'/') + 1);
}

QString folderOf(const QString& path) {
    return path.left(path.lastIndexOf(u'/') + 1);
}

QString nameText(const BrowserItem& item) {
    QString text = fileName(item.path);
    if (item.isShortcut()) {
        const QString& target = item.linkTarget;
        text += u" --> "_s + (folderOf(target) == folderOf(item.path) ? fileName(target) : target);
    }
    return text;
}

// Empty unless every selected item has been looked at and all agree in depth and size.
QString imageText(const std::vector<const BrowserItem*>& selected) {
    if (selected.empty())
        return {};
    for (const BrowserItem* item : selected) {
        if (!item->thumbnailDone())
            return i18n_stringW("ids_lanmira_status_waiting");
    }
    const BrowserItem& first = *selected.front();
    for (const BrowserItem* item : selected) {
        if (item->bitsPerPixel != first.bitsPerPixel || item->imageWidth != first.imageWidth ||
            item->imageHeight != first.imageHeight)
            return {};
    }
    return formatText(i18n_stringW("ids_lanmira_status_image"),
                      {first.bitsPerPixel, first.imageWidth, first.imageHeight});
}

} // namespace

StatusTexts StatusTexts::of(const BrowserList& list) {
    const auto& items = list.items();
    const int count = static_cast<int>(items.size());
    std::vector<const BrowserItem*> selected;
    int firstIndex = -1;
    for (int k = 0; k < count; ++k) {
        if (!items[k]->selected())
            continue;
        if (firstIndex < 0)
            firstIndex = k;
        selected.push_back(items[k].get());
    }

    StatusTexts texts;
    const int n = static_cast<int>(selected.size());
    if (n == 1) {
        texts.position =
            formatText(i18n_stringW("ids_lanmira_status_position"), {firstIndex + 1, count});
        texts.name = nameText(*selected.front());
    } else {
        texts.position = formatText(i18n_stringW("ids_lanmira_status_selection"), {n, count});
    }
    texts.image = imageText(selected);
    return texts;
}

} // namespace lanmira

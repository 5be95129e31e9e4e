#include "viewer/ImageNavigator.h"

#include "browser/BrowserList.h"
#include "viewer/ViewerReceiver.h"

#include <algorithm>
#include <mutex>
#include <optional>

namespace lanmira {

namespace {

using Items = std::vector<std::unique_ptr<BrowserItem>>;

int firstSelected(const Items& items) {
    const auto it =
        std::find_if(items.begin(), items.end(), [](const auto& item) { return item->selected(); });
    return it == items.end() ? -1 : static_cast<int>(it - items.begin());
}

// Where a step from `s` goes in a list of `count`, or nothing when `s` is at that end.
std::optional<int> target(ImageNavigator::Step step, int s, int count) {
    switch (step) {
    case ImageNavigator::Step::First:
        return s != 0 ? std::optional(0) : std::nullopt;
    case ImageNavigator::Step::Previous:
        return s > 0 ? std::optional(s - 1) : std::nullopt;
    case ImageNavigator::Step::Next:
        return s < count - 1 ? std::optional(s + 1) : std::nullopt;
    case ImageNavigator::Step::Last:
        return s != count - 1 ? std::optional(count - 1) : std::nullopt;
    }
    return std::nullopt;
}

struct Pick {
    QString path;
    QString linkTarget;
};

// Selects the item and returns what to hand to the receiver; the caller holds the lock.
Pick select(BrowserItem& item) {
    item.setSelected(true);
    return {item.path, item.linkTarget};
}

void deliver(const std::optional<Pick>& pick) {
    if (pick)
        ViewerReceiver::deliver(pick->path, pick->linkTarget);
}

} // namespace

ImageNavigator::ImageNavigator(BrowserList& list) : m_list(list) {}

bool ImageNavigator::canStep(Step step) const {
    std::lock_guard lock(m_list.lock());
    if (m_list.selectedCount() != 1)
        return false;
    const Items& items = m_list.items();
    return target(step, firstSelected(items), static_cast<int>(items.size())).has_value();
}

void ImageNavigator::step(Step step) {
    // Deliberately not limited to a single selection: the slide show steps from the first
    // selected item even when the commands are disabled.
    std::optional<Pick> pick;
    {
        std::lock_guard lock(m_list.lock());
        Items& items = m_list.items();
        const int s = firstSelected(items);
        if (s < 0)
            return;
        const auto to = target(step, s, static_cast<int>(items.size()));
        if (!to)
            return;
        items[s]->setSelected(false);
        if (ViewerReceiver::isSet())
            pick = select(*items[*to]);
    }
    // Opening decodes a picture; the list must not stay locked that long.
    deliver(pick);
}

void ImageNavigator::showPosition(int position) {
    std::optional<Pick> pick;
    {
        std::lock_guard lock(m_list.lock());
        Items& items = m_list.items();
        if (const int s = firstSelected(items); s >= 0)
            items[s]->setSelected(false);
        if (items.empty())
            return;
        const int at = std::clamp(position, 0, static_cast<int>(items.size()) - 1);
        if (ViewerReceiver::isSet())
            pick = select(*items[at]);
    }
    deliver(pick);
}

bool ImageNavigator::selectShownFile(const QString& filePath) {
    if (filePath.isEmpty())
        return false;
    std::lock_guard lock(m_list.lock());
    Items& items = m_list.items();
    const auto found = std::find_if(items.begin(), items.end(), [&](const auto& item) {
        return item->path.compare(filePath, Qt::CaseInsensitive) == 0;
    });
    if (found == items.end())
        return false;
    for (auto& item : items)
        item->setSelected(false);
    (*found)->setSelected(true);
    return true;
}

bool ImageNavigator::openSelected() {
    std::optional<Pick> pick;
    {
        std::lock_guard lock(m_list.lock());
        if (m_list.selectedCount() != 1 || !ViewerReceiver::isSet())
            return false;
        const BrowserItem& only = *m_list.items()[firstSelected(m_list.items())];
        pick = Pick{only.path, only.linkTarget};
    }
    deliver(pick);
    return true;
}

} // namespace lanmira

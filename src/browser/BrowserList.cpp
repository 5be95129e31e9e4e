#include "browser/BrowserList.h"

#include "browser/FileNames.h"
#include "browser/FormatLookup.h"

#include <sys/stat.h>

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <numeric>

namespace lanmira {

namespace {

struct DirCloser {
    void operator()(DIR* dir) const { ::closedir(dir); }
};
using DirHandle = std::unique_ptr<DIR, DirCloser>;

enum class EntryKind { Other, Regular, Symlink };

// The directory entry's own type saves a stat per file; only file systems that do not
// report it cost one.
EntryKind kindOf(DIR* dir, const dirent* entry) {
    switch (entry->d_type) {
    case DT_REG:
        return EntryKind::Regular;
    case DT_LNK:
        return EntryKind::Symlink;
    case DT_UNKNOWN: {
        struct stat st {};
        if (::fstatat(::dirfd(dir), entry->d_name, &st, AT_SYMLINK_NOFOLLOW) != 0)
            return EntryKind::Other;
        if (S_ISREG(st.st_mode))
            return EntryKind::Regular;
        return S_ISLNK(st.st_mode) ? EntryKind::Symlink : EntryKind::Other;
    }
    default:
        // Folders are never items; fifos and devices would block whoever opens them.
        return EntryKind::Other;
    }
}

// Lists the images of `list.currentFolder` in directory order. `wanted(name)` is asked
// first, before any shortcut is resolved; `add` receives each new item.
template <typename Wanted, typename Add>
void scanFolder(const BrowserList& list, Wanted wanted, Add add) {
    QString folder = list.currentFolder;
    if (folder.isEmpty())
        return;
    if (!folder.endsWith(u'/'))
        folder += u'/';
    const DirHandle dir(::opendir(filenames::encode(folder).constData()));
    if (!dir)
        return;
    while (const dirent* entry = ::readdir(dir.get())) {
        const EntryKind kind = kindOf(dir.get(), entry);
        if (kind == EntryKind::Other)
            continue;
        // Names that are not UTF-8 are listed too: the decoding keeps their bytes.
        const QString name = filenames::decode(QByteArray(entry->d_name));
        if (!wanted(name))
            continue;
        QString path = folder + name;
        QString target;
        const std::int32_t format =
            FormatLookup::formatOfEntry(path, kind == EntryKind::Symlink, &target);
        if (format == 0)
            continue;
        const auto absolute = static_cast<std::uint32_t>(format < 0 ? -format : format);
        if (!list.listed(absolute))
            continue;
        add(std::make_unique<BrowserItem>(std::move(path), absolute,
                                          format < 0 ? std::move(target) : QString()));
    }
}

int compareInts(std::int32_t a, std::int32_t b) {
    return (a > b) - (a < b);
}

// Wraps like the 32-bit product it stands for: huge images may sort before small ones.
std::int32_t pixelCount(const BrowserItem& item) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(item.imageWidth) *
                                     static_cast<std::uint32_t>(item.imageHeight));
}

int compareNames(const BrowserItem& a, const BrowserItem& b) {
    if (const int c = QString::compare(a.path, b.path, Qt::CaseInsensitive))
        return c;
    // Linux names may differ in case alone; this keeps the order total so that descending
    // stays the exact reverse of ascending.
    return QString::compare(a.path, b.path, Qt::CaseSensitive);
}

int compareExtensions(const BrowserItem& a, const BrowserItem& b) {
    const QStringView ea = FormatLookup::extensionOf(a.path);
    const QStringView eb = FormatLookup::extensionOf(b.path);
    if (ea.isNull() || eb.isNull())
        return int(eb.isNull()) - int(ea.isNull());
    return ea.compare(eb, Qt::CaseInsensitive);
}

// Three-way ascending order; the ranks are only read for the Type key.
int compareAscending(const BrowserItem& a, int rankA, const BrowserItem& b, int rankB,
                     std::int32_t key) {
    int c = 0;
    switch (static_cast<SortKey>(key)) {
    case SortKey::Type:
        c = compareInts(rankA, rankB);
        break;
    case SortKey::Size:
        c = compareInts(pixelCount(a), pixelCount(b));
        if (c == 0)
            c = compareInts(a.imageWidth, b.imageWidth);
        break;
    case SortKey::Width:
        c = compareInts(a.imageWidth, b.imageWidth);
        if (c == 0)
            c = compareInts(a.imageHeight, b.imageHeight);
        break;
    case SortKey::Height:
        c = compareInts(a.imageHeight, b.imageHeight);
        if (c == 0)
            c = compareInts(a.imageWidth, b.imageWidth);
        break;
    case SortKey::Extension:
        c = compareExtensions(a, b);
        break;
    case SortKey::Name:
        break;
    }
    return c != 0 ? c : compareNames(a, b);
}

std::int32_t validKey(std::int32_t key) {
    return key >= 0 && key <= static_cast<std::int32_t>(SortKey::Extension) ? key : 0;
}

int rankOf(const BrowserItem& item) {
    return FormatLookup::typeRank(item.imagePath());
}

QStringView fileNameOf(const QString& path) {
    return QStringView(path).mid(path.lastIndexOf(u'/') + 1);
}

} // namespace

BrowserList& BrowserList::instance() {
    static BrowserList list;
    return list;
}

BrowserList::BrowserList() {
    formatFilter.fill(kDefaultFormatWord);
}

bool BrowserList::listed(std::uint32_t format) const {
    return format < formatFilter.size() && (formatFilter[format] & 1) != 0;
}

void BrowserList::clear() {
    touch();
    m_items.clear();
}

void BrowserList::fullScan() {
    touch();
    m_items.clear();
    scanFolder(
        *this, [](const QString&) { return true; },
        [this](std::unique_ptr<BrowserItem> item) { m_items.push_back(std::move(item)); });
}

bool BrowserList::rescanForAdditions() {
    touch();
    std::vector<QStringView> known;
    known.reserve(m_items.size());
    for (const auto& item : m_items)
        known.push_back(fileNameOf(item->path));
    std::sort(known.begin(), known.end());

    // Names on Linux are case-sensitive, so "a.jpg" beside "A.jpg" is a new file.
    const std::size_t before = m_items.size();
    std::vector<std::unique_ptr<BrowserItem>> added;
    scanFolder(
        *this,
        [&known](const QString& name) {
            return !std::binary_search(known.begin(), known.end(), QStringView(name));
        },
        [&added](std::unique_ptr<BrowserItem> item) { added.push_back(std::move(item)); });
    // `known` views the existing paths, so the list grows only after the scan.
    for (auto& item : added)
        m_items.push_back(std::move(item));
    return m_items.size() > before;
}

bool BrowserList::before(const BrowserItem& a, const BrowserItem& b, std::int32_t key,
                         std::int32_t direction) {
    key = validKey(key);
    const bool byType = key == static_cast<std::int32_t>(SortKey::Type);
    const int c = compareAscending(a, byType ? rankOf(a) : 0, b, byType ? rankOf(b) : 0, key);
    return direction == 1 ? c > 0 : c < 0;
}

bool BrowserList::sort() {
    touch();
    const std::int32_t key = validKey(sortKey);
    const bool descending = sortDirection == 1;
    const std::size_t n = m_items.size();

    // The type rank walks the format table; doing that once per item instead of once per
    // comparison keeps large folders quick.
    std::vector<int> ranks(n, 0);
    if (key == static_cast<std::int32_t>(SortKey::Type)) {
        for (std::size_t i = 0; i < n; ++i)
            ranks[i] = rankOf(*m_items[i]);
    }

    std::vector<std::size_t> order(n);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) {
        const int c = compareAscending(*m_items[i], ranks[i], *m_items[j], ranks[j], key);
        return descending ? c > 0 : c < 0;
    });

    bool changed = false;
    for (std::size_t i = 0; i < n && !changed; ++i)
        changed = order[i] != i;
    if (!changed)
        return false;

    std::vector<std::unique_ptr<BrowserItem>> sorted;
    sorted.reserve(n);
    for (const std::size_t i : order)
        sorted.push_back(std::move(m_items[i]));
    m_items = std::move(sorted);
    return true;
}

void BrowserList::selectAll() {
    for (const auto& item : m_items)
        item->setSelected(true);
}

void BrowserList::invertSelection() {
    for (const auto& item : m_items)
        item->setSelected(!item->selected());
}

int BrowserList::selectedCount() const {
    return static_cast<int>(std::count_if(m_items.begin(), m_items.end(),
                                          [](const auto& item) { return item->selected(); }));
}

std::vector<QString> BrowserList::selectedPaths() const {
    std::vector<QString> paths;
    for (const auto& item : m_items) {
        if (item->selected())
            paths.push_back(item->path);
    }
    return paths;
}

bool BrowserList::removeSelectedGone() {
    touch();
    const auto gone = [](const std::unique_ptr<BrowserItem>& item) {
        if (!item->selected())
            return false;
        struct stat st {};
        // A shortcut item is its link: a link whose target vanished is still there.
        if (::lstat(filenames::encode(item->path).constData(), &st) == 0)
            return false;
        // Any other failure (a folder we may no longer read) does not prove it is gone.
        return errno == ENOENT || errno == ENOTDIR;
    };
    return std::erase_if(m_items, gone) > 0;
}

int BrowserList::removePath(const QString& path) {
    touch();
    const auto it = std::find_if(m_items.begin(), m_items.end(),
                                 [&path](const auto& item) { return item->path == path; });
    if (it == m_items.end())
        return -1;
    const auto index = static_cast<int>(it - m_items.begin());
    m_items.erase(it);
    return index;
}

} // namespace lanmira

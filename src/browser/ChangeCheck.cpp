#include "browser/ChangeCheck.h"

#include "browser/BrowserList.h"
#include "browser/thumbnails/ThumbnailCache.h"

#include <QElapsedTimer>

#include <algorithm>

namespace lanmira {
namespace {

// A change check that took this long skips looking for new files this time.
constexpr int kRescanBudgetMs = 2000;

} // namespace

ChangeCheck::Outcome ChangeCheck::run(BrowserList& list, ThumbnailCache& cache,
                                      const QElapsedTimer& clock) {
    Outcome out;
    list.touch();
    auto& items = list.items();
    const std::size_t before = items.size();
    const auto gone = [&](const std::unique_ptr<BrowserItem>& item) {
        switch (cache.checkForChange(*item, list)) {
        case ThumbnailCache::Gone:
            return true;
        case ThumbnailCache::Changed:
            out.changed = true;
            return false;
        case ThumbnailCache::Unchanged:
            break;
        }
        return false;
    };
    items.erase(std::remove_if(items.begin(), items.end(), gone), items.end());
    out.removed = items.size() != before;
    out.added = clock.elapsed() < kRescanBudgetMs && list.rescanForAdditions();
    return out;
}

} // namespace lanmira

#include "browser/grid/GridLayout.h"

#include "browser/BrowserList.h"

#include <algorithm>

namespace lanmira {
namespace {

int rowsFor(int count, int columns) {
    return (count + columns - 1) / columns;
}

} // namespace

GridLayout::Result GridLayout::compute(const Input& in) {
    Result r;
    if (in.itemCount <= 0)
        return r;
    const QSize cell = cellSize(in.largeMode);
    // The width without bars, so the columns do not depend on which bars happen to be
    // shown. Adding the horizontal bar's height (not a width) is an old quirk, kept on
    // purpose so grids look the same as they always have.
    int usable = in.client.width();
    if (in.verticalBarShown)
        usable += in.verticalBarWidth;
    if (in.horizontalBarShown)
        usable += in.horizontalBarHeight;
    r.columns = std::max(1, usable / cell.width());
    r.rows = rowsFor(in.itemCount, r.columns);
    if (static_cast<long long>(r.rows) * cell.height() > in.client.height()) {
        r.columns = std::max(1, (usable - in.verticalBarWidth) / cell.width());
        r.rows = rowsFor(in.itemCount, r.columns);
    }
    r.scrollSize = QSize(r.columns * cell.width(), r.rows * cell.height());
    return r;
}

QRect GridLayout::cellRect(int index, int columns, bool largeMode) {
    const QSize cell = cellSize(largeMode);
    if (columns <= 0)
        return {};
    return QRect(QPoint(index % columns * cell.width(), index / columns * cell.height()), cell);
}

int GridLayout::changeCheckPeriod(int itemCount) {
    return std::min(4000, (std::max(0, itemCount) / 1000 + 2) * 1000);
}

int GridLayout::firstVisible(int scrollY, int columns, bool largeMode) {
    return std::max(0, scrollY / cellSize(largeMode).height() * columns);
}

GridLayout::Result GridLayout::layOut(BrowserList& list, const Input& in) {
    auto& items = list.items();
    Input counted = in;
    counted.itemCount = static_cast<int>(items.size());
    const Result r = compute(counted);
    for (std::size_t k = 0; k < items.size(); ++k) {
        const QRect cell = cellRect(static_cast<int>(k), r.columns, in.largeMode);
        (in.largeMode ? items[k]->largeCell : items[k]->smallCell) = cell;
    }
    return r;
}

int GridLayout::hitTest(const BrowserList& list, QPoint documentPoint) {
    const bool large = list.largeMode != 0;
    const int inset = large ? kLargeInset : kSmallInset;
    const auto& items = list.items();
    for (std::size_t k = 0; k < items.size(); ++k) {
        if (items[k]->cell(large).adjusted(inset, inset, -inset, -inset).contains(documentPoint))
            return static_cast<int>(k);
    }
    return -1;
}

} // namespace lanmira

#include "browser/grid/GridSelection.h"

#include "browser/BrowserList.h"
#include "browser/grid/GridLayout.h"

#include <algorithm>
#include <cstdlib>

namespace lanmira {
namespace {

// The drag starts once the mouse leaves a 16 × 16 square around the press.
constexpr int kDragHalfSquare = 8;

} // namespace

bool GridSelection::press(QPoint documentPoint, QPoint viewportPoint, bool control,
                          const CellChanged& changed) {
    const int k = GridLayout::hitTest(m_list, documentPoint);
    if (k < 0) {
        setState(State::Banding);
        m_anchor = m_current = documentPoint;
        return false;
    }
    setState(State::PressedOnItem);
    m_pressPos = viewportPoint;
    BrowserItem& item = *m_list.items()[k];
    if (item.selected())
        return false;
    if (!control)
        clear(changed);
    item.setSelected(true);
    changed(k);
    return true;
}

bool GridSelection::pressForMenu(QPoint documentPoint, const CellChanged& changed) {
    const int k = GridLayout::hitTest(m_list, documentPoint);
    if (k < 0 || m_list.items()[k]->selected())
        return false;
    clear(changed);
    m_list.items()[k]->setSelected(true);
    changed(k);
    return true;
}

bool GridSelection::leavesDragSquare(QPoint viewportPoint) {
    if (m_state != State::PressedOnItem)
        return false;
    const QPoint moved = viewportPoint - m_pressPos;
    if (std::abs(moved.x()) <= kDragHalfSquare && std::abs(moved.y()) <= kDragHalfSquare)
        return false;
    setState(State::Idle);
    return true;
}

bool GridSelection::moveBand(QPoint documentPoint, bool adding, const CellChanged& changed) {
    if (m_state != State::Banding)
        return false;
    m_current = documentPoint;
    const QRect band = bandRect();
    const bool large = m_list.largeMode != 0;
    const auto& items = m_list.items();
    bool any = false;
    for (int k = 0; k < static_cast<int>(items.size()); ++k) {
        BrowserItem& item = *items[k];
        // A band with no width or no height covers no pixel, even where it lies on a cell.
        const bool inside = !band.isEmpty() && item.cell(large).intersects(band);
        if (inside == item.selected() || (!inside && adding))
            continue;
        item.setSelected(inside);
        changed(k);
        any = true;
    }
    return any;
}

bool GridSelection::release() {
    // A drag's end is reported by endDrag(), once the drag loop has returned.
    if (m_state == State::Dragging)
        return false;
    const bool wasBanding = m_state == State::Banding;
    setState(State::Idle);
    return wasBanding;
}

void GridSelection::beginDrag() {
    setState(State::Dragging);
}

void GridSelection::endDrag() {
    if (m_state == State::Dragging)
        setState(State::Idle);
}

QRect GridSelection::bandRect() const {
    const QPoint topLeft(std::min(m_anchor.x(), m_current.x()),
                         std::min(m_anchor.y(), m_current.y()));
    const QPoint farCorner(std::max(m_anchor.x(), m_current.x()),
                           std::max(m_anchor.y(), m_current.y()));
    return QRect(topLeft, QSize(farCorner.x() - topLeft.x(), farCorner.y() - topLeft.y()));
}

void GridSelection::clear(const CellChanged& changed) {
    const auto& items = m_list.items();
    for (int k = 0; k < static_cast<int>(items.size()); ++k) {
        if (items[k]->selected()) {
            items[k]->setSelected(false);
            changed(k);
        }
    }
}

const BrowserItem* GridSelection::onlySelected() const {
    const BrowserItem* only = nullptr;
    for (const auto& item : m_list.items()) {
        if (!item->selected())
            continue;
        if (only)
            return nullptr;
        only = item.get();
    }
    return only;
}

} // namespace lanmira

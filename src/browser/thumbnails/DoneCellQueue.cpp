#include "browser/thumbnails/DoneCellQueue.h"

namespace lanmira {

bool DoneCellQueue::push(int index) {
    std::lock_guard lock(m_lock);
    m_cells.push_back(index);
    if (m_flushQueued)
        return false;
    m_flushQueued = true;
    return true;
}

std::vector<int> DoneCellQueue::take() {
    std::vector<int> cells;
    std::lock_guard lock(m_lock);
    cells.swap(m_cells);
    m_flushQueued = false;
    return cells;
}

} // namespace lanmira

#pragma once

#include <mutex>
#include <vector>

namespace lanmira {

// The cells the worker has finished, handed from its thread to the GUI thread in batches:
// one flush is queued however many cells finish before the event loop gets to it.
class DoneCellQueue {
public:
    // Worker thread. True for the first cell after a take(): the caller queues a flush.
    bool push(int index);
    // GUI thread: the cells reported since the last take, in order.
    std::vector<int> take();

private:
    // Guards m_cells and m_flushQueued.
    std::mutex m_lock;
    std::vector<int> m_cells;
    bool m_flushQueued = false;
};

} // namespace lanmira

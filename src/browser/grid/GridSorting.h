#pragma once

#include <cstdint>

namespace lanmira {

class BrowserList;

// How the grid is sorted. No sorting until the worker has finished the folder once: the
// size keys would sort on sizes not yet known. Runs on the GUI thread.
class GridSorting {
public:
    // What the view does after a choice: lay out again and tell of the change, save the
    // settings.
    struct Effect {
        bool relayout = false;
        bool save = false;
    };

    explicit GridSorting(BrowserList& list) : m_list(list) {}

    // The sort key a command chooses; -1 for any other command.
    static int keyOfCommand(int commandId);
    // The toolbar's cycle by key: Name, Extension, Type, Size, Width, Height, Name.
    static int nextInCycle(int key);
    // Keys on sizes that only the worker learns: sorting on them waits for it.
    static bool sortsOnSize(std::int32_t key);

    Effect chooseKey(int key);
    Effect chooseDirection(int direction);
    Effect cycleKey();
    // The worker finished a pass: a size key sorts now that the sizes are known. True when
    // items moved.
    bool sortBySizes();
    // The periodic check added or removed items: choosing the current key again re-sorts.
    void listChanged() { m_forceResort = true; }

private:
    bool sortLocked();

    BrowserList& m_list;
    bool m_forceResort = false;
};

} // namespace lanmira

#include "browser/grid/GridSorting.h"

#include "browser/BrowserList.h"
#include "platform/CommandIds.h"

#include <utility>

namespace lanmira {

int GridSorting::keyOfCommand(int commandId) {
    static constexpr std::pair<int, SortKey> kKeys[] = {
        {cmd::ID_SORT_BY_NAME, SortKey::Name},     {cmd::ID_SORT_BY_TYPE, SortKey::Type},
        {cmd::ID_SORT_BY_SIZE, SortKey::Size},     {cmd::ID_SORT_BY_WIDTH, SortKey::Width},
        {cmd::ID_SORT_BY_HEIGHT, SortKey::Height}, {cmd::ID_SORT_BY_EXTENSION, SortKey::Extension}};
    for (const auto& [command, key] : kKeys) {
        if (command == commandId)
            return static_cast<int>(key);
    }
    return -1;
}

int GridSorting::nextInCycle(int key) {
    static constexpr int kNext[6] = {5, 2, 3, 4, 0, 1};
    return key >= 0 && key < 6 ? kNext[key] : 0;
}

bool GridSorting::sortsOnSize(std::int32_t key) {
    return key == static_cast<int>(SortKey::Size) || key == static_cast<int>(SortKey::Width) ||
           key == static_cast<int>(SortKey::Height);
}

bool GridSorting::sortLocked() {
    std::lock_guard lock(m_list.lock());
    return m_list.sort();
}

GridSorting::Effect GridSorting::chooseKey(int key) {
    if (m_list.thumbnailsComplete.load() == 0)
        return {};
    Effect effect;
    if (key != m_list.sortKey || m_forceResort) {
        m_list.sortKey = key;
        sortLocked();
        effect = {true, true};
    }
    m_forceResort = false;
    return effect;
}

GridSorting::Effect GridSorting::chooseDirection(int direction) {
    if (m_list.thumbnailsComplete.load() == 0 || direction == m_list.sortDirection)
        return {};
    m_list.sortDirection = direction;
    return {sortLocked(), true};
}

GridSorting::Effect GridSorting::cycleKey() {
    if (m_list.thumbnailsComplete.load() == 0)
        return {};
    m_list.sortKey = nextInCycle(m_list.sortKey);
    sortLocked();
    return {true, true};
}

bool GridSorting::sortBySizes() {
    return sortsOnSize(m_list.sortKey) && sortLocked();
}

} // namespace lanmira

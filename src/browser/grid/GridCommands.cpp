#include "browser/grid/GridCommands.h"

#include "browser/BrowserList.h"
#include "browser/fileops/FileOperations.h"
#include "browser/grid/GridSorting.h"
#include "platform/CommandIds.h"
#include "platform/CommandTarget.h"

namespace lanmira {

bool GridCommands::update(int commandId, CommandState& state, const BrowserList& list,
                          FileOperations& fileOps) {
    if (const int key = GridSorting::keyOfCommand(commandId); key >= 0) {
        state.setCheck(list.sortKey == key);
        return true;
    }
    switch (commandId) {
    case cmd::ID_SORT_ASCENDING:
    case cmd::ID_SORT_DESCENDING:
        state.setCheck(list.sortDirection == (commandId == cmd::ID_SORT_DESCENDING ? 1 : 0));
        return true;
    case cmd::ID_LARGE_ICONS:
    case cmd::ID_SMALL_ICONS:
        state.setCheck((list.largeMode != 0) == (commandId == cmd::ID_LARGE_ICONS));
        return true;
    case cmd::ID_DELETE:
    case cmd::ID_FILES_CUT:
    case cmd::ID_FILES_COPY:
        state.enabled = list.selectedCount() > 0;
        return true;
    case cmd::ID_MULTIPAGE_TIFF:
        state.enabled = list.selectedCount() > 0 && fileOps.state() == FileOperations::State::Idle;
        return true;
    case cmd::ID_FILES_PASTE:
        state.enabled = fileOps.canPaste(list.currentFolder);
        return true;
    case cmd::ID_FILES_PASTE_SHORTCUT:
        state.enabled = fileOps.canPasteShortcut(list.currentFolder);
        return true;
    case cmd::ID_BROWSER_REFRESH:
    case cmd::ID_BROWSER_SORT_CYCLE:
    case cmd::ID_BROWSER_TOGGLE_ICONS:
    case cmd::ID_SELECT_ALL:
    case cmd::ID_INVERT_SELECTION:
        state.enabled = true;
        return true;
    default:
        return false;
    }
}

} // namespace lanmira

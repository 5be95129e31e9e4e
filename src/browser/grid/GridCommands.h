#pragma once

namespace lanmira {

class BrowserList;
class FileOperations;
struct CommandState;

// When each of the grid's commands is enabled or checked.
class GridCommands {
public:
    // Fills in the state of the grid's own commands; false for any other command.
    static bool update(int commandId, CommandState& state, const BrowserList& list,
                       FileOperations& fileOps);
};

} // namespace lanmira

#pragma once

namespace lanmira {

// What a command's menu item, button and shortcut show.
struct CommandState {
    bool enabled = true;
    bool checkable = false;
    bool checked = false;

    void setCheck(bool on) {
        checkable = true;
        checked = on;
    }
};

// A link of a window's command chain (view, frame, application). A command that no link
// claims is disabled, so menus never offer something nobody would do.
class CommandTarget {
public:
    virtual ~CommandTarget() = default;

    // Runs the command; false when this target does not handle it.
    virtual bool onCommand(int id) = 0;
    // Fills the state and returns true when this target handles the command.
    virtual bool onUpdateCommand(int id, CommandState& state) = 0;
};

} // namespace lanmira

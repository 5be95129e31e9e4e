#pragma once

class QMainWindow;

namespace lanmira {

class CommandTarget;

// What a main frame asks of the application object that owns it.
class FrameHost {
public:
    virtual ~FrameHost() = default;

    // Asked when the frame receives a close request; true lets it close.
    virtual bool queryClose(QMainWindow* frame) = 0;
    // Told once the frame has accepted a close request and gone.
    virtual void frameClosed(QMainWindow* frame) = 0;
    // The application's commands, last link of every frame's command chain.
    virtual CommandTarget* applicationCommands() = 0;
};

} // namespace lanmira

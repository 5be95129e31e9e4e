#pragma once

#include "platform/CommandTarget.h"
#include "platform/MenuResource.h"

#include <QMainWindow>
#include <QStyle>

#include <span>

class QToolBar;

namespace lanmira {

class CommandRouter;
class FrameHost;

// A toolbar button: its command, label name, theme icon and the style's icon without a theme.
struct ToolButton {
    int id;
    const char* text;
    const char* themeIcon;
    QStyle::StandardPixmap fallback;
};

// A main window of one of the program's modes: its commands end their route at the
// application, and closing it is the application's decision.
class ModeFrame : public QMainWindow, public CommandTarget {
    Q_OBJECT
public:
    ModeFrame(FrameHost& host, const MenuResource& menu, const QString& objectName);
    ~ModeFrame() override;

    CommandRouter& router() { return *m_router; }

    bool onCommand(int id) override;
    bool onUpdateCommand(int id, CommandState& state) override;

protected:
    // A fixed toolbar of command buttons with their labels under the icons.
    QToolBar* addCommandToolBar(const QString& objectName, std::span<const ToolButton> buttons);
    void closeEvent(QCloseEvent* event) override;
    FrameHost& host() { return m_host; }

private:
    FrameHost& m_host;
    CommandRouter* m_router;
};

} // namespace lanmira

#pragma once

#include "platform/CommandTarget.h"
#include "platform/MenuResource.h"

#include <QMainWindow>

namespace lanmira {

class CommandRouter;
class FrameHost;

// The viewer mode's main window.
class CMainFrame2 final : public QMainWindow, public CommandTarget {
    Q_OBJECT
public:
    explicit CMainFrame2(FrameHost& host);
    ~CMainFrame2() override;

    CommandRouter& router() { return *m_router; }
    static const MenuResource& menuResource();

    bool onCommand(int id) override;
    bool onUpdateCommand(int id, CommandState& state) override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    FrameHost& m_host;
    CommandRouter* m_router;
};

} // namespace lanmira

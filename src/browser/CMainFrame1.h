#pragma once

#include "platform/CommandTarget.h"
#include "platform/MenuResource.h"

#include <QMainWindow>

namespace lanmira {

class CommandRouter;
class FrameHost;

// The browser mode's main window.
class CMainFrame1 final : public QMainWindow, public CommandTarget {
    Q_OBJECT
public:
    explicit CMainFrame1(FrameHost& host);
    ~CMainFrame1() override;

    CommandRouter& router() { return *m_router; }
    static const MenuResource& menuResource();

    bool onCommand(int id) override;
    bool onUpdateCommand(int id, CommandState& state) override;

Q_SIGNALS:
    // The capture library's device list changed (posted after device notifications).
    void camerasChanged();

protected:
    void closeEvent(QCloseEvent* event) override;
    void customEvent(QEvent* event) override;

private:
    FrameHost& m_host;
    CommandRouter* m_router;
};

} // namespace lanmira

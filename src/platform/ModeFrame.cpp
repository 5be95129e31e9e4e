#include "platform/ModeFrame.h"

#include "platform/CommandRouter.h"
#include "platform/FrameHost.h"
#include "platform/MenuBuilder.h"

#include <QCloseEvent>
#include <QMenuBar>
#include <QStatusBar>

namespace lanmira {

ModeFrame::ModeFrame(FrameHost& host, const MenuResource& menu, const QString& objectName)
    : m_host(host), m_router(new CommandRouter(this)) {
    setObjectName(objectName);
    m_router->setTargets({this, m_host.applicationCommands()});
    MenuBuilder::fillMenuBar(menuBar(), menu, *m_router);
    statusBar();
    resize(1024, 720);
}

ModeFrame::~ModeFrame() = default;

bool ModeFrame::onCommand(int /*id*/) {
    return false;
}

bool ModeFrame::onUpdateCommand(int /*id*/, CommandState& /*state*/) {
    return false;
}

void ModeFrame::closeEvent(QCloseEvent* event) {
    if (!m_host.queryClose(this)) {
        event->ignore();
        return;
    }
    event->accept();
    m_host.frameClosed(this);
}

} // namespace lanmira

#include "viewer/CMainFrame2.h"

#include "i18n/i18n.h"
#include "platform/CommandIds.h"
#include "platform/CommandRouter.h"
#include "platform/FrameHost.h"
#include "platform/MenuBuilder.h"

#include <QCloseEvent>
#include <QMenuBar>
#include <QStatusBar>

namespace lanmira {

const MenuResource& CMainFrame2::menuResource() {
    using E = MenuEntry;
    static const MenuResource menu{"IDR_VIEWER",
                                   {E::popup("file", {E::item(cmd::ID_APP_EXIT)}),
                                    E::popup("help", {E::item(cmd::ID_APP_ABOUT)})}};
    return menu;
}

CMainFrame2::CMainFrame2(FrameHost& host) : m_host(host), m_router(new CommandRouter(this)) {
    setObjectName(QStringLiteral("CMainFrame2"));
    setWindowTitle(i18n_stringW("ids_lanmira_viewer_title"));
    m_router->setTargets({this, m_host.applicationCommands()});
    MenuBuilder::fillMenuBar(menuBar(), menuResource(), *m_router);
    auto* centre = new QWidget(this);
    centre->setObjectName(QStringLiteral("viewerView"));
    centre->setAutoFillBackground(true);
    setCentralWidget(centre);
    statusBar()->setObjectName(QStringLiteral("viewerStatusBar"));
    resize(1024, 720);
}

CMainFrame2::~CMainFrame2() = default;

bool CMainFrame2::onCommand(int /*id*/) {
    return false;
}

bool CMainFrame2::onUpdateCommand(int /*id*/, CommandState& /*state*/) {
    return false;
}

void CMainFrame2::closeEvent(QCloseEvent* event) {
    if (!m_host.queryClose(this)) {
        event->ignore();
        return;
    }
    event->accept();
    m_host.frameClosed(this);
}

} // namespace lanmira

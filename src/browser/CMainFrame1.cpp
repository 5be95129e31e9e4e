#include "browser/CMainFrame1.h"

#include "i18n/i18n.h"
#include "platform/CommandIds.h"
#include "platform/CommandRouter.h"
#include "platform/FrameHost.h"
#include "platform/MenuBuilder.h"
#include "platform/PostedMessage.h"

#include <QCloseEvent>
#include <QMenuBar>
#include <QStatusBar>

namespace lanmira {

const MenuResource& CMainFrame1::menuResource() {
    using E = MenuEntry;
    static const MenuResource menu{"IDR_BROWSER",
                                   {E::popup("file", {E::item(cmd::ID_APP_EXIT)}),
                                    E::popup("help", {E::item(cmd::ID_APP_ABOUT)})}};
    return menu;
}

CMainFrame1::CMainFrame1(FrameHost& host) : m_host(host), m_router(new CommandRouter(this)) {
    setObjectName(QStringLiteral("CMainFrame1"));
    setWindowTitle(i18n_stringW("ids_lanmira_browser_title"));
    m_router->setTargets({this, m_host.applicationCommands()});
    MenuBuilder::fillMenuBar(menuBar(), menuResource(), *m_router);
    auto* centre = new QWidget(this);
    centre->setObjectName(QStringLiteral("browserView"));
    centre->setAutoFillBackground(true);
    setCentralWidget(centre);
    statusBar()->setObjectName(QStringLiteral("browserStatusBar"));
    resize(1024, 720);
}

CMainFrame1::~CMainFrame1() = default;

bool CMainFrame1::onCommand(int /*id*/) {
    return false;
}

bool CMainFrame1::onUpdateCommand(int /*id*/, CommandState& /*state*/) {
    return false;
}

void CMainFrame1::closeEvent(QCloseEvent* event) {
    if (!m_host.queryClose(this)) {
        event->ignore();
        return;
    }
    event->accept();
    m_host.frameClosed(this);
}

void CMainFrame1::customEvent(QEvent* event) {
    PostedMessage* m = PostedMessage::from(event);
    if (m && m->message() == msg::ENUMERATE_CAMERAS) {
        Q_EMIT camerasChanged();
        return;
    }
    QMainWindow::customEvent(event);
}

} // namespace lanmira

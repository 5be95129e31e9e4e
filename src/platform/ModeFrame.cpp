#include "platform/ModeFrame.h"

#include "i18n/i18n.h"
#include "platform/CommandRouter.h"
#include "platform/FrameHost.h"
#include "platform/MenuBuilder.h"

#include <QAction>
#include <QCloseEvent>
#include <QIcon>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>

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

QToolBar* ModeFrame::addCommandToolBar(const QString& objectName,
                                       std::span<const ToolButton> buttons) {
    QToolBar* bar = addToolBar(objectName);
    bar->setObjectName(objectName);
    bar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    bar->setMovable(false);
    for (const ToolButton& b : buttons) {
        QAction* a = m_router->action(b.id);
        // The button's label; the menu keeps the action's own text.
        a->setIconText(i18n_stringW(b.text));
        if (a->icon().isNull())
            a->setIcon(QIcon::fromTheme(QString::fromLatin1(b.themeIcon),
                                        style()->standardIcon(b.fallback)));
        bar->addAction(a);
    }
    return bar;
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

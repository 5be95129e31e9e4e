#include "browser/CMainFrame1.h"

#include "i18n/i18n.h"
#include "platform/CommandIds.h"
#include "platform/PostedMessage.h"

namespace lanmira {

const MenuResource& CMainFrame1::menuResource() {
    using E = MenuEntry;
    static const MenuResource menu{"IDR_BROWSER",
                                   {E::popup("file", {E::item(cmd::ID_APP_EXIT)}),
                                    E::popup("help", {E::item(cmd::ID_APP_ABOUT)})}};
    return menu;
}

CMainFrame1::CMainFrame1(FrameHost& host)
    : ModeFrame(host, menuResource(), QStringLiteral("CMainFrame1")) {
    setWindowTitle(i18n_stringW("ids_lanmira_browser_title"));
    auto* centre = new QWidget(this);
    centre->setObjectName(QStringLiteral("browserView"));
    setCentralWidget(centre);
}

void CMainFrame1::customEvent(QEvent* event) {
    PostedMessage* m = PostedMessage::from(event);
    if (m && m->message() == msg::ENUMERATE_CAMERAS) {
        Q_EMIT camerasChanged();
        return;
    }
    ModeFrame::customEvent(event);
}

} // namespace lanmira

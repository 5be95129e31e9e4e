#include "viewer/CMainFrame2.h"

#include "i18n/i18n.h"
#include "platform/CommandIds.h"

namespace lanmira {

const MenuResource& CMainFrame2::menuResource() {
    using E = MenuEntry;
    static const MenuResource menu{"IDR_VIEWER",
                                   {E::popup("file", {E::item(cmd::ID_APP_EXIT)}),
                                    E::popup("help", {E::item(cmd::ID_APP_ABOUT)})}};
    return menu;
}

CMainFrame2::CMainFrame2(FrameHost& host)
    : ModeFrame(host, menuResource(), QStringLiteral("CMainFrame2")) {
    setWindowTitle(i18n_stringW("ids_lanmira_viewer_title"));
    auto* centre = new QWidget(this);
    centre->setObjectName(QStringLiteral("viewerView"));
    setCentralWidget(centre);
}

} // namespace lanmira

#include "browser/CMainFrame1.h"

#include "browser/CFoldersPane.h"
#include "browser/CView1.h"
#include "i18n/i18n.h"
#include "platform/CommandIds.h"
#include "platform/CommandRouter.h"
#include "platform/FrameHost.h"
#include "platform/PostedMessage.h"

#include <QAction>
#include <QIcon>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>

namespace lanmira {

const MenuResource& CMainFrame1::menuResource() {
    using E = MenuEntry;
    static const MenuResource menu{
        "IDR_BROWSER",
        {E::popup("file", {E::popup("cameralist", {}), E::separator(), E::item(cmd::ID_APP_OPEN),
                           E::item(cmd::ID_PASTE_AS_NEW_FILE), E::separator(),
                           E::item(cmd::ID_FILE_DEFAULT_OPTIONS), E::item(cmd::ID_FILE_FORMAT),
                           E::separator(), E::item(cmd::ID_PROMPT_TO_SAVE),
                           E::item(cmd::ID_SLIDE_SHOW_SETTINGS), E::separator(),
                           E::item(cmd::ID_APP_EXIT)}),
         E::popup("edit", {E::item(cmd::ID_DELETE), E::separator(), E::item(cmd::ID_SELECT_ALL),
                           E::item(cmd::ID_INVERT_SELECTION)}),
         E::popup("view", {E::item(cmd::ID_LARGE_ICONS), E::item(cmd::ID_SMALL_ICONS),
                           E::separator(), E::item(cmd::ID_SORT_BY_NAME),
                           E::item(cmd::ID_SORT_BY_TYPE), E::item(cmd::ID_SORT_BY_SIZE),
                           E::item(cmd::ID_SORT_BY_WIDTH), E::item(cmd::ID_SORT_BY_HEIGHT),
                           E::item(cmd::ID_SORT_BY_EXTENSION), E::separator(),
                           E::item(cmd::ID_SORT_ASCENDING), E::item(cmd::ID_SORT_DESCENDING),
                           E::separator(), E::item(cmd::ID_BROWSER_REFRESH)}),
         E::popup("help", {E::item(cmd::ID_APP_ABOUT)})}};
    return menu;
}

CMainFrame1::CMainFrame1(FrameHost& host, const Start& start)
    : ModeFrame(host, menuResource(), QStringLiteral("CMainFrame1")),
      m_view(new CView1(start.company, start.app, start.programFolder, this)),
      m_folders(new CFoldersPane(start.folder, this)), m_position(new QLabel(this)),
      m_name(new QLabel(this)), m_image(new QLabel(this)) {
    setWindowTitle(i18n_stringW("ids_lanmira_browser_title"));
    m_view->setObjectName(QStringLiteral("browserView"));
    setCentralWidget(m_view);
    router().setTargets({m_view, this, host.applicationCommands()});

    addDockWidget(Qt::LeftDockWidgetArea, m_folders);
    resizeDocks({m_folders}, {260}, Qt::Horizontal);
    connect(m_folders, &CFoldersPane::folderChosen, m_view, &CView1::openFolder);

    buildToolBar();
    m_cameraList = menuBar()->findChild<QMenu*>(QStringLiteral("cameralist"));
    if (m_cameraList)
        connect(m_cameraList, &QMenu::aboutToShow, this, [this] {
            if (m_fillCameraMenu)
                m_fillCameraMenu(m_cameraList);
        });
    // Opening the selected picture has a key but no menu entry.
    router().action(cmd::ID_BROWSER_ITEM_OPEN)->setShortcuts({Qt::Key_Return, Qt::Key_Enter});

    // Position, then the name (which takes the spare width), then the picture's size.
    m_position->setObjectName(QStringLiteral("statusPosition"));
    m_name->setObjectName(QStringLiteral("statusName"));
    m_image->setObjectName(QStringLiteral("statusImage"));
    m_name->setMinimumWidth(200);
    m_position->setMinimumWidth(80);
    m_image->setMinimumWidth(140);
    statusBar()->addWidget(m_position);
    statusBar()->addWidget(m_name, 1);
    statusBar()->addPermanentWidget(m_image);
    connect(m_view, &CView1::statusChanged, this, &CMainFrame1::updateStatus);

    m_view->startBrowser();
    m_view->setFocus();
}

CMainFrame1::~CMainFrame1() = default;

void CMainFrame1::buildToolBar() {
    static const ToolButton buttons[] = {
        {cmd::ID_FILES_COPY, "ids_lanmira_toolbar_copy", "edit-copy", QStyle::SP_FileIcon},
        {cmd::ID_FILES_PASTE, "ids_lanmira_toolbar_paste", "edit-paste",
         QStyle::SP_DialogOpenButton},
        {cmd::ID_FILES_CUT, "ids_lanmira_toolbar_cut", "edit-cut", QStyle::SP_DialogResetButton},
        {cmd::ID_DELETE, "ids_lanmira_toolbar_delete", "edit-delete", QStyle::SP_TrashIcon},
        {cmd::ID_BROWSER_REFRESH, "ids_lanmira_toolbar_refresh", "view-refresh",
         QStyle::SP_BrowserReload},
        {cmd::ID_BROWSER_TOGGLE_ICONS, "ids_lanmira_toolbar_icons", "view-list-icons",
         QStyle::SP_FileDialogListView},
        {cmd::ID_BROWSER_SORT_CYCLE, "ids_lanmira_toolbar_sort", "view-sort-ascending",
         QStyle::SP_ArrowDown},
        {cmd::ID_CAMERA_DROPDOWN, "ids_video", "camera-photo", QStyle::SP_ComputerIcon},
    };
    m_toolBar = addCommandToolBar(QStringLiteral("browserToolBar"), buttons);

    // The camera button drops down the camera list ("IDR_DEVICE") under itself.
    m_cameraDropDown = new QMenu(this);
    m_cameraDropDown->setObjectName(QStringLiteral("IDR_DEVICE"));
    QAction* camera = router().action(cmd::ID_CAMERA_DROPDOWN);
    camera->setMenu(m_cameraDropDown);
    if (auto* button = qobject_cast<QToolButton*>(m_toolBar->widgetForAction(camera)))
        button->setPopupMode(QToolButton::InstantPopup);
    connect(m_cameraDropDown, &QMenu::aboutToShow, this, [this] {
        if (m_fillCameraMenu)
            m_fillCameraMenu(m_cameraDropDown);
    });
}

void CMainFrame1::setCameraMenuFiller(std::function<void(QMenu*)> fill) {
    m_fillCameraMenu = std::move(fill);
}

void CMainFrame1::updateStatus() {
    const StatusTexts texts = m_view->statusTexts();
    m_position->setText(texts.position);
    m_name->setText(texts.name);
    m_image->setText(texts.image);
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

#include "browser/CMainFrame1.h"

#include "acquire/NativeImage.h"
#include "browser/BrowserList.h"
#include "browser/CFoldersPane.h"
#include "browser/CView1.h"
#include "browser/fileops/DropRequest.h"
#include "camera/frame/CaptureWriter.h"
#include "camera/frame/VideoFrameHost.h"
#include "i18n/i18n.h"
#include "platform/CommandIds.h"
#include "platform/CommandRouter.h"
#include "platform/FrameHost.h"
#include "platform/PostedMessage.h"
#include "platform/TextFormat.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>

namespace lanmira {

const MenuResource& CMainFrame1::menuResource() {
    using E = MenuEntry;
    static const MenuResource menu{
        "IDR_BROWSER",
        {E::popup("file", {E::popup("cameralist", {}), E::item(cmd::ID_TWAIN_SELECT),
                           E::item(cmd::ID_TWAIN_ACQUIRE), E::separator(),
                           E::item(cmd::ID_APP_OPEN), E::item(cmd::ID_PASTE_AS_NEW_FILE),
                           E::separator(), E::item(cmd::ID_FILE_DEFAULT_OPTIONS),
                           E::item(cmd::ID_FILE_FORMAT), E::separator(),
                           E::item(cmd::ID_PROMPT_TO_SAVE), E::item(cmd::ID_SLIDE_SHOW_SETTINGS),
                           E::separator(), E::item(cmd::ID_APP_EXIT)}),
         E::popup("edit", {E::item(cmd::ID_FILES_CUT), E::item(cmd::ID_FILES_COPY),
                           E::item(cmd::ID_FILES_PASTE), E::item(cmd::ID_FILES_PASTE_SHORTCUT),
                           E::separator(), E::item(cmd::ID_DELETE), E::separator(),
                           E::item(cmd::ID_SELECT_ALL), E::item(cmd::ID_INVERT_SELECTION),
                           E::separator(), E::item(cmd::ID_MULTIPAGE_TIFF)}),
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
      m_name(new QLabel(this)), m_image(new QLabel(this)),
      m_capture(dynamic_cast<VideoFrameHost*>(&host)), m_saver(new CaptureWriter(this)) {
    setWindowTitle(i18n_stringW("ids_lanmira_browser_title"));
    m_view->setObjectName(QStringLiteral("browserView"));
    setCentralWidget(m_view);
    router().setTargets({m_view, this, host.applicationCommands()});

    addDockWidget(Qt::LeftDockWidgetArea, m_folders);
    resizeDocks({m_folders}, {260}, Qt::Horizontal);
    connect(m_folders, &CFoldersPane::folderChosen, m_view, &CView1::openFolder);
    m_folders->setDropHandler(
        [this](DropRequest request) { m_view->postDrop(std::move(request)); });
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_view, &QWidget::customContextMenuRequested, this, &CMainFrame1::showContextMenu);

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

    setOwner(this);
    if (m_capture)
        m_twain = TwainSettings::read([this](const char* key, int def) {
            return m_capture->readSetting(QStringLiteral("Twain"), QString::fromLatin1(key), def);
        });
    connect(m_saver, &CaptureWriter::saved, this, &CMainFrame1::acquired);
    connect(m_saver, &CaptureWriter::failed, this, &CMainFrame1::saveFailed);

    m_view->startBrowser();
    m_view->setFocus();
}

CMainFrame1::~CMainFrame1() {
    releaseTwain();
    if (m_capture)
        m_twain.write([this](const char* key, int value) {
            m_capture->writeSetting(QStringLiteral("Twain"), QString::fromLatin1(key), value);
        });
}

bool CMainFrame1::onCommand(int id) {
    switch (id) {
    case cmd::ID_TWAIN_SELECT:
        // A cancelled choice needs no word; no manager or no scanner does.
        if (!SelectSource() && selectionFailed())
            OnError(ErrorManager);
        return true;
    case cmd::ID_TWAIN_ACQUIRE:
        setShowUi(m_twain.showUi);
        Acquire();
        return true;
    default:
        return ModeFrame::onCommand(id);
    }
}

bool CMainFrame1::onUpdateCommand(int id, CommandState& state) {
    switch (id) {
    case cmd::ID_TWAIN_SELECT:
    case cmd::ID_TWAIN_ACQUIRE:
        // One scanner session at a time.
        state.enabled = this->state() < State::SourceOpen;
        return true;
    default:
        return ModeFrame::onUpdateCommand(id, state);
    }
}

bool CMainFrame1::NegotiateCapabilities() {
    for (const TwainSettings::Step& step : m_twain.steps()) {
        if (SetCapability(step.cap, step.itemType, step.value))
            continue;
        const auto answer =
            QMessageBox::question(this, i18n_stringW("ids_lanmira_appname"),
                                  i18n_stringW(step.question), QMessageBox::Yes | QMessageBox::No);
        if (answer != QMessageBox::Yes)
            return false;
    }
    return true;
}

void CMainFrame1::OnCloseRequest() {
    ReturnToState(returnState());
}

void CMainFrame1::OnNativeImage(TW_HANDLE handle) {
    PackedDib picture = dibFromNativeHandle(handle);
    if (m_capture)
        m_saver->saveNext(std::move(picture), m_capture->captureSettings(),
                          m_capture->captureCounter(), true);
}

void CMainFrame1::OnError(int) {
    QMessageBox::warning(this, i18n_stringW("ids_lanmira_appname"),
                         i18n_stringW("ids_lanmira_twain_error"));
}

void CMainFrame1::acquired(const QString& path) {
    // The capture name may be relative to the process's folder, which the folder pane sets.
    const QString folder = QFileInfo(path).absolutePath() + u'/';
    if (QDir(folder) == QDir(BrowserList::instance().currentFolder))
        m_view->refresh();
}

void CMainFrame1::saveFailed(const QString& path, const QString& error) {
    QMessageBox::warning(
        this, i18n_stringW("ids_lanmira_appname"),
        error.isEmpty() ? formatText(i18n_stringW("ids_calvora_savefilefail2"), {path})
                        : formatText(i18n_stringW("ids_calvora_savefilefail1"), {path, error}));
}

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
        {cmd::ID_FILES_PASTE_SHORTCUT, "ids_lanmira_toolbar_pasteshortcut", "insert-link",
         QStyle::SP_FileLinkIcon},
        {cmd::ID_MULTIPAGE_TIFF, "ids_lanmira_toolbar_tiff", "document-save-as",
         QStyle::SP_DialogSaveButton},
    };
    m_toolBar = addCommandToolBar(QStringLiteral("browserToolBar"), buttons);

    // The camera button drops down the camera list ("IDR_DEVICE") under itself.
    m_cameraDropDown = new QMenu(this);
    m_cameraDropDown->setObjectName(QStringLiteral("cameraDropDown"));
    QAction* camera = router().action(cmd::ID_CAMERA_DROPDOWN);
    camera->setMenu(m_cameraDropDown);
    if (auto* button = qobject_cast<QToolButton*>(m_toolBar->widgetForAction(camera)))
        button->setPopupMode(QToolButton::InstantPopup);
    connect(m_cameraDropDown, &QMenu::aboutToShow, this, [this] {
        if (m_fillCameraMenu)
            m_fillCameraMenu(m_cameraDropDown);
    });
}

void CMainFrame1::showContextMenu(const QPoint& pos) {
    // The same actions as the menu bar's, so texts, keys and enabling agree.
    static constexpr int kItems[] = {cmd::ID_FILES_CUT,
                                     cmd::ID_FILES_COPY,
                                     cmd::ID_FILES_PASTE,
                                     cmd::ID_FILES_PASTE_SHORTCUT,
                                     0,
                                     cmd::ID_DELETE,
                                     0,
                                     cmd::ID_MULTIPAGE_TIFF};
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("browserContextMenu"));
    for (int id : kItems) {
        if (id == 0)
            menu.addSeparator();
        else
            menu.addAction(router().action(id));
    }
    router().updateActions();
    menu.exec(m_view->viewport()->mapToGlobal(pos));
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

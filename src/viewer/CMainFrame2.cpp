#include "viewer/CMainFrame2.h"

#include "i18n/i18n.h"
#include "platform/CommandIds.h"
#include "platform/CommandRouter.h"
#include "platform/FrameHost.h"
#include "platform/PostedMessage.h"
#include "viewer/CView2.h"

#include <QAction>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QIcon>
#include <QLabel>
#include <QMimeData>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QUrl>

namespace lanmira {

namespace {

// The first dropped item when it is a local file; empty otherwise.
QString firstLocalFile(const QMimeData* mime) {
    if (!mime || !mime->hasUrls() || mime->urls().isEmpty())
        return {};
    const QUrl url = mime->urls().constFirst();
    return url.isLocalFile() ? url.toLocalFile() : QString();
}

} // namespace

const MenuResource& CMainFrame2::menuResource() {
    using E = MenuEntry;
    static const MenuResource menu{
        "IDR_VIEWER",
        {E::popup("file",
                  {E::item(cmd::ID_FILE_OPEN), E::item(cmd::ID_FILE_SAVE),
                   E::item(cmd::ID_FILE_SAVE_AS), E::separator(), E::item(cmd::ID_DELETE),
                   E::separator(), E::item(cmd::ID_FILE_PRINT), E::item(cmd::ID_FILE_PRINT_PREVIEW),
                   E::separator(), E::item(cmd::ID_PASTE_AS_NEW_FILE), E::separator(),
                   E::item(cmd::ID_FILE_DEFAULT_OPTIONS), E::item(cmd::ID_FILE_FORMAT),
                   E::separator(), E::item(cmd::ID_PROMPT_TO_SAVE),
                   E::item(cmd::ID_SLIDE_SHOW_SETTINGS), E::separator(),
                   E::item(cmd::ID_MODE_BROWSER), E::item(cmd::ID_APP_EXIT)}),
         E::popup("edit", {E::item(cmd::ID_COPY_IMAGE), E::item(cmd::ID_PASTE_AS_NEW_FILE)}),
         E::popup("zoom", {E::item(cmd::ID_TRACK), E::separator(), E::item(cmd::ID_ZOOM_BEST_FIT),
                           E::item(cmd::ID_ZOOM_ACTUAL_SIZE), E::item(cmd::ID_ZOOM_LOCK),
                           E::item(cmd::ID_ZOOM_AUTO_SHRINK), E::item(cmd::ID_ZOOM_AUTO_ENLARGE)}),
         E::popup("image", {E::item(cmd::ID_ROTATE_CCW), E::item(cmd::ID_ROTATE_CW),
                            E::item(cmd::ID_ROTATE_180), E::separator(),
                            E::item(cmd::ID_FLIP_HORIZONTAL), E::item(cmd::ID_FLIP_VERTICAL)}),
         E::popup("go", {E::item(cmd::ID_PAGE_FIRST), E::item(cmd::ID_PAGE_PREVIOUS),
                         E::item(cmd::ID_PAGE_NEXT), E::item(cmd::ID_PAGE_LAST), E::separator(),
                         E::item(cmd::ID_IMAGE_FIRST), E::item(cmd::ID_IMAGE_PREVIOUS),
                         E::item(cmd::ID_IMAGE_NEXT), E::item(cmd::ID_IMAGE_LAST), E::separator(),
                         E::item(cmd::ID_SLIDE_SHOW)}),
         E::popup("help", {E::item(cmd::ID_APP_ABOUT)})}};
    return menu;
}

CMainFrame2::CMainFrame2(FrameHost& host, ViewerHost& viewerHost)
    : ModeFrame(host, menuResource(), QStringLiteral("CMainFrame2")),
      m_view(new CView2(viewerHost, this)) {
    setWindowTitle(i18n_stringW("ids_lanmira_viewer_title"));
    m_view->setObjectName(QStringLiteral("viewerView"));
    setCentralWidget(m_view);
    router().setTargets({m_view, this, host.applicationCommands()});
    setAcceptDrops(true);

    // The combined page-or-image steps have keys but no menu entry.
    router().action(cmd::ID_NEXT_PAGE_OR_IMAGE)->setShortcut(QKeySequence(Qt::Key_Space));
    router().action(cmd::ID_PREVIOUS_PAGE_OR_IMAGE)->setShortcut(QKeySequence(Qt::Key_Backspace));

    buildToolBar();

    static const char* const names[] = {"statusPath", "statusSize", "statusDepth", "statusPage",
                                        "statusZoom"};
    for (int i = 0; i < 5; ++i) {
        m_panes[i] = new QLabel(this);
        m_panes[i]->setObjectName(QString::fromLatin1(names[i]));
    }
    // The path takes the spare width; the picture's facts keep their places at the right.
    statusBar()->addWidget(m_panes[0], 1);
    for (int i = 1; i < 5; ++i) {
        m_panes[i]->setMinimumWidth(i == 2 ? 150 : 80);
        statusBar()->addPermanentWidget(m_panes[i]);
    }
    connect(m_view, &CView2::statusChanged, this, &CMainFrame2::updateStatus);
    updateStatus();
    m_view->setFocus();
}

CMainFrame2::~CMainFrame2() = default;

void CMainFrame2::buildToolBar() {
    static const ToolButton buttons[] = {
        {cmd::ID_MODE_BROWSER, "ids_lanmira_toolbar_browser", "view-list-icons",
         QStyle::SP_FileDialogContentsView},
        {cmd::ID_FILE_OPEN, "ids_lanmira_toolbar_open", "document-open",
         QStyle::SP_DialogOpenButton},
        {cmd::ID_FILE_SAVE, "ids_lanmira_toolbar_save", "document-save",
         QStyle::SP_DialogSaveButton},
        {cmd::ID_FILE_PRINT, "ids_lanmira_toolbar_print", "document-print", QStyle::SP_DriveFDIcon},
        {cmd::ID_COPY_IMAGE, "ids_lanmira_toolbar_copyimage", "edit-copy", QStyle::SP_FileIcon},
        {cmd::ID_ROTATE_CCW, "ids_lanmira_toolbar_rotleft", "object-rotate-left",
         QStyle::SP_BrowserReload},
        {cmd::ID_ROTATE_CW, "ids_lanmira_toolbar_rotright", "object-rotate-right",
         QStyle::SP_BrowserReload},
        {cmd::ID_IMAGE_FIRST, "ids_lanmira_toolbar_first", "go-first",
         QStyle::SP_MediaSkipBackward},
        {cmd::ID_IMAGE_PREVIOUS, "ids_lanmira_toolbar_prev", "go-previous", QStyle::SP_ArrowLeft},
        {cmd::ID_IMAGE_NEXT, "ids_lanmira_toolbar_next", "go-next", QStyle::SP_ArrowRight},
        {cmd::ID_IMAGE_LAST, "ids_lanmira_toolbar_last", "go-last", QStyle::SP_MediaSkipForward},
        {cmd::ID_ZOOM_BEST_FIT, "ids_lanmira_toolbar_bestfit", "zoom-fit-best",
         QStyle::SP_TitleBarMaxButton},
        {cmd::ID_ZOOM_ACTUAL_SIZE, "ids_lanmira_toolbar_actual", "zoom-original",
         QStyle::SP_TitleBarNormalButton},
        {cmd::ID_SLIDE_SHOW, "ids_lanmira_toolbar_slideshow", "media-playback-start",
         QStyle::SP_MediaPlay},
    };
    addCommandToolBar(QStringLiteral("viewerToolBar"), buttons);
}

void CMainFrame2::updateStatus() {
    static const int panes[] = {cmd::ID_PANE_PATH, cmd::ID_PANE_SIZE, cmd::ID_PANE_DEPTH,
                                cmd::ID_PANE_PAGE, cmd::ID_PANE_ZOOM};
    for (int i = 0; i < 5; ++i) {
        const QString text = m_view->paneText(panes[i]);
        if (m_panes[i]->text() != text)
            m_panes[i]->setText(text);
    }
    // A file may arrive while the window is not active, when the periodic refresh sleeps.
    router().updateActions();
}

bool CMainFrame2::queryLeave() {
    return m_view->document().promptToSave();
}

void CMainFrame2::enterViewer() {
    m_stateFlag = 0;
    m_view->becomeReceiver();
}

void CMainFrame2::customEvent(QEvent* event) {
    PostedMessage* m = PostedMessage::from(event);
    if (m && m->message() == msg::VIEWER_OPEN_PATH) {
        if (const QString* path = m->payload<QString>()) {
            m_view->openFile(*path);
            // The folder list follows the file now shown.
            postMessage(m_view, msg::VIEWER_SELECT_SHOWN_FILE);
        }
        return;
    }
    if (m && m->message() == msg::VIEWER_ADOPT_DIB) {
        if (auto picture = m->takePayload<PackedDib>())
            m_view->adopt(std::move(*picture));
        return;
    }
    ModeFrame::customEvent(event);
}

void CMainFrame2::dragEnterEvent(QDragEnterEvent* event) {
    if (!firstLocalFile(event->mimeData()).isEmpty())
        event->acceptProposedAction();
    else
        event->ignore();
}

void CMainFrame2::dropEvent(QDropEvent* event) {
    // Only the first file counts; the others are ignored.
    const QString path = firstLocalFile(event->mimeData());
    if (path.isEmpty()) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    activateWindow();
    raise();
    m_view->openFile(path);
}

} // namespace lanmira

#include "app/CPellanoApp.h"

#include "acquire/ClipboardImage.h"
#include "app/BusyInputFilter.h"
#include "app/CAboutDlg.h"
#include "app/COpenFileDlg.h"
#include "app/CSlideDlg.h"
#include "app/ProductProfile.h"
#include "app/ProductVersion.h"
#include "app/SettingClamp.h"
#include "app/StartupFailure.h"
#include "browser/BrowserList.h"
#include "browser/CMainFrame1.h"
#include "browser/CView1.h"
#include "browser/filetypes/FormatWordsApplier.h"
#include "camera/CaptureHooks.h"
#include "camera/frame/CVideoFrame.h"
#include "camera/frame/CameraMenuModel.h"
#include "dscap/dscap.h"
#include "i18n/i18n.h"
#include "imagelib/imagelib.h"
#include "imagelib/iopt.h"
#include "platform/CommandIds.h"
#include "platform/CommandRouter.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"
#include "platform/UnixSignalBridge.h"
#include "platform/VideoDeviceWatcher.h"
#include "viewer/CFileSaveSetup.h"
#include "viewer/CFmtDlg.h"
#include "viewer/CMainFrame2.h"
#include "viewer/CView2.h"
#include "viewer/ImageNavigator.h"
#include "viewer/ViewerReceiver.h"
#include "vnupdate/vnupdate.h"

#include <QApplication>
#include <QClipboard>
#include <QCursor>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMetaObject>

#include <cstdlib>

namespace lanmira {
namespace {

CPellanoApp* g_app = nullptr;

constexpr char kCatalogFolder[] = "../share/lanmira/i18n";
constexpr std::uint32_t kSlideMin = 1000;
constexpr std::uint32_t kSlideMax = 3600000;

QString fromU16(const std::u16string& s) {
    return QString::fromUtf16(s.data(), static_cast<qsizetype>(s.size()));
}

// The desktop session may end by killing the X connection, which ends the process through
// exit() without unwinding: the settings still get written.
void writeSettingsAtExit() {
    if (g_app)
        g_app->saveSettings();
}

} // namespace

CPellanoApp::CPellanoApp(Options options)
    : m_options(std::move(options)), m_busyFilter(new BusyInputFilter(this)) {
    g_app = this;
}

CPellanoApp::~CPellanoApp() {
    if (g_app == this)
        g_app = nullptr;
}

CPellanoApp* CPellanoApp::instance() {
    return g_app;
}

void CPellanoApp::fail(const QString& text) {
    if (m_options.reportFailure)
        m_options.reportFailure(text);
    else
        reportStartupFailure(text);
}

bool CPellanoApp::initInstance() {
    vnupdate_init(LANMIRA_PRODUCT_NAME, LANMIRA_VERSION_TEXT);

    const QString exe = m_options.executablePath.isEmpty() ? QCoreApplication::applicationFilePath()
                                                           : m_options.executablePath;
    if (exe.isEmpty() || !exe.contains(u'/'))
        return false;
    m_programFolder = QFileInfo(exe).absolutePath() + u'/';

    ProfileValues profile;
    const auto profilePath = ProductProfile::locate(exe.toStdString());
    const ProfileError error = ProductProfile::readFile(profilePath, programPublicKey(), profile);
    if (error != ProfileError::None) {
        fail(QString::fromUtf8(profileErrorText(error)));
        return false;
    }
    if (profile.vnupdate)
        vnupdate_update(fromU16(*profile.vnupdate).toUtf8().constData());
    ProductProfile::applyDefaults(profile);
    m_company = fromU16(profile.company);
    m_app = fromU16(profile.app);
    m_url = fromU16(profile.url);
    m_display = fromU16(profile.display);
    m_cameraModule = fromU16(profile.orbicam);
    m_secondCameraModule = fromU16(profile.orbinam);
    QCoreApplication::setOrganizationName(m_company);
    QCoreApplication::setApplicationName(m_app);

    const dscap_messages messages{
        msg::CAPTURE_NOTIFY, msg::CAPTURE_VIDEO_SIZE, msg::CAPTURE_RECORDING,
        static_cast<unsigned>(cmd::ID_CAMERA_DIALOG_FIRST), msg::CAPTURE_EVENT};
    dscap_init(nullptr, m_company.toUtf8().constData(), m_app.toUtf8().constData(),
               m_cameraModule.toUtf8().constData(), m_secondCameraModule.toUtf8().constData(),
               &messages);
    CaptureHooks::install();

    m_settings.setRegistryKey(m_company + u'\\' + m_app);
    m_settings.setProfileName(m_app);

    i18n_init(QString::fromLatin1(kCatalogFolder), 0);

    m_preview = m_settings.readInt(QStringLiteral("options"), QStringLiteral("Preview"), 1) != 0;
    m_prompt = m_settings.readInt(QStringLiteral("options"), QStringLiteral("Prompt"), 1) != 0;
    m_slide =
        clampUnsigned(m_settings.readInt(QStringLiteral("options"), QStringLiteral("slide"), 2000),
                      kSlideMin, kSlideMax);
    m_settingsRead = true;
    std::atexit(writeSettingsAtExit);

    iopt_init(nullptr, m_company.toUtf8().constData(), m_app.toUtf8().constData());

    CMainFrame1::Start browserStart{m_company, m_app, m_programFolder, {}};
    if (!m_options.path.isEmpty()) {
        // A folder is browsed; a file is browsed in its folder.
        const QFileInfo given(m_options.path);
        browserStart.folder = given.isDir() ? given.absoluteFilePath() : given.absolutePath();
    }
    m_browserFrame = std::make_unique<CMainFrame1>(*this, browserStart);
    m_viewerFrame = std::make_unique<CMainFrame2>(*this, *this);
    connect(m_browserFrame.get(), &CMainFrame1::camerasChanged, this,
            &CPellanoApp::enumerateCameras);
    // Asking the clipboard's owner for its formats is a round trip to another program: done
    // once per change, not at every update of the commands.
    m_clipboardPicture = clipboardHasPicture();
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this,
            [this] { m_clipboardPicture = clipboardHasPicture(); });
    m_browserFrame->setCameraMenuFiller([this](QMenu* menu) { fillCameraListMenu(menu); });
    m_browserFrame->view()->setOpenImage([this](const QString& path, const QString& linkTarget) {
        openFromBrowser(path, linkTarget);
    });

    readCaptureSettings();

    m_viewerFrame->hide();
    m_mode = 0;
    if (m_browserFrame->isMaximized())
        m_browserFrame->showMaximized();
    else
        m_browserFrame->show();
    m_browserFrame->repaint();

    // Being asked to stop (service manager, terminal, logout) closes as "Exit" does.
    m_signals = new UnixSignalBridge(this);
    connect(m_signals, &UnixSignalBridge::terminationRequested, this, [this] {
        // Being told to stop ends the program, camera window and all.
        if (m_cameraFrame)
            m_cameraFrame->close();
        requestExit();
    });
    connect(qApp, &QGuiApplication::commitDataRequest, this, [this] { saveSettings(); });

    enumerateCameras();
    // Capture devices coming and going make the browser frame list the cameras again, once
    // the notifications have settled.
    m_deviceWatcher = VideoDeviceWatcher::create(this);
    if (m_deviceWatcher)
        connect(m_deviceWatcher, &VideoDeviceWatcher::devicesChanged, this, [this] {
            if (m_browserFrame)
                postMessage(m_browserFrame.get(), msg::ENUMERATE_CAMERAS);
        });

    if (!m_options.path.isEmpty() && !QFileInfo(m_options.path).isDir()) {
        // Queued behind the folder pane's start-up step, which lists the file's folder: the
        // viewer's Next and Previous step through that list from the file.
        const QString file = QFileInfo(m_options.path).absoluteFilePath();
        QMetaObject::invokeMethod(
            this, [this, file] { openInViewer(file); }, Qt::QueuedConnection);
    }
    return true;
}

void CPellanoApp::readCaptureSettings() {
    m_captureFormats.clear();
    for (const ImageLibExtFmt* row = ImageLib_ExtFmt(); row && row->ext; ++row)
        m_captureFormats << QString::fromUtf8(row->ext);

    m_captureTitle = m_settings.readString(QStringLiteral("titleext"), QStringLiteral("title"),
                                           QStringLiteral("Lanmira"));
    m_captureExt = m_settings.readString(QStringLiteral("titleext"), QStringLiteral("ext"),
                                         QStringLiteral("jpg"));
    if (m_captureExt.isEmpty())
        m_captureExt = QStringLiteral("jpg");

    m_captureFormat = 0;
    for (const ImageLibExtFmt* row = ImageLib_ExtFmt(); row && row->ext; ++row) {
        if (m_captureExt.compare(QString::fromUtf8(row->ext), Qt::CaseInsensitive) == 0) {
            m_captureFormat = static_cast<int>(row->format);
            break;
        }
    }
    const IoptOptions options = iopt_get_default(m_captureFormat);
    m_captureOptions[0] = options.value1;
    m_captureOptions[1] = options.value2;
}

void CPellanoApp::saveSettings() {
    if (!m_settingsRead)
        return;
    m_settings.writeInt(QStringLiteral("options"), QStringLiteral("slide"),
                        static_cast<int>(m_slide));
    m_settings.writeInt(QStringLiteral("options"), QStringLiteral("Preview"), m_preview ? 1 : 0);
    m_settings.writeInt(QStringLiteral("options"), QStringLiteral("Prompt"), m_prompt ? 1 : 0);
    m_settings.writeString(QStringLiteral("titleext"), QStringLiteral("title"), m_captureTitle);
    m_settings.writeString(QStringLiteral("titleext"), QStringLiteral("ext"), m_captureExt);
}

int CPellanoApp::exitInstance(int exitCode) {
    saveSettings();
    m_settingsRead = false; // written; the exit hook has nothing left to do
    FormatWordsApplier::waitForWrites();
    iopt_fini();
    delete m_cameraFrame.data();
    m_cameras.clear();
    m_viewerFrame.reset();
    m_browserFrame.reset();
    return exitCode;
}

void CPellanoApp::enumerateCameras() {
    m_cameras.clear();
    dscap_dsvi* list = dscap_enum_device(0);
    if (!list)
        return;
    for (const dscap_dsvi* r = list; r->id; ++r)
        m_cameras.push_back({QString::fromUtf8(r->id), QString::fromUtf8(r->name), r->value});
    dscap_free_dsvi(list);
}

void CPellanoApp::fillCameraListMenu(QMenu* menu) {
    if (!menu || !m_browserFrame)
        return;
    menu->clear();
    const auto entries = cameraMenuEntries(m_cameras, m_currentCameraId, !m_cameraFrame.isNull(),
                                           i18n_stringW("ids_calvora_nodevice"));
    CommandRouter& router = m_browserFrame->router();
    for (const CameraMenuEntry& e : entries) {
        QAction* a = router.action(e.id);
        QString text = e.text;
        a->setText(text.replace(u'&', QStringLiteral("&&")));
        a->setCheckable(e.checked);
        a->setChecked(e.checked);
        a->setEnabled(e.enabled);
        menu->addAction(a);
    }
}

void CPellanoApp::openCamera(int index) {
    if (m_cameraFrame || index < 0 || index >= static_cast<int>(m_cameras.size()) ||
        index >= cmd::kMaxCameras)
        return;
    auto* frame = new CVideoFrame(*this, m_cameras[static_cast<std::size_t>(index)]);
    m_cameraFrame = frame;
    frame->showMaximized();
    frame->repaint();
    postMessage(frame, msg::VIDEO_START_PREVIEW);
}

void CPellanoApp::cameraFrameDestroyed(CVideoFrame* frame) {
    if (frame != m_cameraFrame.data())
        return;
    m_currentCameraId.clear();
    m_cameraFrame.clear();
    QMainWindow* current = mainWindow();
    if (current && current->isHidden()) {
        // The mode's frame was only hidden while the camera window stayed: now the program
        // ends, as closing it would have ended it.
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (m_browserFrame)
                    m_busyFilter->closeWindow(m_browserFrame.get());
                if (m_viewerFrame)
                    m_busyFilter->closeWindow(m_viewerFrame.get());
            },
            Qt::QueuedConnection);
    }
}

int CPellanoApp::readSetting(const QString& section, const QString& key, int def) {
    return m_settings.readInt(section, key, def);
}

void CPellanoApp::writeSetting(const QString& section, const QString& key, int value) {
    m_settings.writeInt(section, key, value);
}

CaptureFormat CPellanoApp::captureSettings() const {
    CaptureFormat f;
    f.title = m_captureTitle;
    f.extension = m_captureExt;
    f.format = m_captureFormat;
    f.options[0] = m_captureOptions[0];
    f.options[1] = m_captureOptions[1];
    return f;
}

QMainWindow* CPellanoApp::mainWindow() const {
    if (m_mode == 1)
        return m_viewerFrame.get();
    return m_browserFrame.get();
}

void CPellanoApp::requestExit() {
    if (QMainWindow* w = mainWindow())
        m_busyFilter->closeWindow(w);
    else
        QCoreApplication::quit();
}

QMainWindow* CPellanoApp::frameOf(std::uint32_t mode) const {
    if (mode == 0)
        return m_browserFrame.get();
    if (mode == 1)
        return m_viewerFrame.get();
    return nullptr;
}

void CPellanoApp::showFrame(QMainWindow* frame) {
    if (frame->isMaximized())
        frame->showMaximized();
    else
        frame->show();
    frame->raise();
    frame->activateWindow();
    frame->repaint();
}

bool CPellanoApp::switchMode(std::uint32_t target) {
    QMainWindow* entered = frameOf(target);
    QMainWindow* left = frameOf(m_mode);
    if (!entered || !left)
        return false;
    if (target == m_mode) {
        if (!entered->isVisible())
            showFrame(entered);
        return true;
    }

    if (!leaveCurrentMode())
        return false;

    if (target == 0)
        m_browserFrame->view()->refresh();
    else
        m_viewerFrame->enterViewer();

    // The two frames take turns as one main window: the one coming up takes the place and
    // size of the one going away, so the switch does not make the window jump.
    const QRect place = left->normalGeometry();
    if (place.isValid() && !entered->isMaximized())
        entered->setGeometry(place);
    if (target == 1 && !m_viewerShown && left->isMaximized())
        entered->setWindowState(entered->windowState() | Qt::WindowMaximized);
    if (target == 1)
        m_viewerShown = true;

    m_mode = target;
    left->hide();
    showFrame(entered);
    return true;
}

bool CPellanoApp::leaveCurrentMode() {
    if (m_mode == 0) {
        if (m_browserFrame->view()->dragging())
            return false;
        // The thumbnail worker lets go of the hidden list after at most one more item.
        BrowserList::instance().stopRequest.store(BrowserList::kStopAbandon);
        return true;
    }
    return m_viewerFrame->queryLeave();
}

void CPellanoApp::showMainWindow() {
    QMainWindow* frame = mainWindow();
    if (!frame)
        return;
    if (frame->isHidden()) {
        if (m_mode == 0)
            m_browserFrame->view()->refresh();
        else
            m_viewerFrame->enterViewer();
        frame->showNormal();
    }
    if (frame->isMinimized())
        frame->setWindowState(frame->windowState() & ~Qt::WindowMinimized);
    frame->raise();
    frame->activateWindow();
}

void CPellanoApp::setBusy(bool busy) {
    m_busyFilter->setBusy(busy);
}

bool CPellanoApp::busy() const {
    return m_busyFilter->busy();
}

void CPellanoApp::openInViewer(const QString& path) {
    if (path.isEmpty() || !switchMode(1))
        return;
    postMessage(m_viewerFrame.get(), msg::VIEWER_OPEN_PATH, 0, 0, makePayload(path));
}

void CPellanoApp::openFromBrowser(const QString& path, const QString& linkTarget) {
    // The viewer made itself the receiver when it was entered.
    if (switchMode(1))
        ViewerReceiver::deliver(path, linkTarget);
}

void CPellanoApp::openDialog() {
    openInViewer(COpenFileDlg::run(mainWindow(), m_preview));
}

void CPellanoApp::pasteAsNewFile() {
    PackedDib picture = dibFromClipboard();
    if (!picture || !switchMode(1))
        return;
    postMessage(m_viewerFrame.get(), msg::VIEWER_ADOPT_DIB, 0, 0, makePayload(std::move(picture)));
}

void CPellanoApp::slideShowSettings() {
    CSlideDlg dialog(m_slide / 1000, mainWindow());
    if (dialog.exec() != QDialog::Accepted)
        return;
    const std::uint32_t delay = dialog.seconds() * 1000;
    if (delay == m_slide)
        return;
    m_slide = delay;
    m_viewerFrame->view()->restartSlideTimerIfRunning();
}

QWidget* CPellanoApp::dialogOwner() const {
    if (QWidget* active = QApplication::activeWindow())
        return active;
    return mainWindow();
}

void CPellanoApp::fileFormatSettings() {
    BrowserList& list = BrowserList::instance();
    CFmtDlg dialog(m_app, list.formatFilter, dialogOwner());
    if (dialog.exec() != QDialog::Accepted)
        return;
    // The words decide which files are listed; a hidden browser refreshes when it returns.
    if (FormatWordsApplier(m_company, m_app).apply(list, dialog.words()) && m_mode == 0 &&
        m_browserFrame)
        m_browserFrame->view()->refresh();
}

void CPellanoApp::fileDefaultOptions() {
    CFileSaveSetup dialog(m_captureFormats, m_captureTitle, m_captureExt, dialogOwner());
    if (dialog.exec() != QDialog::Accepted)
        return;
    const SaveSetupChoice choice = dialog.choice();
    m_captureTitle = choice.title;
    m_captureExt = choice.extension;
    m_captureFormat = choice.format;
    m_captureOptions[0] = choice.options.value1;
    m_captureOptions[1] = choice.options.value2;
}

QString CPellanoApp::chooseFileToOpen(QWidget* parent) {
    return COpenFileDlg::run(parent, m_preview);
}

int CPellanoApp::deleteFile(const QString& path, bool forGood) {
    return m_browserFrame ? m_browserFrame->view()->deleteFile(path, forGood) : -1;
}

int CPellanoApp::readTrackMode() {
    return m_settings.readInt(QStringLiteral("options"), QStringLiteral("OT"), 1);
}

void CPellanoApp::writeTrackMode(int trackMode) {
    m_settings.writeInt(QStringLiteral("options"), QStringLiteral("OT"), trackMode);
}

bool CPellanoApp::queryClose(QMainWindow* frame) {
    if (m_cameraFrame && m_cameraFrame->isVisible()) {
        // The camera window stays; the mode's frame only goes out of sight, and the program
        // ends when the camera window is closed.
        if (frame == mainWindow() && leaveCurrentMode())
            frame->hide();
        return false;
    }
    const bool browser = frame == m_browserFrame.get();
    // The second half of a close the user already agreed to.
    if (browser ? m_viewerClosed : m_browserClosed)
        return true;
    if (m_viewerFrame && !m_viewerFrame->view()->document().promptToSave())
        return false;
    if (m_browserFrame)
        m_browserFrame->releaseTwain();
    // The frame of the other mode is hidden; it is asked to close after this one, and the
    // program ends when both have gone.
    QMainWindow* other = browser ? static_cast<QMainWindow*>(m_viewerFrame.get())
                                 : static_cast<QMainWindow*>(m_browserFrame.get());
    if (other)
        QMetaObject::invokeMethod(
            this, [this, other] { m_busyFilter->closeWindow(other); }, Qt::QueuedConnection);
    return true;
}

void CPellanoApp::frameClosed(QMainWindow* frame) {
    if (frame == m_browserFrame.get())
        m_browserClosed = true;
    else if (frame == m_viewerFrame.get())
        m_viewerClosed = true;
    if (m_browserClosed && m_viewerClosed)
        QCoreApplication::quit();
}

bool CPellanoApp::onCommand(int id) {
    switch (id) {
    case cmd::ID_MODE_BROWSER:
        switchMode(0);
        return true;
    case cmd::ID_BROWSER_ITEM_OPEN:
        if (BrowserList::instance().selectedCount() == 1 && switchMode(1))
            ImageNavigator(BrowserList::instance()).openSelected();
        return true;
    case cmd::ID_SHOW_MAIN_WINDOW:
        showMainWindow();
        return true;
    case cmd::ID_APP_OPEN:
        openDialog();
        return true;
    case cmd::ID_PASTE_AS_NEW_FILE:
        pasteAsNewFile();
        return true;
    case cmd::ID_PROMPT_TO_SAVE:
        m_prompt = !m_prompt;
        return true;
    case cmd::ID_SLIDE_SHOW_SETTINGS:
        slideShowSettings();
        return true;
    case cmd::ID_FILE_FORMAT:
        fileFormatSettings();
        return true;
    case cmd::ID_FILE_DEFAULT_OPTIONS:
        fileDefaultOptions();
        return true;
    case cmd::ID_APP_EXIT:
        requestExit();
        return true;
    case cmd::ID_APP_ABOUT: {
        CAboutDlg about(mainWindow());
        about.exec();
        return true;
    }
    case cmd::ID_CAMERA_DROPDOWN:
        // The button's own menu opens under it.
        if (m_browserFrame && m_browserFrame->cameraDropDownMenu())
            m_browserFrame->cameraDropDownMenu()->popup(QCursor::pos());
        return true;
    default:
        if (id >= cmd::ID_CAMERA_FIRST && id <= cmd::ID_CAMERA_LAST) {
            openCamera(id - cmd::ID_CAMERA_FIRST);
            return true;
        }
        return false;
    }
}

bool CPellanoApp::onUpdateCommand(int id, CommandState& state) {
    switch (id) {
    case cmd::ID_BROWSER_ITEM_OPEN:
        state.enabled = BrowserList::instance().selectedCount() == 1;
        return true;
    case cmd::ID_PASTE_AS_NEW_FILE:
        state.enabled = m_clipboardPicture;
        return true;
    case cmd::ID_PROMPT_TO_SAVE:
        state.setCheck(m_prompt);
        return true;
    case cmd::ID_CAMERA_DROPDOWN:
    case cmd::ID_MODE_BROWSER:
    case cmd::ID_SHOW_MAIN_WINDOW:
    case cmd::ID_APP_OPEN:
    case cmd::ID_SLIDE_SHOW_SETTINGS:
    case cmd::ID_FILE_FORMAT:
    case cmd::ID_FILE_DEFAULT_OPTIONS:
    case cmd::ID_APP_EXIT:
    case cmd::ID_APP_ABOUT:
        return true;
    default:
        if (id >= cmd::ID_CAMERA_FIRST && id <= cmd::ID_CAMERA_LAST) {
            const int index = id - cmd::ID_CAMERA_FIRST;
            state.enabled = !m_cameraFrame && index < static_cast<int>(m_cameras.size());
            if (index < static_cast<int>(m_cameras.size()) &&
                m_cameras[static_cast<std::size_t>(index)].id == m_currentCameraId)
                state.setCheck(true);
            return true;
        }
        return false;
    }
}

} // namespace lanmira

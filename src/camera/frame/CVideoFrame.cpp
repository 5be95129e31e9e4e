#include "camera/frame/CVideoFrame.h"

#include "acquire/ClipboardImage.h"
#include "camera/CameraPaneLink.h"
#include "camera/dialogs/CAutoDlg.h"
#include "camera/frame/CaptureWriter.h"
#include "camera/frame/VideoFrameHost.h"
#include "camera/pane/CCameraPane.h"
#include "camera/view/CVideoView.h"
#include "dscap/ICameraControl.h"
#include "i18n/i18n.h"
#include "platform/CommandIds.h"
#include "platform/CommandRouter.h"
#include "platform/MenuBuilder.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"
#include "platform/ScreenSaverInhibitor.h"
#include "platform/TextFormat.h"

#include <QCloseEvent>
#include <QDockWidget>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPainter>
#include <QStatusBar>

namespace lanmira {
namespace {

constexpr int kKeepAwakeMs = 10000;
constexpr int kFrameRateMs = 1000;

QString menuSafe(QString text) {
    return text.replace(u'&', QStringLiteral("&&"));
}

} // namespace

const MenuResource& CVideoFrame::menuResource() {
    using E = MenuEntry;
    static const MenuResource menu{
        "IDR_VIDEO",
        {E::popup("file",
                  {E::item(cmd::ID_VIDEO_CAPTURE_FRAME), E::item(cmd::ID_EDIT_COPY),
                   E::item(cmd::ID_VIDEO_AUTO_CAPTURE), E::separator(),
                   E::item(cmd::ID_VIDEO_START_RECORD), E::item(cmd::ID_VIDEO_STOP_RECORD)}),
         E::popup("camera", {E::item(cmd::ID_VIDEO_VIEW_PROPERTIES), E::popup("dialogs", {}),
                             E::separator(), E::item(cmd::ID_VIDEO_TOPMOST)}),
         E::popup("options", {E::item(cmd::ID_FILE_DEFAULT_OPTIONS), E::item(cmd::ID_FILE_FORMAT),
                              E::separator(), E::item(cmd::ID_PROMPT_TO_SAVE),
                              E::item(cmd::ID_SLIDE_SHOW_SETTINGS)}),
         E::popup("help", {E::item(cmd::ID_APP_ABOUT)})}};
    return menu;
}

CVideoFrame::CVideoFrame(VideoFrameHost& host, CameraRecord camera)
    : m_host(host), m_session(std::move(camera)), m_router(new CommandRouter(this)),
      m_view(new CVideoView(*this)), m_writer(new CaptureWriter(this)),
      m_inhibitor(new ScreenSaverInhibitor(i18n_stringW("ids_lanmira_appname"), this)),
      m_frameRate(new QLabel(this)) {
    setObjectName(QStringLiteral("CVideoFrame"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(m_session.camera().name);
    m_topmost =
        m_host.readSetting(QStringLiteral("options"), QStringLiteral("VideoTopmost"), 0) != 0;

    setCentralWidget(m_view);
    m_router->setTargets({this, m_host.applicationCommands()});
    MenuBuilder::fillMenuBar(menuBar(), menuResource(), *m_router);
    if (auto* dialogs = menuBar()->findChild<QMenu*>(QStringLiteral("dialogs"))) {
        connect(dialogs, &QMenu::aboutToShow, this, [this, dialogs] { fillDialogMenu(dialogs); });
        fillDialogMenu(dialogs);
    }

    m_frameRate->setObjectName(QStringLiteral("statusFrameRate"));
    m_frameRate->setProperty("paneId", cmd::ID_PANE_FRAME_RATE);
    m_frameRate->setMinimumWidth(260);
    statusBar()->addPermanentWidget(m_frameRate);

    m_autoTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_autoTimer, &QTimer::timeout, this, &CVideoFrame::autoCaptureTick);
    m_keepAwakeTimer.setInterval(kKeepAwakeMs);
    connect(&m_keepAwakeTimer, &QTimer::timeout, this, &CVideoFrame::updateKeepAwake);
    m_frameRateTimer.setInterval(kFrameRateMs);
    connect(&m_frameRateTimer, &QTimer::timeout, this, &CVideoFrame::updateFrameRate);

    connect(m_writer, &CaptureWriter::failed, this, &CVideoFrame::saveFailed);
    VideoFrameHost* settings = &this->host();
    setPane(new CCameraPane(
        this,
        [settings](const QString& key, int def) {
            return settings->readSetting(QStringLiteral("CameraPane"), key, def);
        },
        [settings](const QString& key, int value) {
            settings->writeSetting(QStringLiteral("CameraPane"), key, value);
        }));
    resize(1024, 720);
}

CVideoFrame::~CVideoFrame() {
    if (m_pane)
        m_pane->SetCamera(nullptr, nullptr, 0);
    m_host.writeSetting(QStringLiteral("options"), QStringLiteral("VideoTopmost"),
                        m_topmost ? 1 : 0);
    m_autoTimer.stop();
    m_keepAwakeTimer.stop();
    m_frameRateTimer.stop();
    m_inhibitor->setInhibited(false, {});
    m_session.stop();
    m_host.cameraFrameDestroyed(this);
}

void CVideoFrame::setPane(CameraPaneLink* pane) {
    m_pane = pane;
    if (!pane)
        return;
    if (!m_paneDock) {
        m_paneDock = new QDockWidget(i18n_stringW("ids_calvora_camerapane_camera"), this);
        m_paneDock->setObjectName(QStringLiteral("cameraPaneDock"));
        m_paneDock->setFeatures(QDockWidget::DockWidgetMovable);
        addDockWidget(Qt::LeftDockWidgetArea, m_paneDock);
    }
    m_paneDock->setWidget(pane->paneWidget());
}

template <class F> void CVideoFrame::nested(F&& work) {
    ++m_nested;
    work();
    --m_nested;
    if (m_nested == 0 && m_closePending)
        QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection);
}

void CVideoFrame::closeEvent(QCloseEvent* event) {
    if (m_nested > 0) {
        // A dialog or the recording question runs inside a call of ours: close after it.
        m_closePending = true;
        event->ignore();
        return;
    }
    event->accept();
}

VideoSessionFacts CVideoFrame::facts() const {
    VideoSessionFacts f;
    f.hasSource = m_session.hasSource();
    f.canGrab = m_session.canGrab();
    f.recording = m_session.recording();
    f.autoCapture = m_auto.running();
    f.topmost = m_topmost;
    f.lost = m_session.state() == CameraSession::State::Lost;
    return f;
}

void CVideoFrame::startPreview() {
    if (m_session.state() != CameraSession::State::Idle)
        return;
    if (m_session.start(receiverContext(), m_view->receiverContext())) {
        m_host.setCurrentCamera(m_session.camera().id);
        m_keepAwakeTimer.start();
        m_frameRateTimer.start();
        int width = 0, height = 0;
        if (m_session.videoSize(width, height))
            m_videoSize = QSize(width, height);
        m_view->readRegionsFromCamera();
        if (m_pane) {
            m_pane->SetCamera(m_session.handle(), m_session.control(), 1);
        } else {
            // Without the control pane, whose groups would switch them, both regions show.
            ICameraControl* control = m_session.control();
            m_view->showRegion(CVideoView::Region::WhiteBalance,
                               control && control->IsColour() > 0);
            m_view->showRegion(CVideoView::Region::Exposure, control != nullptr);
        }
        updateKeepAwake();
    } else {
        const QString reason = m_session.lastError();
        m_notice = i18n_stringW("ids_calvora_camera_openfail");
        if (!reason.isEmpty())
            m_notice += u' ' + reason;
    }
    setTopmost(m_topmost);
    m_view->update();
    m_router->updateActions();
}

void CVideoFrame::setVideoSize(QSize size) {
    m_videoSize = size;
    if (m_pane) {
        m_pane->SetStateFlag(false, CameraPaneLink::kVideoSize);
        m_pane->SetStateFlag(m_session.recording(), CameraPaneLink::kRecording);
    }
    m_zoom = VideoZoom{};
    // The library scales the regions with the picture; show them where they are now.
    m_view->readRegionsFromCamera();
    m_view->update();
}

void CVideoFrame::zoomStep(int code) {
    if (const auto next = VideoZoom::step(m_zoom, code)) {
        m_zoom = *next;
        m_view->update();
    }
}

void CVideoFrame::paintNotice(QPainter& painter, const QRect& area) const {
    if (m_notice.isEmpty())
        return;
    QFont bold = font();
    bold.setPointSizeF(bold.pointSizeF() * 1.4);
    bold.setBold(true);
    painter.save();
    painter.setFont(bold);
    const QRect box = painter.fontMetrics()
                          .boundingRect(area.adjusted(40, 0, -40, 0), Qt::TextWordWrap, m_notice)
                          .adjusted(-16, -12, 16, 12);
    QRect placed = box;
    placed.moveCenter(area.center());
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 170));
    painter.drawRoundedRect(placed, 6, 6);
    painter.setPen(Qt::white);
    painter.drawText(placed, Qt::AlignCenter | Qt::TextWordWrap, m_notice);
    painter.restore();
}

void CVideoFrame::showError(const QString& text) {
    // One message at a time, and never a nested event loop inside a timer tick.
    if (m_errorBox)
        return;
    auto* box = new QMessageBox(QMessageBox::Warning, i18n_stringW("ids_lanmira_appname"), text,
                                QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    m_errorBox = box;
    box->open();
}

void CVideoFrame::captureFrame() {
    m_writer->saveNext(m_session.grab(), m_host.captureSettings(), m_host.captureCounter(), true);
}

void CVideoFrame::captureToClipboard() {
    const PackedDib picture = m_session.grab();
    if (picture)
        copyDibToClipboard(picture);
}

void CVideoFrame::toggleAutoCapture() {
    if (m_auto.running()) {
        stopAutoCapture();
        return;
    }
    const auto reader = [this](const char* key, int def) {
        return m_host.readSetting(QStringLiteral("Auto"), QString::fromLatin1(key), def);
    };
    bool accepted = false;
    AutoCaptureSettings chosen;
    nested([&] {
        CAutoDlg dialog(AutoCaptureSettings::read(reader), this);
        accepted = dialog.exec() == QDialog::Accepted;
        chosen = dialog.settings();
    });
    if (!accepted || m_closePending || !m_session.canGrab())
        return;
    chosen.write([this](const char* key, int value) {
        m_host.writeSetting(QStringLiteral("Auto"), QString::fromLatin1(key), value);
    });
    m_auto.start(chosen.limit, chosen.times);
    m_autoTimer.start(chosen.slot * 1000);
}

void CVideoFrame::stopAutoCapture() {
    m_autoTimer.stop();
    m_auto.stop();
    m_router->updateActions();
}

void CVideoFrame::autoCaptureTick() {
    if (m_auto.tick() == AutoCapture::Tick::Stop) {
        stopAutoCapture();
        return;
    }
    PackedDib picture = m_session.grab();
    if (!picture) {
        stopAutoCapture();
        return;
    }
    // A tick never moves the counter past a file that is there: it saves nothing instead.
    m_writer->saveNext(std::move(picture), m_host.captureSettings(), m_host.captureCounter(),
                       false);
}

void CVideoFrame::saveFailed(const QString& path, const QString& error) {
    stopAutoCapture();
    showError(error.isEmpty()
                  ? formatText(i18n_stringW("ids_calvora_savefilefail2"), {path})
                  : formatText(i18n_stringW("ids_calvora_savefilefail1"), {path, error}));
}

void CVideoFrame::toggleRecording() {
    const dscap_handle handle = m_session.handle();
    if (!handle)
        return;
    if (m_session.recording()) {
        stopRecording();
        return;
    }
    bool started = false;
    nested([&] { started = dscap_start_capture(handle) != 0; });
    if (!started && m_session.state() == CameraSession::State::Previewing) {
        // A cancelled file question leaves no reason; a refusal does.
        char text[512] = {};
        if (dscap_last_error(handle, text, sizeof text) && text[0] && !m_closePending)
            showError(QString::fromUtf8(text));
    }
    recordingChanged();
}

void CVideoFrame::stopRecording() {
    if (const dscap_handle handle = m_session.handle())
        dscap_stop_capture(handle);
    recordingChanged();
}

void CVideoFrame::recordingChanged() {
    if (m_pane)
        m_pane->SetStateFlag(m_session.recording(), CameraPaneLink::kRecording);
    updateKeepAwake();
    m_router->updateActions();
}

void CVideoFrame::setTopmost(bool on) {
    m_topmost = on;
    if (windowFlags().testFlag(Qt::WindowStaysOnTopHint) == on)
        return;
    const bool shown = isVisible();
    setWindowFlag(Qt::WindowStaysOnTopHint, on);
    // Changing the flags hides the window; bring it back as it was.
    if (shown)
        show();
}

void CVideoFrame::updateFrameRate() {
    if (!isVisible())
        return;
    double camera = 0, shown = 0;
    const dscap_handle handle = m_session.handle();
    if (handle && m_session.state() == CameraSession::State::Previewing &&
        dscap_get_property(handle, &camera, &shown))
        m_frameRateText = formatText(i18n_stringW("ids_calvora_video_framerate"), {camera, shown});
    else
        m_frameRateText.clear();
    m_frameRate->setText(m_frameRateText);
}

void CVideoFrame::updateKeepAwake() {
    const bool live = m_session.previewing() || m_session.recording();
    m_inhibitor->setInhibited(live, i18n_stringW("ids_calvora_keepawake"));
}

void CVideoFrame::deviceEvent(int code) {
    if (code == DSCAP_EVENT_DEVICE_LOST) {
        m_session.markLost();
        stopAutoCapture();
        m_notice = i18n_stringW("ids_calvora_camera_disconnected");
        m_frameRateText.clear();
        m_frameRate->clear();
        recordingChanged();
        m_view->update();
        return;
    }
    char text[512] = {};
    const dscap_handle handle = m_session.handle();
    const QString reason =
        handle && dscap_last_error(handle, text, sizeof text) ? QString::fromUtf8(text) : QString();
    if (code == DSCAP_EVENT_RECORD_FAILED) {
        recordingChanged();
        showError(reason.isEmpty() ? i18n_stringW("ids_calvora_record_failed") : reason);
    } else if (code == DSCAP_EVENT_STREAM_FAILED) {
        m_notice = reason.isEmpty() ? i18n_stringW("ids_calvora_camera_openfail") : reason;
        m_view->update();
    }
    m_router->updateActions();
}

void CVideoFrame::fillDialogMenu(QMenu* menu) {
    menu->clear();
    bool any = false;
    for (int id = cmd::ID_CAMERA_DIALOG_FIRST; id <= cmd::ID_CAMERA_DIALOG_LAST; ++id) {
        char name[128] = {};
        const dscap_handle handle = m_session.handle();
        if (!handle || !dscap_dialog_name(handle, id, name, sizeof name))
            continue;
        QAction* a = m_router->action(id);
        a->setText(menuSafe(QString::fromUtf8(name)) + QStringLiteral("..."));
        menu->addAction(a);
        any = true;
    }
    menu->setEnabled(any);
    m_router->updateActions();
}

bool CVideoFrame::onCommand(int id) {
    const dscap_handle handle = m_session.handle();
    switch (id) {
    case cmd::ID_VIDEO_CAPTURE_FRAME:
        captureFrame();
        return true;
    case cmd::ID_EDIT_COPY:
        captureToClipboard();
        return true;
    case cmd::ID_VIDEO_AUTO_CAPTURE:
        toggleAutoCapture();
        return true;
    case cmd::ID_VIDEO_START_RECORD:
        toggleRecording();
        return true;
    case cmd::ID_VIDEO_STOP_RECORD:
        stopRecording();
        return true;
    case cmd::ID_VIDEO_VIEW_PROPERTIES:
        if (handle)
            nested([&] { dscap_view_property(handle, receiverContext()); });
        return true;
    case cmd::ID_VIDEO_TOPMOST:
        setTopmost(!m_topmost);
        return true;
    default:
        if (id >= cmd::ID_CAMERA_DIALOG_FIRST && id <= cmd::ID_CAMERA_DIALOG_LAST) {
            if (handle)
                nested([&] { dscap_dialog(handle, id); });
            return true;
        }
        return false;
    }
}

bool CVideoFrame::onUpdateCommand(int id, CommandState& state) {
    const bool dialog = id >= cmd::ID_CAMERA_DIALOG_FIRST && id <= cmd::ID_CAMERA_DIALOG_LAST;
    return videoCommandState(id, facts(), dialog && m_session.dialogExists(id), state);
}

void CVideoFrame::customEvent(QEvent* event) {
    PostedMessage* m = PostedMessage::from(event);
    if (!m) {
        QMainWindow::customEvent(event);
        return;
    }
    switch (m->message()) {
    case msg::VIDEO_START_PREVIEW:
        startPreview();
        break;
    case msg::CAPTURE_VIDEO_SIZE:
        setVideoSize(QSize(static_cast<int>(m->wParam()), static_cast<int>(m->lParam())));
        break;
    case msg::VIDEO_ZOOM_STEP:
        zoomStep(static_cast<int>(m->wParam()));
        break;
    case msg::VIDEO_ORIENTATION_CHANGED:
        // The regions stay where they are on the sensor, so they move on the screen.
        m_view->readRegionsFromCamera();
        break;
    case msg::VIDEO_SHOW_REGION:
        m_view->showRegion(m->lParam() != 0 ? CVideoView::Region::WhiteBalance
                                            : CVideoView::Region::Exposure,
                           m->wParam() != 0);
        break;
    case msg::VIDEO_RUN_COMMAND:
        m_router->dispatch(static_cast<int>(m->wParam()));
        break;
    case msg::VIDEO_SET_RESOLUTION:
        if (const dscap_handle handle = m_session.handle())
            dscap_set_esize(handle, static_cast<int>(m->wParam()), 0);
        break;
    case msg::CAPTURE_EVENT:
        deviceEvent(static_cast<int>(m->wParam()));
        break;
    default:
        QMainWindow::customEvent(event);
        break;
    }
}

} // namespace lanmira

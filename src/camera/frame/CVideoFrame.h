#pragma once

#include "camera/CameraRecord.h"
#include "camera/frame/AutoCapture.h"
#include "camera/frame/CameraSession.h"
#include "camera/frame/VideoCommandState.h"
#include "camera/frame/VideoZoom.h"
#include "platform/CommandTarget.h"
#include "platform/MenuResource.h"
#include "platform/ReceiverRegistry.h"

#include <QMainWindow>
#include <QPointer>
#include <QSize>
#include <QString>
#include <QTimer>

class QDockWidget;
class QLabel;
class QMenu;
class QMessageBox;
class QPainter;

namespace lanmira {

class CameraPaneLink;
class CaptureWriter;
class CommandRouter;
class CVideoView;
class ScreenSaverInhibitor;
class VideoFrameHost;

// The camera window: the live picture of one camera, capture of single frames to numbered
// files or the clipboard, capture on a timer, recording, and a docking place for the
// camera's control pane. It exists from the choice of a camera until it is closed, and
// deletes itself when closed.
class CVideoFrame final : public QMainWindow, public CommandTarget {
    Q_OBJECT
public:
    CVideoFrame(VideoFrameHost& host, CameraRecord camera);
    ~CVideoFrame() override;

    static const MenuResource& menuResource();

    VideoFrameHost& host() { return m_host; }
    CameraSession& session() { return m_session; }
    const CameraSession& session() const { return m_session; }
    CVideoView* view() const { return m_view; }
    CommandRouter& router() { return *m_router; }
    QSize videoSize() const { return m_videoSize; }
    VideoZoom zoom() const { return m_zoom; }
    bool autoCapturing() const { return m_auto.running(); }
    QString frameRateText() const { return m_frameRateText; }
    void* receiverContext() const { return m_receiver.context(); }

    // Docks the control pane; the frame hands it the camera when the preview starts.
    void setPane(CameraPaneLink* pane);
    // The view's news that recording started or stopped.
    void recordingChanged();
    // A line over the picture when the camera is gone or could not be opened.
    void paintNotice(QPainter& painter, const QRect& area) const;

    // CommandTarget
    bool onCommand(int id) override;
    bool onUpdateCommand(int id, CommandState& state) override;

protected:
    void customEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    VideoSessionFacts facts() const;
    void startPreview();
    void setVideoSize(QSize size);
    void zoomStep(int code);
    void captureFrame();
    void captureToClipboard();
    void toggleAutoCapture();
    void stopAutoCapture();
    void autoCaptureTick();
    void toggleRecording();
    void stopRecording();
    void setTopmost(bool on);
    void updateFrameRate();
    void updateKeepAwake();
    void deviceEvent(int code);
    void saveFailed(const QString& path, const QString& error);
    void fillDialogMenu(QMenu* menu);
    void showError(const QString& text);
    // Runs something that may spin an event loop (a dialog, the recording file question);
    // a close asked for meanwhile waits until it has returned.
    template <class F> void nested(F&& work);

    VideoFrameHost& m_host;
    CameraSession m_session;
    ReceiverRegistration m_receiver{this};
    CommandRouter* m_router;
    CVideoView* m_view;
    CaptureWriter* m_writer;
    ScreenSaverInhibitor* m_inhibitor;
    CameraPaneLink* m_pane = nullptr;
    QDockWidget* m_paneDock = nullptr;
    QLabel* m_frameRate;
    QString m_frameRateText;
    QString m_notice;
    QPointer<QMessageBox> m_errorBox;

    bool m_topmost = false;
    QSize m_videoSize;
    VideoZoom m_zoom;
    AutoCapture m_auto;
    QTimer m_autoTimer;      // 3: auto capture, slot seconds apart
    QTimer m_keepAwakeTimer; // 4: every 10 s
    QTimer m_frameRateTimer; // 5: every second
    int m_nested = 0;
    bool m_closePending = false;
};

} // namespace lanmira

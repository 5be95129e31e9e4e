#pragma once

#include "app/SettingsStore.h"
#include "camera/CameraRecord.h"
#include "camera/frame/CVideoFrame.h"
#include "camera/frame/VideoFrameHost.h"
#include "platform/CommandTarget.h"
#include "platform/FrameHost.h"
#include "viewer/ViewerHost.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class QMainWindow;
class QMenu;

namespace lanmira {

class BusyInputFilter;
class CMainFrame1;
class CMainFrame2;
class CVideoFrame;
class VideoDeviceWatcher;
class UnixSignalBridge;

// The application object: start-up, the settings it owns, the two mode frames and the
// switches between them, the commands all frames share, and shutdown.
class CPellanoApp final : public QObject,
                          public CommandTarget,
                          public FrameHost,
                          public ViewerHost,
                          public VideoFrameHost {
    Q_OBJECT
public:
    struct Options {
        QString path;           // file or folder from the command line
        QString executablePath; // empty: the running program's own path
        // How start-up failures reach the user; empty: message box and stderr.
        std::function<void(const QString&)> reportFailure;
    };

    explicit CPellanoApp(Options options);
    ~CPellanoApp() override;

    static CPellanoApp* instance();

    // True when the program is to run its event loop.
    bool initInstance();
    // Writes the settings back and releases what start-up took; returns the exit code.
    int exitInstance(int exitCode);

    // Writes "slide", "Preview", "Prompt", then the capture title and extension.
    void saveSettings();
    // Closes the program the way "Exit" does.
    void requestExit();

    // 0 browser, 1 viewer. True when `target` is the current mode afterwards; false when the
    // frame being left refused (a drag in the browser, a cancelled save prompt).
    bool switchMode(std::uint32_t target);
    // Command 32863: the current mode's frame shown, restored and in front.
    void showMainWindow();

    // While busy, the user's mouse and keys (Escape excepted) and close buttons are dropped.
    // The filter goes on the QApplication.
    void setBusy(bool busy);
    bool busy() const;
    BusyInputFilter* busyFilter() const { return m_busyFilter; }

    // FrameHost
    bool queryClose(QMainWindow* frame) override;
    void frameClosed(QMainWindow* frame) override;
    CommandTarget* applicationCommands() override { return this; }

    // VideoFrameHost
    int readSetting(const QString& section, const QString& key, int def) override;
    void writeSetting(const QString& section, const QString& key, int value) override;
    CaptureFormat captureSettings() const override;
    int& captureCounter() override { return m_captureCounter; }
    void setCurrentCamera(const QString& id) override { m_currentCameraId = id; }
    void cameraFrameDestroyed(CVideoFrame* frame) override;

    // CommandTarget
    bool onCommand(int id) override;
    bool onUpdateCommand(int id, CommandState& state) override;

    // ViewerHost
    bool promptToSave() const override { return m_prompt; }
    std::uint32_t slideDelay() const override { return m_slide; }
    QString chooseFileToOpen(QWidget* parent) override;
    int deleteFile(const QString& path, bool forGood) override;
    int readTrackMode() override;
    void writeTrackMode(int trackMode) override;

    QMainWindow* mainWindow() const;
    CMainFrame1* browserFrame() const { return m_browserFrame.get(); }
    CMainFrame2* viewerFrame() const { return m_viewerFrame.get(); }
    std::uint32_t mode() const { return m_mode; }

    const QString& programFolder() const { return m_programFolder; }
    const QString& company() const { return m_company; }
    const QString& app() const { return m_app; }
    const QString& url() const { return m_url; }
    const QString& display() const { return m_display; }
    const QString& cameraModule() const { return m_cameraModule; }
    const QString& secondCameraModule() const { return m_secondCameraModule; }
    SettingsStore& settings() { return m_settings; }

    bool previewFlag() const { return m_preview; }
    bool promptFlag() const { return m_prompt; }
    std::uint32_t slideInterval() const { return m_slide; }
    void setSlideInterval(std::uint32_t ms) { m_slide = ms; }
    const QString& captureTitle() const { return m_captureTitle; }
    const QString& captureExtension() const { return m_captureExt; }
    int captureFormat() const { return m_captureFormat; }
    std::uint32_t captureOption(int which) const { return m_captureOptions[which & 1]; }
    const QStringList& captureFormatList() const { return m_captureFormats; }
    const std::vector<CameraRecord>& cameras() const { return m_cameras; }

    void enumerateCameras();
    // Makes the camera window for the camera at that index of the list; nothing when one is
    // open or there is no such camera.
    void openCamera(int index);
    // Rebuilds a "Camera List" popup from the camera list.
    void fillCameraListMenu(QMenu* menu);
    CVideoFrame* cameraFrame() const { return m_cameraFrame; }
    const QString& currentCameraId() const { return m_currentCameraId; }

private:
    void fail(const QString& text);
    void readCaptureSettings();
    QMainWindow* frameOf(std::uint32_t mode) const;
    void showFrame(QMainWindow* frame);
    // Switches to the viewer and has it open the file; a refused switch drops the path.
    void openInViewer(const QString& path);
    void openFromBrowser(const QString& path, const QString& linkTarget);
    void openDialog();
    void pasteAsNewFile();
    void slideShowSettings();
    // Commands 32908 and 32897: the file format dialog and the default file options dialog.
    void fileFormatSettings();
    void fileDefaultOptions();
    // The window a dialog of an application command belongs to: the one in front (the
    // camera window, too), else the current mode's frame.
    QWidget* dialogOwner() const;
    // The step that leaving the current mode takes; false when its frame refuses.
    bool leaveCurrentMode();

    Options m_options;
    QString m_programFolder;
    QString m_company, m_app, m_url, m_display, m_cameraModule, m_secondCameraModule;
    SettingsStore m_settings;

    bool m_settingsRead = false;
    bool m_preview = true;
    bool m_prompt = true;
    std::uint32_t m_slide = 2000;
    QString m_captureTitle;
    QString m_captureExt;
    int m_captureFormat = 0;
    std::uint32_t m_captureOptions[2] = {0, 0};
    QStringList m_captureFormats;
    std::vector<CameraRecord> m_cameras;
    QPointer<CVideoFrame> m_cameraFrame;
    QString m_currentCameraId;
    int m_captureCounter = 0;
    VideoDeviceWatcher* m_deviceWatcher = nullptr;

    std::uint32_t m_mode = 0;
    std::unique_ptr<CMainFrame1> m_browserFrame;
    std::unique_ptr<CMainFrame2> m_viewerFrame;
    bool m_browserClosed = false;
    bool m_viewerClosed = false;
    // The first time the viewer comes up, it takes over the browser's maximised state too.
    bool m_viewerShown = false;
    bool m_clipboardPicture = false;
    BusyInputFilter* m_busyFilter;
    UnixSignalBridge* m_signals = nullptr;
};

} // namespace lanmira

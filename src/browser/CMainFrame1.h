#pragma once

#include "acquire/CTwain.h"
#include "acquire/TwainSettings.h"
#include "platform/ModeFrame.h"

#include <QString>

#include <functional>

class QLabel;
class QMenu;
class QToolBar;

namespace lanmira {

class CaptureWriter;
class CFoldersPane;
class CView1;
class VideoFrameHost;

// The browser mode's main window: the folder pane, the grid of thumbnails, the toolbar of
// file commands and the status bar of the selection. It owns the program's TWAIN session:
// scanned pages are saved under the capture names, where the browser shows them.
class CMainFrame1 final : public ModeFrame, public CTwain {
    Q_OBJECT
public:
    struct Start {
        QString company;
        QString app;
        QString programFolder;
        QString folder; // shown first; empty: the process's current folder
    };

    CMainFrame1(FrameHost& host, const Start& start);
    ~CMainFrame1() override;

    static const MenuResource& menuResource();

    // Fills a camera list popup each time it opens (the File menu's and the toolbar's).
    void setCameraMenuFiller(std::function<void(QMenu*)> fill);
    QMenu* cameraListMenu() const { return m_cameraList; }
    QMenu* cameraDropDownMenu() const { return m_cameraDropDown; }

    CView1* view() const { return m_view; }
    CFoldersPane* foldersPane() const { return m_folders; }

    // Ends any scanner session and unloads the manager (the program is closing).
    void releaseTwain() { ReturnToState(State::ManagerUnloaded); }
    TwainSettings& twainSettings() { return m_twain; }

    // CommandTarget
    bool onCommand(int id) override;
    bool onUpdateCommand(int id, CommandState& state) override;

Q_SIGNALS:
    // The list of capture devices changed (posted after device notifications).
    void camerasChanged();

protected:
    void customEvent(QEvent* event) override;

    // CTwain
    bool NegotiateCapabilities() override;
    void OnCloseRequest() override;
    void OnNativeImage(TW_HANDLE handle) override;
    void OnError(int code) override;

private:
    void buildToolBar();
    void showContextMenu(const QPoint& pos);
    void updateStatus();
    void acquired(const QString& path);
    void saveFailed(const QString& path, const QString& error);

    CView1* m_view;
    CFoldersPane* m_folders;
    QToolBar* m_toolBar = nullptr;
    QMenu* m_cameraList = nullptr;
    QMenu* m_cameraDropDown = nullptr;
    std::function<void(QMenu*)> m_fillCameraMenu;
    QLabel* m_position;
    QLabel* m_name;
    QLabel* m_image;
    // The application's capture naming and settings; null without one (tests).
    VideoFrameHost* m_capture;
    CaptureWriter* m_saver;
    TwainSettings m_twain;
};

} // namespace lanmira

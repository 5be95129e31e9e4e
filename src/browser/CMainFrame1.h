#pragma once

#include "platform/ModeFrame.h"

#include <QString>

#include <functional>

class QLabel;
class QMenu;
class QToolBar;

namespace lanmira {

class CFoldersPane;
class CView1;

// The browser mode's main window: the folder pane, the grid of thumbnails, the toolbar of
// file commands and the status bar of the selection.
class CMainFrame1 final : public ModeFrame {
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

Q_SIGNALS:
    // The list of capture devices changed (posted after device notifications).
    void camerasChanged();

protected:
    void customEvent(QEvent* event) override;

private:
    void buildToolBar();
    void showContextMenu(const QPoint& pos);
    void updateStatus();

    CView1* m_view;
    CFoldersPane* m_folders;
    QToolBar* m_toolBar = nullptr;
    QMenu* m_cameraList = nullptr;
    QMenu* m_cameraDropDown = nullptr;
    std::function<void(QMenu*)> m_fillCameraMenu;
    QLabel* m_position;
    QLabel* m_name;
    QLabel* m_image;
};

} // namespace lanmira

#pragma once

#include "platform/ModeFrame.h"

#include <QString>

class QLabel;
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

    CView1* view() const { return m_view; }
    CFoldersPane* foldersPane() const { return m_folders; }

Q_SIGNALS:
    // The list of capture devices changed (posted after device notifications).
    void camerasChanged();

protected:
    void customEvent(QEvent* event) override;

private:
    void buildToolBar();
    void updateStatus();

    CView1* m_view;
    CFoldersPane* m_folders;
    QToolBar* m_toolBar = nullptr;
    QLabel* m_position;
    QLabel* m_name;
    QLabel* m_image;
};

} // namespace lanmira

#pragma once

#include "platform/ModeFrame.h"

class QLabel;

namespace lanmira {

class CView2;
class ViewerHost;

// The viewer mode's main window: the view, its menus, toolbar and status panes; it takes
// files dropped on it and the application's messages 0x469 (open a path) and 0x46C (adopt
// a picture).
class CMainFrame2 final : public ModeFrame {
    Q_OBJECT
public:
    CMainFrame2(FrameHost& host, ViewerHost& viewerHost);
    ~CMainFrame2() override;

    static const MenuResource& menuResource();

    CView2* view() const { return m_view; }

    // Leaving viewer mode: the save prompt; false keeps the viewer.
    bool queryLeave();
    // Entering viewer mode: the state flag goes to 0 and the view becomes the receiver of
    // files chosen in the folder list.
    void enterViewer();
    int stateFlag() const { return m_stateFlag; }

protected:
    void customEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void buildToolBar();
    void updateStatus();

    CView2* m_view;
    int m_stateFlag = 0;
    // Status panes: path, size, depth, page, zoom.
    QLabel* m_panes[5] = {};
};

} // namespace lanmira

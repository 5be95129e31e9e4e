#pragma once

#include "camera/CameraPaneLink.h"
#include "camera/pane/PaneGroups.h"

#include <QPointer>
#include <QWidget>

#include <array>

namespace lanmira {

class CCameraBaseDlg;
class CCameraExposureDlg;
class CCameraLsDlg;
class CTaskPane;

// The camera window's control pane: ten foldable groups, one panel each, through which
// every camera setting is reached. It attaches the camera to all panels together and tells
// the window which regions of interest to show as their groups open and close.
class CCameraPane final : public QWidget, public CameraPaneLink {
    Q_OBJECT
public:
    // `frame` receives the pane's messages; the settings are its "CameraPane" section.
    CCameraPane(QObject* frame, CollapsedGroups::Reader readSetting,
                CollapsedGroups::Writer writeSetting, QWidget* parent = nullptr);
    // Writes which groups are folded.
    ~CCameraPane() override;

    void SetCamera(dscap_handle handle, ICameraControl* control, int mode) override;
    void SetStateFlag(bool on, unsigned bits) override;
    QWidget* paneWidget() override { return this; }

    CTaskPane* taskPane() const { return m_pane; }
    CCameraBaseDlg* panel(int group) const { return m_panels.at(static_cast<std::size_t>(group)); }
    bool groupOpen(int group) const;
    void setGroupOpen(int group, bool open);

private:
    void groupsChanged();
    void post(const std::vector<RegionReporter::Post>& posts);

    QPointer<QObject> m_frame;
    CollapsedGroups::Writer m_write;
    CTaskPane* m_pane;
    std::array<CCameraBaseDlg*, kGroupCount> m_panels{};
    RegionReporter m_regions;
    bool m_colour = true;
};

} // namespace lanmira

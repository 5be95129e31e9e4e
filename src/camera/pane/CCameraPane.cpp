#include "camera/pane/CCameraPane.h"

#include "camera/pane/CTaskGroup.h"
#include "camera/pane/CTaskPane.h"
#include "camera/pane/PaneIcons.h"
#include "camera/panels/CCameraExposureDlg.h"
#include "camera/panels/CCameraFlipDlg.h"
#include "camera/panels/CCameraHSBDlg.h"
#include "camera/panels/CCameraHistogramDlg.h"
#include "camera/panels/CCameraLsDlg.h"
#include "camera/panels/CCameraModeDlg.h"
#include "camera/panels/CCameraPreviewDlg.h"
#include "camera/panels/CCameraSampleDlg.h"
#include "camera/panels/CCameraSpeedDlg.h"
#include "camera/panels/CCameraWBDlg.h"
#include "dscap/ICameraControl.h"
#include "i18n/i18n.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"

#include <QScrollBar>
#include <QVBoxLayout>

namespace lanmira {
namespace {
constexpr const char* kCaptions[kGroupCount] = {
    "ids_calvora_camerapane_resolution", "ids_calvora_camerapane_exposureandgain",
    "ids_calvora_camerapane_white",      "ids_calvora_camerapane_coloradjust",
    "ids_calvora_camerapane_power",      "ids_calvora_camerapane_framerate",
    "ids_calvora_camerapane_color",      "ids_calvora_camerapane_flip",
    "ids_calvora_camerapane_sampling",   "ids_calvora_camerapane_histogram"};
} // namespace

CCameraPane::CCameraPane(QObject* frame, CollapsedGroups::Reader readSetting,
                         CollapsedGroups::Writer writeSetting, QWidget* parent)
    : QWidget(parent), m_frame(frame), m_write(std::move(writeSetting)),
      m_pane(new CTaskPane(this)) {
    setObjectName(QStringLiteral("CCameraPane"));
    setWindowTitle(i18n_stringW("ids_calvora_camerapane_camera"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pane);

    auto* preview = new CCameraPreviewDlg(frame);
    auto* exposure = new CCameraExposureDlg(frame);
    auto* wb = new CCameraWBDlg(frame);
    auto* hsb = new CCameraHSBDlg(frame);
    auto* ls = new CCameraLsDlg(frame);
    auto* speed = new CCameraSpeedDlg(frame);
    auto* mode = new CCameraModeDlg(frame);
    auto* flip = new CCameraFlipDlg(frame);
    auto* sample = new CCameraSampleDlg(frame);
    auto* histogram = new CCameraHistogramDlg(frame);
    m_panels = {preview, exposure, wb, hsb, ls, speed, mode, flip, sample, histogram};
    exposure->setLightSourcePanel(ls);
    ls->setExposurePanel(exposure);

    // Panels with ranges set them before their texts; the others only need their texts.
    exposure->InitControls();
    wb->InitControls();
    hsb->InitControls();
    histogram->InitControls();
    preview->InitPanel(CCameraPreviewDlg::dialogName());
    ls->InitPanel(CCameraLsDlg::dialogName());
    speed->InitPanel(CCameraSpeedDlg::dialogName());
    mode->InitPanel(CCameraModeDlg::dialogName());
    flip->InitPanel(CCameraFlipDlg::dialogName());
    sample->InitPanel(CCameraSampleDlg::dialogName());

    const CollapsedGroups stored = CollapsedGroups::read(readSetting);
    int widest = 0;
    for (int g = 0; g < kGroupCount; ++g) {
        m_pane->addGroup(i18n_stringW(kCaptions[g]), paneGroupIcon(g), panel(g));
        m_pane->group(g)->setCollapsed(stored.collapsed[static_cast<std::size_t>(g)]);
        widest = std::max(widest, panel(g)->minimumWidth());
    }
    m_pane->setMinimumWidth(widest + m_pane->verticalScrollBar()->sizeHint().width() + 8);
    connect(m_pane, &CTaskPane::groupToggled, this, &CCameraPane::groupsChanged);
}

CCameraPane::~CCameraPane() {
    CollapsedGroups state;
    for (int g = 0; g < kGroupCount; ++g)
        state.collapsed[static_cast<std::size_t>(g)] = !groupOpen(g);
    if (m_write)
        state.write(m_write);
}

bool CCameraPane::groupOpen(int group) const {
    return !m_pane->group(group)->collapsed();
}

void CCameraPane::setGroupOpen(int group, bool open) {
    m_pane->group(group)->setCollapsed(!open);
    groupsChanged();
}

void CCameraPane::SetCamera(dscap_handle handle, ICameraControl* control, int mode) {
    for (CCameraBaseDlg* p : m_panels)
        p->SetCamera(handle, control, mode);
    // Every panel asked the camera the same; the white balance panel's answer stands for all.
    m_colour = panel(kGroupWhiteBalance)->colourCamera();
    if (control && m_pane->groupCount() > 0)
        post(
            m_regions.attached(groupOpen(kGroupWhiteBalance), groupOpen(kGroupExposure), m_colour));
}

void CCameraPane::SetStateFlag(bool on, unsigned bits) {
    for (CCameraBaseDlg* p : m_panels)
        p->SetStateFlag(on, bits);
}

void CCameraPane::groupsChanged() {
    post(m_regions.groupsChanged(groupOpen(kGroupWhiteBalance), groupOpen(kGroupExposure),
                                 m_colour));
}

void CCameraPane::post(const std::vector<RegionReporter::Post>& posts) {
    if (!m_frame)
        return;
    for (const RegionReporter::Post& p : posts)
        postMessage(m_frame, msg::VIDEO_SHOW_REGION, p.show ? 1 : 0, p.region);
}

} // namespace lanmira

#include "camera/panels/CCameraPreviewDlg.h"

#include "camera/pane/PaneIcons.h"
#include "camera/panels/ResolutionChoices.h"
#include "dscap/ICameraControl.h"
#include "platform/CommandIds.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"

#include <QComboBox>
#include <QPushButton>

namespace lanmira {
namespace {
constexpr char kDialog[] = "IDD_CAMERAPREVIEW";
constexpr int kListLabel = 4001;
} // namespace

const char* CCameraPreviewDlg::dialogName() {
    return kDialog;
}

std::vector<int> CCameraPreviewDlg::controlIds() {
    return {kSnap, kRecord, kListLabel};
}

CCameraPreviewDlg::CCameraPreviewDlg(QObject* owner, QWidget* parent)
    : CCameraBaseDlg(owner, 232, 92, parent) {
    setObjectName(QStringLiteral("CCameraPreviewDlg"));
    setTextIds(controlIds());
    m_snap = place(new QPushButton, kSnap, {8, 4, 114, 36}, kAnchorStretchLeftHalf);
    m_record = place(new QPushButton, kRecord, {118, 4, 224, 36}, kAnchorStretchRightHalf);
    m_list = place(new QComboBox, kResolutions, {8, 60, 224, 84}, kAnchorStretch);
    label(kListLabel, {8, 40, 224, 58}, 0, m_list);
    for (QPushButton* b : {m_snap, m_record})
        b->setIconSize(QSize(24, 24));
    m_snap->setIcon(previewButtonIcon(PreviewImage::Snap));
    showRecordImages(false);

    connect(m_snap, &QPushButton::clicked, this,
            [this] { postToOwner(msg::VIDEO_RUN_COMMAND, cmd::ID_VIDEO_CAPTURE_FRAME); });
    connect(m_record, &QPushButton::clicked, this,
            [this] { postToOwner(msg::VIDEO_RUN_COMMAND, cmd::ID_VIDEO_START_RECORD); });
    connect(m_list, &QComboBox::currentIndexChanged, this, &CCameraPreviewDlg::resolutionChosen);
}

void CCameraPreviewDlg::showRecordImages(bool stop) {
    m_recordStop = stop;
    m_record->setIcon(previewButtonIcon(stop ? PreviewImage::RecordStop : PreviewImage::Record));
}

void CCameraPreviewDlg::UpdateControls() {
    m_updating = true;
    showRecordImages(false);
    m_snap->setEnabled(mode() != 0);
    m_record->setEnabled(mode() == 1);
    m_list->clear();
    ResolutionChoices choices;
    if (ICameraControl* c = control()) {
        std::vector<std::pair<int, int>> sizes;
        const std::int32_t count = c->GetResolutionCount();
        for (std::int32_t i = 0; i < count; ++i) {
            std::int32_t w = 0, h = 0;
            if (c->GetResolution(i, &w, &h) >= 0)
                sizes.emplace_back(w, h);
        }
        std::int32_t index = 0;
        c->GetResolutionIndex(&index);
        choices = ResolutionChoices::fromInterface(sizes, index);
    } else if (handle()) {
        int count = 0;
        std::vector<std::pair<int, int>> sizes;
        if (dscap_capability* table = dscap_get_capability(handle(), &count)) {
            for (int i = 0; i < count; ++i)
                sizes.emplace_back(table[i].width, table[i].height);
            dscap_free_capability(table);
        }
        int w = 0, h = 0;
        const bool known = dscap_video_size(handle(), &w, &h) != 0;
        const std::pair<int, int> size{w, h};
        choices = ResolutionChoices::fromCapability(sizes, known ? &size : nullptr);
    }
    m_list->addItems(choices.texts);
    m_list->setCurrentIndex(choices.selected);
    m_list->setEnabled(control() && m_list->count() > 0);
    m_updating = false;
}

void CCameraPreviewDlg::selectVideoSize() {
    int w = 0, h = 0;
    if (!dscap_video_size(handle(), &w, &h))
        return;
    const int entry = m_list->findText(ResolutionChoices::text(w, h));
    if (entry >= 0) {
        m_updating = true;
        m_list->setCurrentIndex(entry);
        m_updating = false;
    }
}

void CCameraPreviewDlg::SetStateFlag(bool on, unsigned bits) {
    CCameraBaseDlg::SetStateFlag(on, bits);
    if ((bits & kVideoSizeChanged) && sourceKind() == 4)
        selectVideoSize();
    if (bits & (kRecording | kCaptureBlocked)) {
        const unsigned flags = stateFlags();
        const bool recording = flags & kRecording;
        const bool blocked = flags & kCaptureBlocked;
        if (control())
            m_list->setEnabled(!recording && !blocked && m_list->count() > 0);
        showRecordImages(recording);
        m_record->setEnabled(mode() == 1 && !blocked);
        m_snap->setEnabled(!blocked);
    }
}

void CCameraPreviewDlg::resolutionChosen(int index) {
    if (m_updating || !control() || index < 0)
        return;
    std::int32_t current = 0;
    control()->GetResolutionIndex(&current);
    // The camera window switches the resolution; the panel only asks for it.
    if (current != index)
        postToOwner(msg::VIDEO_SET_RESOLUTION, static_cast<quintptr>(index));
}

} // namespace lanmira

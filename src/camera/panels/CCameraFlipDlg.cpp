#include "camera/panels/CCameraFlipDlg.h"

#include "dscap/ICameraControl.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"

#include <QCheckBox>

namespace lanmira {

const char* CCameraFlipDlg::dialogName() {
    return "IDD_CAMERAFLIP";
}

CCameraFlipDlg::CCameraFlipDlg(QObject* owner, QWidget* parent)
    : CCameraBaseDlg(owner, 232, 56, parent) {
    setObjectName(QStringLiteral("CCameraFlipDlg"));
    setTextIds(controlIds());
    m_horizontal = place(new QCheckBox, kHorizontal, {8, 4, 224, 26});
    m_vertical = place(new QCheckBox, kVertical, {8, 28, 224, 50});
    // The regions stay put on the sensor, so the camera window must show them anew.
    connect(m_horizontal, &QCheckBox::clicked, this, [this](bool on) {
        if (!control())
            return;
        control()->SetHorizontalFlip(on ? 1 : 0);
        postToOwner(msg::VIDEO_ORIENTATION_CHANGED);
    });
    connect(m_vertical, &QCheckBox::clicked, this, [this](bool on) {
        if (!control())
            return;
        control()->SetVerticalFlip(on ? 1 : 0);
        postToOwner(msg::VIDEO_ORIENTATION_CHANGED);
    });
}

void CCameraFlipDlg::UpdateControls() {
    m_horizontal->setEnabled(attached());
    m_vertical->setEnabled(attached());
    if (!attached())
        return;
    std::int32_t flip = 0;
    if (control()->GetVerticalFlip(&flip) >= 0)
        m_vertical->setChecked(flip != 0);
    if (control()->GetHorizontalFlip(&flip) >= 0)
        m_horizontal->setChecked(flip != 0);
}

} // namespace lanmira

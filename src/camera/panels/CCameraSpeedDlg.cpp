#include "camera/panels/CCameraSpeedDlg.h"

#include "dscap/ICameraControl.h"

#include <QLabel>
#include <QSlider>

namespace lanmira {

const char* CCameraSpeedDlg::dialogName() {
    return "IDD_CAMERASPEED";
}

CCameraSpeedDlg::CCameraSpeedDlg(QObject* owner, QWidget* parent)
    : CCameraBaseDlg(owner, 232, 150, parent) {
    setObjectName(QStringLiteral("CCameraSpeedDlg"));
    setTextIds(controlIds());
    m_speed = place(new QSlider(Qt::Horizontal), kSpeed, {8, 4, 224, 26}, kAnchorStretch);
    m_speed->setFocusPolicy(Qt::StrongFocus);
    m_speed->setRange(0, 0);
    label(kLow, {8, 26, 112, 44}, 0, m_speed);
    auto* high = label(kHigh, {120, 26, 224, 44}, kAnchorRight);
    high->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* instruction = label(kInstruction, {8, 48, 224, 146}, kAnchorStretch);
    instruction->setWordWrap(true);
    instruction->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    connect(m_speed, &QSlider::valueChanged, this, [this](int p) {
        if (control())
            control()->SetSpeed(static_cast<std::uint8_t>(p & 0xFF));
    });
}

void CCameraSpeedDlg::UpdateControls() {
    m_speed->setEnabled(attached());
    if (!attached())
        return;
    setRangeQuietly(m_speed, 0, std::max(0, control()->GetMaxSpeed()));
    std::uint8_t speed = 0;
    if (control()->GetSpeed(&speed) >= 0)
        setQuietly(m_speed, speed);
}

} // namespace lanmira

#include "camera/panels/CCameraModeDlg.h"

#include "dscap/ICameraControl.h"

#include <QRadioButton>

namespace lanmira {

const char* CCameraModeDlg::dialogName() {
    return "IDD_CAMERAMODE";
}

CCameraModeDlg::CCameraModeDlg(QObject* owner, QWidget* parent)
    : CCameraBaseDlg(owner, 232, 56, parent) {
    setObjectName(QStringLiteral("CCameraModeDlg"));
    setTextIds(controlIds());
    m_colour = place(new QRadioButton, kColour, {8, 4, 224, 26});
    m_grey = place(new QRadioButton, kGrey, {8, 28, 224, 50});
    connect(m_colour, &QRadioButton::clicked, this, [this] {
        if (attached() && colour())
            control()->SetMonochrome(0);
    });
    connect(m_grey, &QRadioButton::clicked, this, [this] {
        if (attached() && colour())
            control()->SetMonochrome(1);
    });
}

void CCameraModeDlg::UpdateControls() {
    const bool on = attached() && colour();
    m_colour->setEnabled(on);
    m_grey->setEnabled(on);
    if (!attached())
        return;
    if (!colour()) {
        checkOne({m_colour, m_grey}, 1);
        return;
    }
    std::int32_t grey = 0;
    if (control()->GetMonochrome(&grey) >= 0)
        checkOne({m_colour, m_grey}, grey != 0 ? 1 : 0);
}

} // namespace lanmira

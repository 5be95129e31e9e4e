#include "camera/panels/CCameraLsDlg.h"

#include "dscap/ICameraControl.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"

#include <QRadioButton>

namespace lanmira {

const char* CCameraLsDlg::dialogName() {
    return "IDD_CAMERALS";
}

CCameraLsDlg::CCameraLsDlg(QObject* owner, QWidget* parent)
    : CCameraBaseDlg(owner, 232, 80, parent) {
    setObjectName(QStringLiteral("CCameraLsDlg"));
    setTextIds(controlIds());
    m_ac50 = place(new QRadioButton, kAc50, {8, 4, 224, 26});
    m_ac60 = place(new QRadioButton, kAc60, {8, 28, 224, 50});
    m_dc = place(new QRadioButton, kDc, {8, 52, 224, 74});
    connect(m_ac50, &QRadioButton::clicked, this, [this] { choose(1); });
    connect(m_ac60, &QRadioButton::clicked, this, [this] { choose(0); });
    connect(m_dc, &QRadioButton::clicked, this, [this] { choose(2); });
}

void CCameraLsDlg::choose(std::int32_t source) {
    if (!control())
        return;
    control()->SetLightSource(source);
    // The exposure time in force follows the light source's period.
    if (m_exposure)
        postMessage(m_exposure, msg::EXPOSURE_CHANGED, 0, 1);
}

void CCameraLsDlg::UpdateControls() {
    std::int32_t source = 2;
    if (!control() || control()->GetLightSource(&source) != 0) {
        checkOne({m_ac50, m_ac60, m_dc}, -1);
        for (QRadioButton* b : {m_ac50, m_ac60, m_dc})
            b->setEnabled(false);
        return;
    }
    checkOne({m_ac50, m_ac60, m_dc}, source == 1 ? 0 : source == 0 ? 1 : source == 2 ? 2 : -1);
    enableForAutoExposure();
}

void CCameraLsDlg::enableForAutoExposure() {
    std::int32_t automatic = 0;
    control()->GetAutoExposure(&automatic);
    for (QRadioButton* b : {m_ac50, m_ac60, m_dc})
        b->setEnabled(automatic == 0);
}

void CCameraLsDlg::customEvent(QEvent* event) {
    PostedMessage* m = PostedMessage::from(event);
    if (!m || m->message() != msg::LIGHT_SOURCE_REENABLE) {
        CCameraBaseDlg::customEvent(event);
        return;
    }
    std::int32_t source = 2;
    // The checks stay as they are; only whether they may be changed follows the camera.
    if (control() && control()->GetLightSource(&source) == 0)
        enableForAutoExposure();
}

} // namespace lanmira

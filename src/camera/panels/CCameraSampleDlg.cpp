#include "camera/panels/CCameraSampleDlg.h"

#include "dscap/ICameraControl.h"

#include <QRadioButton>

namespace lanmira {

const char* CCameraSampleDlg::dialogName() {
    return "IDD_CAMERASAMPLE";
}

CCameraSampleDlg::CCameraSampleDlg(QObject* owner, QWidget* parent)
    : CCameraBaseDlg(owner, 232, 56, parent) {
    setObjectName(QStringLiteral("CCameraSampleDlg"));
    setTextIds(controlIds());
    m_bin = place(new QRadioButton, kBin, {8, 4, 224, 26});
    m_skip = place(new QRadioButton, kSkip, {8, 28, 224, 50});
    connect(m_bin, &QRadioButton::clicked, this, [this] {
        if (control())
            control()->SetSamplingMode(0);
    });
    connect(m_skip, &QRadioButton::clicked, this, [this] {
        if (control())
            control()->SetSamplingMode(1);
    });
}

void CCameraSampleDlg::UpdateControls() {
    std::int32_t sampling = 0;
    const bool known = control() && control()->GetSamplingMode(&sampling) >= 0;
    m_bin->setEnabled(known);
    m_skip->setEnabled(known);
    if (known)
        checkOne({m_bin, m_skip}, sampling == 0 ? 0 : 1);
}

} // namespace lanmira

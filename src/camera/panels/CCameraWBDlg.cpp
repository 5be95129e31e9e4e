#include "camera/panels/CCameraWBDlg.h"

#include "dscap/ICameraControl.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"

#include <QLabel>
#include <QPushButton>
#include <QSlider>

namespace lanmira {
namespace {
constexpr char kDialog[] = "IDD_CAMERAWB";
constexpr int kTemperatureDefault = 6503, kTintDefault = 1000;

void whiteBalanceDone(std::int32_t temperature, std::int32_t tint, void* context) {
    ReceiverRegistry::post(ReceiverRegistry::fromContext(context), msg::WB_ONE_PUSH_DONE,
                           static_cast<quintptr>(static_cast<std::uint32_t>(temperature)), tint);
}
} // namespace

const char* CCameraWBDlg::dialogName() {
    return kDialog;
}

std::vector<int> CCameraWBDlg::controlIds() {
    return {kTemperatureLabel, kTintLabel, kInstruction, kOnePush, kDefaults};
}

CCameraWBDlg::CCameraWBDlg(QObject* owner, QWidget* parent)
    : CCameraBaseDlg(owner, 232, 206, parent) {
    setObjectName(QStringLiteral("CCameraWBDlg"));
    setTextIds(controlIds());
    m_temperature =
        place(new QSlider(Qt::Horizontal), kTemperature, {8, 22, 176, 44}, kAnchorStretch);
    label(kTemperatureLabel, {8, 4, 224, 22}, 0, m_temperature);
    m_temperatureText = place(new QLabel, kTemperatureText, {180, 22, 224, 44}, kAnchorRight);
    m_tint = place(new QSlider(Qt::Horizontal), kTint, {8, 66, 176, 88}, kAnchorStretch);
    label(kTintLabel, {8, 48, 224, 66}, 0, m_tint);
    m_tintText = place(new QLabel, kTintText, {180, 66, 224, 88}, kAnchorRight);
    auto* instruction = place(new QLabel, kInstruction, {8, 92, 224, 170}, kAnchorStretch);
    instruction->setWordWrap(true);
    m_onePush = place(new QPushButton, kOnePush, {8, 174, 114, 200}, kAnchorStretchLeftHalf);
    m_defaults = place(new QPushButton, kDefaults, {118, 174, 224, 200}, kAnchorStretchRightHalf);
    for (QLabel* text : {m_temperatureText, m_tintText})
        text->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    for (QSlider* s : {m_temperature, m_tint})
        s->setFocusPolicy(Qt::StrongFocus);

    connect(m_temperature, &QSlider::valueChanged, this, [this] { moved(true); });
    connect(m_tint, &QSlider::valueChanged, this, [this] { moved(false); });
    connect(m_onePush, &QPushButton::clicked, this, &CCameraWBDlg::whiteBalanceOnce);
    connect(m_defaults, &QPushButton::clicked, this, &CCameraWBDlg::restoreDefaults);
}

void CCameraWBDlg::InitControls() {
    InitPanel(kDialog);
    setRangeQuietly(m_temperature, 2000, 15000);
    setRangeQuietly(m_tint, 200, 2500);
    restoreDefaults();
}

void CCameraWBDlg::UpdateControls() {
    const bool on = usable();
    for (QWidget* w : std::initializer_list<QWidget*>{m_temperature, m_tint, m_onePush, m_defaults})
        w->setEnabled(on);
    if (!on)
        return;
    std::int32_t temperature = kTemperatureDefault, tint = kTintDefault;
    if (control()->GetTempTint(&temperature, &tint) >= 0)
        show(temperature, tint);
}

void CCameraWBDlg::show(int temperature, int tint) {
    setQuietly(m_temperature, temperature);
    setQuietly(m_tint, tint);
    m_temperatureText->setText(QString::number(temperature));
    m_tintText->setText(QString::number(tint));
}

void CCameraWBDlg::moved(bool temperatureMoved) {
    const int temperature = m_temperature->value();
    const int tint = m_tint->value();
    if (temperatureMoved)
        m_temperatureText->setText(QString::number(temperature));
    else
        m_tintText->setText(QString::number(tint));
    if (usable())
        control()->SetTempTint(temperature, tint);
}

void CCameraWBDlg::restoreDefaults() {
    show(kTemperatureDefault, kTintDefault);
    if (usable())
        control()->SetTempTint(kTemperatureDefault, kTintDefault);
}

void CCameraWBDlg::whiteBalanceOnce() {
    if (usable())
        control()->WhiteBalanceOnce(whiteBalanceDone, m_receiver.context());
}

void CCameraWBDlg::customEvent(QEvent* event) {
    PostedMessage* m = PostedMessage::from(event);
    if (!m || m->message() != msg::WB_ONE_PUSH_DONE) {
        CCameraBaseDlg::customEvent(event);
        return;
    }
    // The camera already holds these values; showing them must not write them back.
    show(static_cast<int>(static_cast<std::uint32_t>(m->wParam())), static_cast<int>(m->lParam()));
}

} // namespace lanmira

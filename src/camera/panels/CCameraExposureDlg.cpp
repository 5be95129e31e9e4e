#include "camera/panels/CCameraExposureDlg.h"

#include "camera/panels/CExposureButton.h"
#include "camera/panels/CExposureTimeDlg.h"
#include "camera/panels/ExposureTimeScale.h"
#include "dscap/ICameraControl.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"
#include "platform/TextFormat.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSlider>

namespace lanmira {
namespace {
constexpr char kDialog[] = "IDD_CAMERAEXPOSURE";
constexpr int kTargetLabel = 4001, kTimeLabel = 4002, kGainLabel = 4003;
constexpr int kTargetMin = 10, kTargetMax = 230, kTargetDefault = 120;

void exposureChanged(void* context) {
    ReceiverRegistry::post(ReceiverRegistry::fromContext(context), msg::EXPOSURE_CHANGED, 0, 0);
}

QSlider* slider() {
    auto* s = new QSlider(Qt::Horizontal);
    s->setFocusPolicy(Qt::StrongFocus);
    return s;
}
} // namespace

const char* CCameraExposureDlg::dialogName() {
    return kDialog;
}

std::vector<int> CCameraExposureDlg::controlIds() {
    return {kAuto, kTargetLabel, kTimeLabel, kGainLabel, kDefaults};
}

CCameraExposureDlg::CCameraExposureDlg(QObject* owner, QWidget* parent)
    : CCameraBaseDlg(owner, 232, 192, parent) {
    setObjectName(QStringLiteral("CCameraExposureDlg"));
    setTextIds(controlIds());
    m_auto = place(new QCheckBox, kAuto, {8, 4, 224, 26});
    m_target = place(slider(), kTarget, {8, 46, 176, 68}, kAnchorStretch);
    label(kTargetLabel, {8, 28, 224, 46}, 0, m_target);
    m_targetText = place(new QLabel, kTargetText, {180, 46, 224, 68}, kAnchorRight);
    m_timeSlider = place(slider(), kTime, {8, 90, 140, 112}, kAnchorStretch);
    label(kTimeLabel, {8, 72, 224, 90}, 0, m_timeSlider);
    m_timeButton = place(new CExposureButton, kTimeButton, {144, 90, 224, 112}, kAnchorRight);
    m_gain = place(slider(), kGain, {8, 134, 176, 156}, kAnchorStretch);
    label(kGainLabel, {8, 116, 224, 134}, 0, m_gain);
    m_gainText = place(new QLabel, kGainText, {180, 134, 224, 156}, kAnchorRight);
    m_defaults = place(new QPushButton, kDefaults, {70, 162, 162, 188}, kAnchorCentre);
    m_targetText->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_gainText->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    connect(m_auto, &QCheckBox::clicked, this, [this](bool on) {
        if (!attached())
            return;
        control()->SetAutoExposure(on ? 1 : 0);
        applyAutoRule(on);
    });
    connect(m_target, &QSlider::valueChanged, this, [this](int p) {
        const auto v = static_cast<std::uint8_t>(p & 0xFF);
        m_targetText->setText(QString::number(v));
        if (attached())
            control()->SetAutoExposureTarget(v);
    });
    connect(m_timeSlider, &QSlider::valueChanged, this, [this](int p) {
        m_time = ExposureTimeScale(m_timeMin, m_timeMax).timeOf(p);
        if (attached())
            control()->SetExposureTime(m_time);
        updateTimeButton();
    });
    connect(m_gain, &QSlider::valueChanged, this, [this](int p) {
        showGain(p);
        if (attached())
            control()->SetExposureGain(static_cast<std::uint16_t>(p & 0xFFFF));
    });
    connect(m_defaults, &QPushButton::clicked, this, &CCameraExposureDlg::restoreDefaults);
    connect(m_timeButton, &QPushButton::clicked, this, &CCameraExposureDlg::openTimeDialog);
}

void CCameraExposureDlg::InitControls() {
    setRangeQuietly(m_target, kTargetMin, kTargetMax);
    InitPanel(kDialog);
    restoreDefaults();
}

void CCameraExposureDlg::OnDetach() {
    if (control())
        control()->SetExposureCallback(nullptr, nullptr);
}

void CCameraExposureDlg::UpdateControls() {
    const bool on = attached();
    for (QWidget* w : std::initializer_list<QWidget*>{m_auto, m_target, m_timeSlider, m_gain,
                                                      m_timeButton, m_defaults})
        w->setEnabled(on);
    if (!on) {
        m_gainMin = m_gainMax = m_gainDefault = 0;
        m_timeMin = m_timeMax = m_timeDefault = 0;
        m_time = 0;
        return;
    }
    refresh();
    control()->SetExposureCallback(exposureChanged, m_receiver.context());
}

void CCameraExposureDlg::SetStateFlag(bool on, unsigned bits) {
    CCameraBaseDlg::SetStateFlag(on, bits);
    if ((bits & kVideoSizeChanged) && attached())
        refresh();
}

void CCameraExposureDlg::refresh() {
    ICameraControl* c = control();
    std::uint16_t gmin = 0, gmax = 0, gdef = 0;
    if (c->GetExposureGainRange(&gmin, &gmax, &gdef) >= 0) {
        m_gainMin = gmin;
        m_gainMax = gmax;
        m_gainDefault = gdef;
    }
    std::uint32_t tmin = 0, tmax = 0, tdef = 0;
    if (c->GetExposureTimeRange(&tmin, &tmax, &tdef) >= 0) {
        m_timeMin = tmin;
        m_timeMax = tmax;
        m_timeDefault = tdef;
    }
    std::uint32_t t = 0;
    if (c->GetExposureTime(&t) >= 0)
        m_time = t;
    const ExposureTimeScale scale(m_timeMin, m_timeMax);
    setRangeQuietly(m_timeSlider, scale.firstPosition(), scale.lastPosition());
    setRangeQuietly(m_gain, m_gainMin, m_gainMax);

    std::int32_t automatic = 1;
    if (c->GetAutoExposure(&automatic) >= 0) {
        m_auto->setChecked(automatic != 0);
        applyAutoRule(automatic != 0);
    }
    // The slider's range has just changed: place it even where the time has not.
    setTimeSlider(m_time);
    followCamera();
}

void CCameraExposureDlg::applyAutoRule(bool automatic) {
    m_target->setEnabled(automatic);
    m_timeSlider->setEnabled(!automatic);
    m_gain->setEnabled(!automatic);
    m_timeButton->setEnabled(!automatic);
    postMessage(this, msg::EXPOSURE_CHANGED, 0, 1);
    if (m_lightSource)
        postMessage(m_lightSource, msg::LIGHT_SOURCE_REENABLE, 0, 0);
}

void CCameraExposureDlg::updateTimeButton() {
    std::uint32_t real = 0;
    if (control() && control()->GetRealExposureTime(&real) < 0)
        return;
    if (real == m_shownRealTime && !m_timeButton->text().isEmpty())
        return;
    m_shownRealTime = real;
    m_timeButton->setText(formatText(QStringLiteral("%.3fms"), {real / 1000.0}));
    m_timeButton->update();
}

void CCameraExposureDlg::showGain(int gain) {
    if (m_gainMin != 0)
        m_gainText->setText(
            formatText(QStringLiteral("%.2f"), {static_cast<double>(gain) / m_gainMin}));
}

void CCameraExposureDlg::setTimeSlider(std::uint32_t microseconds) {
    setQuietly(m_timeSlider, ExposureTimeScale(m_timeMin, m_timeMax).positionOf(microseconds));
}

void CCameraExposureDlg::restoreDefaults() {
    if (attached()) {
        control()->SetAutoExposureTarget(kTargetDefault);
        control()->SetExposureTime(m_timeDefault);
        control()->SetExposureGain(m_gainDefault);
        m_time = m_timeDefault;
    }
    m_targetText->setText(QString::number(kTargetDefault));
    setQuietly(m_target, kTargetDefault);
    updateTimeButton();
    showGain(m_gainDefault);
    setTimeSlider(m_timeDefault);
    setQuietly(m_gain, m_gainDefault);
}

void CCameraExposureDlg::openTimeDialog() {
    if (m_timeDialog)
        return;
    std::uint32_t initial = m_time;
    if (attached()) {
        std::uint32_t real = 0;
        if (control()->GetRealExposureTime(&real) >= 0)
            initial = real;
    }
    auto* dialog = new CExposureTimeDlg(m_timeMin, m_timeMax, initial, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    m_timeDialog = dialog;
    connect(dialog, &QDialog::accepted, this, [this, dialog] { timeChosen(dialog->result()); });
    // Not exec(): the camera window may close while the dialog is up.
    dialog->open();
}

void CCameraExposureDlg::timeChosen(std::uint32_t microseconds) {
    m_time = microseconds;
    if (attached())
        control()->SetExposureTime(microseconds);
    updateTimeButton();
    setTimeSlider(microseconds);
}

void CCameraExposureDlg::followCamera() {
    ICameraControl* c = control();
    std::uint16_t target = kTargetDefault;
    if (c->GetAutoExposureTarget(&target) >= 0) {
        setQuietly(m_target, target);
        m_targetText->setText(QString::number(target));
    }
    std::uint32_t t = 0;
    if (c->GetExposureTime(&t) >= 0 && t != m_time) {
        m_time = t;
        setTimeSlider(t);
    }
    updateTimeButton();
    std::uint16_t gain = 0;
    if (c->GetExposureGain(&gain) >= 0) {
        setQuietly(m_gain, gain);
        showGain(gain);
    }
}

void CCameraExposureDlg::customEvent(QEvent* event) {
    PostedMessage* m = PostedMessage::from(event);
    if (!m || m->message() != msg::EXPOSURE_CHANGED) {
        CCameraBaseDlg::customEvent(event);
        return;
    }
    if (m->lParam() == 1)
        updateTimeButton();
    else if (attached()) // news posted before the camera went
        followCamera();
}

} // namespace lanmira

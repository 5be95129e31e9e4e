#include "camera/panels/CCameraHSBDlg.h"

#include "dscap/ICameraControl.h"
#include "platform/TextFormat.h"

#include <QLabel>
#include <QPushButton>
#include <QSlider>

namespace lanmira {
namespace {
constexpr char kDialog[] = "IDD_CAMERAHSB";

struct RowSpec {
    int slider;
    int label;
    int text;
    int minimum;
    int maximum;
    int def;
};
constexpr RowSpec kRows[] = {{CCameraHSBDlg::kHue, 4001, 1130, -180, 180, 0},
                             {CCameraHSBDlg::kSaturation, 4002, 1132, 0, 255, 128},
                             {CCameraHSBDlg::kBrightness, 4003, 1134, -64, 64, 0},
                             {CCameraHSBDlg::kContrast, 4004, 1138, -100, 100, 0},
                             {CCameraHSBDlg::kGamma, 4005, 1140, 20, 180, 100}};
constexpr int kRowHeight = 42;
} // namespace

const char* CCameraHSBDlg::dialogName() {
    return kDialog;
}

std::vector<int> CCameraHSBDlg::controlIds() {
    std::vector<int> ids{kDefaults};
    for (const RowSpec& r : kRows)
        ids.push_back(r.label);
    return ids;
}

CCameraHSBDlg::CCameraHSBDlg(QObject* owner, QWidget* parent)
    : CCameraBaseDlg(owner, 232, 5 * kRowHeight + 36, parent) {
    setObjectName(QStringLiteral("CCameraHSBDlg"));
    setTextIds(controlIds());
    for (int i = 0; i < RowCount; ++i) {
        const RowSpec& r = kRows[i];
        const int top = 4 + i * kRowHeight;
        auto* s = place(new QSlider(Qt::Horizontal), r.slider, {8, top + 18, 176, top + 40},
                        kAnchorStretch);
        s->setFocusPolicy(Qt::StrongFocus);
        label(r.label, {8, top, 224, top + 18}, 0, s);
        auto* text = place(new QLabel, r.text, {180, top + 18, 224, top + 40}, kAnchorRight);
        text->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_sliders[static_cast<std::size_t>(i)] = s;
        m_texts[static_cast<std::size_t>(i)] = text;
        connect(s, &QSlider::valueChanged, this, [this, i](int v) {
            show(i, v);
            write(i, v);
        });
    }
    const int top = 4 + RowCount * kRowHeight;
    m_defaults = place(new QPushButton, kDefaults, {70, top + 2, 162, top + 28}, kAnchorCentre);
    connect(m_defaults, &QPushButton::clicked, this, &CCameraHSBDlg::restoreDefaults);
}

void CCameraHSBDlg::InitControls() {
    InitPanel(kDialog);
    for (int i = 0; i < RowCount; ++i)
        setRangeQuietly(m_sliders[static_cast<std::size_t>(i)], kRows[i].minimum, kRows[i].maximum);
    restoreDefaults();
}

void CCameraHSBDlg::show(int row, int value) {
    QSlider* s = m_sliders[static_cast<std::size_t>(row)];
    if (s->value() != value)
        setQuietly(s, value);
    m_texts[static_cast<std::size_t>(row)]->setText(
        row == Gamma ? formatText(QStringLiteral("%.2f"), {value / 100.0})
                     : QString::number(value));
}

void CCameraHSBDlg::write(int row, int value) {
    if (!usable())
        return;
    ICameraControl* c = control();
    switch (row) {
    case Hue:
        c->SetHue(value);
        break;
    case Saturation:
        c->SetSaturation(value);
        break;
    case Brightness:
        c->SetBrightness(value);
        break;
    case Contrast:
        c->SetContrast(value);
        break;
    case Gamma:
        c->SetGamma(value);
        break;
    }
}

void CCameraHSBDlg::UpdateControls() {
    const bool on = usable();
    for (QSlider* s : m_sliders)
        s->setEnabled(on);
    m_defaults->setEnabled(on);
    if (attached() && !colour()) {
        restoreDefaults(); // shows the defaults; a monochrome camera is not written to
        return;
    }
    if (!on)
        return;
    ICameraControl* c = control();
    std::int32_t (ICameraControl::*const reads[RowCount])(std::int32_t*) = {
        &ICameraControl::GetHue, &ICameraControl::GetSaturation, &ICameraControl::GetBrightness,
        &ICameraControl::GetContrast, &ICameraControl::GetGamma};
    for (int i = 0; i < RowCount; ++i) {
        std::int32_t v = kRows[i].def;
        if ((c->*reads[i])(&v) >= 0)
            show(i, v);
    }
}

void CCameraHSBDlg::restoreDefaults() {
    for (int i = 0; i < RowCount; ++i)
        show(i, kRows[i].def);
    for (int i = 0; i < RowCount; ++i)
        write(i, kRows[i].def);
}

} // namespace lanmira

#include "camera/dialogs/CAutoDlg.h"

#include "i18n/i18n.h"
#include "platform/DialogButtons.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace lanmira {
namespace {
constexpr char kDialog[] = "IDD_AUTO";
constexpr int kSlotMin = 1, kSlotMax = 3600;
constexpr int kTimesMin = 1, kTimesMax = 99999;
} // namespace

AutoCaptureSettings AutoCaptureSettings::read(const Reader& read) {
    AutoCaptureSettings s;
    s.limit = read("Limit", 1) != 0;
    s.slot = std::clamp(read("Slot", 6), kSlotMin, kSlotMax);
    s.times = std::clamp(read("Times", 100), kTimesMin, kTimesMax);
    return s;
}

void AutoCaptureSettings::write(const Writer& write) const {
    write("Limit", limit ? 1 : 0);
    write("Slot", slot);
    write("Times", times);
}

const char* CAutoDlg::dialogName() {
    return kDialog;
}

CAutoDlg::CAutoDlg(const AutoCaptureSettings& settings, QWidget* parent)
    : QDialog(parent), m_limit(new QCheckBox(this)), m_slot(new QSpinBox(this)),
      m_times(new QSpinBox(this)) {
    setObjectName(QStringLiteral("CAutoDlg"));
    m_limit->setObjectName(QStringLiteral("limit"));
    m_slot->setObjectName(QStringLiteral("slot"));
    m_times->setObjectName(QStringLiteral("times"));
    m_limit->setProperty("i18nId", kLimit);
    m_slot->setProperty("i18nId", kSlot);
    m_times->setProperty("i18nId", kTimes);
    m_slot->setRange(kSlotMin, kSlotMax);
    m_times->setRange(kTimesMin, kTimesMax);
    m_limit->setChecked(settings.limit);
    m_slot->setValue(settings.slot);
    m_times->setValue(settings.times);
    m_times->setEnabled(settings.limit);
    connect(m_limit, &QCheckBox::toggled, m_times, &QWidget::setEnabled);

    auto* slotLabel = new QLabel(this);
    slotLabel->setProperty("i18nId", kSlotLabel);
    slotLabel->setBuddy(m_slot);
    auto* timesLabel = new QLabel(this);
    timesLabel->setProperty("i18nId", kTimesLabel);
    timesLabel->setBuddy(m_times);

    auto* form = new QFormLayout;
    form->addRow(slotLabel, m_slot);
    form->addRow(m_limit);
    form->addRow(timesLabel, m_times);

    auto* buttons = makeOkCancelButtons(this);

    auto* top = new QVBoxLayout(this);
    top->addLayout(form);
    top->addWidget(buttons);
    i18n_dialog(this, kDialog);
    setFixedSize(sizeHint());
}

AutoCaptureSettings CAutoDlg::settings() const {
    AutoCaptureSettings s;
    s.limit = m_limit->isChecked();
    s.slot = m_slot->value();
    s.times = m_times->value();
    return s;
}

} // namespace lanmira

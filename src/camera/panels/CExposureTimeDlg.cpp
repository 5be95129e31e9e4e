#include "camera/panels/CExposureTimeDlg.h"

#include "camera/panels/CSpinButton.h"
#include "camera/panels/ExposureTimeInput.h"
#include "i18n/i18n.h"
#include "platform/DialogButtons.h"
#include "platform/TextFormat.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <climits>

namespace lanmira {
namespace {
constexpr char kDialog[] = "IDD_EXPOSURETIME";
constexpr int kOk = 1;
constexpr int kCancel = 2;

int spinValue(std::uint32_t us) {
    return static_cast<int>(std::min<std::uint32_t>(us, INT_MAX));
}
} // namespace

const char* CExposureTimeDlg::dialogName() {
    return kDialog;
}

std::vector<int> CExposureTimeDlg::controlIds() {
    return {0, kOk, kCancel, kUnit};
}

CExposureTimeDlg::CExposureTimeDlg(std::uint32_t minimum, std::uint32_t maximum,
                                   std::uint32_t initial, QWidget* parent)
    : QDialog(parent), m_min(minimum), m_max(maximum), m_edit(new QLineEdit(this)),
      m_spin(new CSpinButton(this)), m_range(new QLabel(this)) {
    setObjectName(QStringLiteral("CExposureTimeDlg"));
    m_edit->setObjectName(QStringLiteral("time"));
    m_edit->setMaxLength(256);
    m_spin->setFixedSize(18, m_edit->sizeHint().height());
    auto* unit = new QLabel(this);
    unit->setProperty("i18nId", kUnit);
    unit->setBuddy(m_edit);

    auto* buttons = makeOkCancelButtons(this);

    auto* line = new QHBoxLayout;
    line->setSpacing(0);
    line->addWidget(m_edit, 1);
    line->addWidget(m_spin);
    line->addSpacing(6);
    line->addWidget(unit);
    auto* top = new QVBoxLayout(this);
    top->addLayout(line);
    top->addWidget(m_range);
    top->addWidget(buttons);
    i18n_dialog(this, kDialog);

    m_spin->setRange(spinValue(minimum), spinValue(maximum));
    m_spin->setPosition(spinValue(initial));
    const QString rangeFormat = formatText(QStringLiteral("%s [%%.3f, %%.3f] ms"),
                                           {i18n_stringW("ids_calvora_camerapane_range")});
    m_range->setText(formatText(rangeFormat, {minimum / 1000.0, maximum / 1000.0}));
    m_edit->setText(formatText(QStringLiteral("%.3f"), {initial / 1000.0}));
    m_edit->selectAll();

    connect(m_spin, &CSpinButton::stepped, this, &CExposureTimeDlg::spinStepped);
    connect(m_edit, &QLineEdit::textEdited, this, &CExposureTimeDlg::editChanged);
}

int CExposureTimeDlg::spinPosition() const {
    return m_spin->position();
}

void CExposureTimeDlg::spinStepped() {
    m_edit->setText(formatText(QStringLiteral("%.3f"), {m_spin->position() / 1000.0}));
}

void CExposureTimeDlg::editChanged(const QString& text) {
    const ExposureTimeInput in = ExposureTimeInput::parse(text, m_min, m_max);
    if (in.verdict == ExposureTimeInput::Verdict::Ok)
        m_spin->setPosition(spinValue(in.microseconds));
}

void CExposureTimeDlg::accept() {
    const ExposureTimeInput in = ExposureTimeInput::parse(m_edit->text(), m_min, m_max);
    const char* name = nullptr;
    switch (in.verdict) {
    case ExposureTimeInput::Verdict::Ok:
        m_result = in.microseconds;
        m_lastMessage.clear();
        QDialog::accept();
        return;
    case ExposureTimeInput::Verdict::Empty:
        name = "ids_calvora_camerapane_timeempty";
        break;
    case ExposureTimeInput::Verdict::Invalid:
        name = "ids_calvora_camerapane_timeinvalid";
        break;
    case ExposureTimeInput::Verdict::OutOfRange:
        name = "ids_calvora_camerapane_timeinoutofrange";
        break;
    }
    m_lastMessage = i18n_stringW(name);
    m_edit->setFocus();
    // Not exec(): a nested loop here would outlive the dialog if the camera window closed.
    auto* box = new QMessageBox(QMessageBox::Information, windowTitle(), m_lastMessage,
                                QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(box, &QMessageBox::finished, this, [this] { m_edit->setFocus(); });
    box->open();
}

} // namespace lanmira

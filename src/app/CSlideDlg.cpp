#include "app/CSlideDlg.h"

#include "i18n/i18n.h"
#include "platform/TextFormat.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace lanmira {
namespace {
constexpr char kDialog[] = "IDD_SLIDE";
constexpr int kCaption = 0;
constexpr int kOk = 1;
constexpr int kCancel = 2;
constexpr int kLabel = 1056;
constexpr int kEdit = 1057;
} // namespace

const char* CSlideDlg::dialogName() {
    return kDialog;
}

std::vector<int> CSlideDlg::controlIds() {
    return {kCaption, kOk, kCancel, kLabel};
}

CSlideDlg::CSlideDlg(unsigned seconds, QWidget* parent)
    : QDialog(parent), m_edit(new QSpinBox(this)) {
    setObjectName(QStringLiteral("CSlideDlg"));
    m_edit->setObjectName(QStringLiteral("delay"));
    m_edit->setProperty("i18nId", kEdit);
    m_edit->setRange(kMin, kMax);
    m_edit->setValue(static_cast<int>(std::min<unsigned>(seconds, kMax)));
    m_edit->selectAll();

    auto* label = new QLabel(this);
    label->setProperty("i18nId", kLabel);
    label->setBuddy(m_edit);
    auto* form = new QFormLayout;
    form->addRow(label, m_edit);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setProperty("i18nId", kOk);
    buttons->button(QDialogButtonBox::Cancel)->setProperty("i18nId", kCancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &CSlideDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CSlideDlg::reject);

    auto* top = new QVBoxLayout(this);
    top->addLayout(form);
    top->addWidget(buttons);
    i18n_dialog(this, kDialog);
    setFixedSize(sizeHint());
}

unsigned CSlideDlg::seconds() const {
    return static_cast<unsigned>(m_edit->value());
}

void CSlideDlg::accept() {
    // The spin box lets a half-typed number such as "0" stand in its field; value() would
    // quietly give the last good one instead.
    bool ok = false;
    const int typed = m_edit->cleanText().toInt(&ok);
    if (!ok || typed < kMin || typed > kMax) {
        QMessageBox::warning(this, QCoreApplication::applicationName(),
                             formatText(i18n_stringW("ids_lanmira_validate_range"), {kMin, kMax}));
        m_edit->setFocus();
        m_edit->selectAll();
        return;
    }
    m_edit->setValue(typed);
    QDialog::accept();
}

} // namespace lanmira

#include "viewer/CZoomCustomDlg.h"

#include "i18n/i18n.h"
#include "platform/TextFormat.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace lanmira {
namespace {
constexpr char kDialog[] = "IDD_ZOOMCUSTOM";
constexpr int kCaption = 0;
constexpr int kOk = 1;
constexpr int kCancel = 2;
constexpr int kLabel = 1060;
constexpr int kEdit = 1061;
} // namespace

const char* CZoomCustomDlg::dialogName() {
    return kDialog;
}

std::vector<int> CZoomCustomDlg::controlIds() {
    return {kCaption, kOk, kCancel, kLabel};
}

CZoomCustomDlg::CZoomCustomDlg(int percent, QWidget* parent)
    : QDialog(parent), m_edit(new QSpinBox(this)) {
    setObjectName(QStringLiteral("CZoomCustomDlg"));
    m_edit->setObjectName(QStringLiteral("percent"));
    m_edit->setProperty("i18nId", kEdit);
    // Below the accepted minimum on purpose: OK refuses what the arrows can still reach.
    m_edit->setRange(kSpinMin, kMax);
    m_edit->setValue(std::clamp(percent, kSpinMin, kMax));
    m_edit->selectAll();

    auto* label = new QLabel(this);
    label->setProperty("i18nId", kLabel);
    label->setBuddy(m_edit);
    auto* form = new QFormLayout;
    form->addRow(label, m_edit);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setProperty("i18nId", kOk);
    buttons->button(QDialogButtonBox::Cancel)->setProperty("i18nId", kCancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &CZoomCustomDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CZoomCustomDlg::reject);

    auto* top = new QVBoxLayout(this);
    top->addLayout(form);
    top->addWidget(buttons);
    i18n_dialog(this, kDialog);
    setFixedSize(sizeHint());
}

int CZoomCustomDlg::percent() const {
    return std::clamp(m_edit->value(), kMin, kMax);
}

void CZoomCustomDlg::accept() {
    // What stands in the field counts, also when it was typed and not yet taken over.
    bool ok = false;
    const int typed = m_edit->cleanText().toInt(&ok);
    if (!ok || typed < kMin || typed > kMax) {
        QMessageBox::warning(this, i18n_stringW("ids_lanmira_appname"),
                             formatText(i18n_stringW("ids_lanmira_validate_range"), {kMin, kMax}));
        m_edit->setFocus();
        m_edit->selectAll();
        return;
    }
    m_edit->setValue(typed);
    QDialog::accept();
}

} // namespace lanmira

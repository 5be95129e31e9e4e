#include "platform/NumberDialog.h"

#include "i18n/i18n.h"
#include "platform/DialogButtons.h"
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
NumberDialog::NumberDialog(const Fields& fields, int value, QWidget* parent)
    : QDialog(parent), m_fields(fields), m_edit(new QSpinBox(this)) {
    m_edit->setProperty("i18nId", fields.editId);
    m_edit->setRange(fields.spinMin, fields.max);
    m_edit->setValue(std::clamp(value, fields.spinMin, fields.max));
    m_edit->selectAll();

    auto* label = new QLabel(this);
    label->setProperty("i18nId", fields.labelId);
    label->setBuddy(m_edit);
    auto* form = new QFormLayout;
    form->addRow(label, m_edit);

    auto* buttons = makeOkCancelButtons(this);

    auto* top = new QVBoxLayout(this);
    top->addLayout(form);
    top->addWidget(buttons);
    i18n_dialog(this, fields.dialogName);
    setFixedSize(sizeHint());
}

int NumberDialog::number() const {
    return m_edit->value();
}

void NumberDialog::accept() {
    // The spin box lets a half-typed number such as "0" stand in its field; value() would
    // quietly give the last good one instead.
    bool ok = false;
    const int typed = m_edit->cleanText().toInt(&ok);
    if (!ok || typed < m_fields.min || typed > m_fields.max) {
        QMessageBox::warning(
            this, i18n_stringW("ids_lanmira_appname"),
            formatText(i18n_stringW("ids_lanmira_validate_range"), {m_fields.min, m_fields.max}));
        m_edit->setFocus();
        m_edit->selectAll();
        return;
    }
    m_edit->setValue(typed);
    QDialog::accept();
}

} // namespace lanmira

#include "platform/DialogButtons.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>

namespace lanmira {
namespace {
constexpr int kOk = 1;
constexpr int kCancel = 2;
} // namespace

QDialogButtonBox* makeOkCancelButtons(QDialog* dialog) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    buttons->button(QDialogButtonBox::Ok)->setProperty("i18nId", kOk);
    buttons->button(QDialogButtonBox::Cancel)->setProperty("i18nId", kCancel);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}

} // namespace lanmira

#pragma once

class QDialog;
class QDialogButtonBox;

namespace lanmira {

// OK and Cancel for a dialog, catalogued as its controls 1 and 2 and wired to its accept()
// and reject() (an override of either is the one called).
QDialogButtonBox* makeOkCancelButtons(QDialog* dialog);

} // namespace lanmira

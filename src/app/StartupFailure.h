#pragma once

#include <QString>

namespace lanmira {

// Shows a start-up failure in an error message box and writes it to stderr, since a
// program started from a desktop entry has nobody reading its stderr and one started from
// a terminal may have no usable display.
void reportStartupFailure(const QString& text);

} // namespace lanmira

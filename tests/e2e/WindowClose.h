#pragma once

#include <QString>

namespace lanmira::e2e {

// Sends what a window manager sends when the user clicks a window's close button; false
// when there is no X server to send it to.
bool askToClose(const QString& window);

} // namespace lanmira::e2e

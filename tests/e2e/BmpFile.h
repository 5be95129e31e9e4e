#pragma once

#include <QString>

namespace lanmira::e2e {

// Writes a w × h 24-bit BMP with a gradient in the given blue shade; false when it cannot
// be written.
bool writeBmp(const QString& path, int w, int h, unsigned char shade);

} // namespace lanmira::e2e

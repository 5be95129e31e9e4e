#pragma once

#include "acquire/PackedDib.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace lanmira {

// One entry of a file dialog's type list.
struct FileType {
    std::uint32_t format = 0; // the image library's format index; 0 for the catch-alls
    QString text;             // "JPEG (*.jpg;*.jpeg)"
    QStringList patterns;     // "*.jpg", "*.jpeg"

    // The entry as a Qt name filter: "JPEG (*.jpg *.jpeg)".
    QString nameFilter() const;
};

// Save As: the formats 0..15 that can store this picture, in format order, patterns in the
// order of the extension table.
std::vector<FileType> saveFileTypes(const PackedDib& picture);
// Open: every described format, then "all supported" with every pattern, then all files.
std::vector<FileType> openFileTypes();

} // namespace lanmira

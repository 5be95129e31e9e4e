#pragma once

#include "acquire/PackedDib.h"

class QMimeData;

namespace lanmira {

// Pictures on the desktop clipboard. Out: "image/bmp" (a 14-byte file header and the packed
// bitmap, what other programs read as a BMP file) and "image/png". In: "image/bmp", else
// "image/png", else any image the toolkit reads.
QMimeData* dibToMimeData(const PackedDib& picture);
bool mimeHasPicture(const QMimeData* mime);
// Compressed and bit-field pictures arrive as 24-bit uncompressed ones; null when nothing
// usable is there.
PackedDib dibFromMimeData(const QMimeData* mime);

// Copy Image: puts the picture on the clipboard; false when it could not.
bool copyDibToClipboard(const PackedDib& picture);
// Paste as New File: the clipboard's picture, or null.
PackedDib dibFromClipboard();
bool clipboardHasPicture();

} // namespace lanmira

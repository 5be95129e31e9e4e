#pragma once

#include "imagelib/core/Dib.h"

#include <cstdint>
#include <string>

struct tiff;

namespace imagelib {

// Writes `dib` as a new directory of `tif`: 1, 4 and 8 bits as grey or with their palette, 16
// and 24 bits as RGB, 32 bits as RGB with alpha (or plain RGB when no pixel has any alpha).
// `compression` is a TIFF compression value, 0 meaning LZW; JPEG is kept for 8-bit grey and
// RGB, other pictures then use LZW so that their pixels stay exact.
bool writeTiffPage(tiff* tif, const DibView& dib, std::uint32_t compression, std::string& error);

} // namespace imagelib

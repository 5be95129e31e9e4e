#pragma once

#include "imagelib/core/Codec.h"

#include <cstddef>

struct tiff;

namespace imagelib {

// Decodes the directory `tif` stands on into result.dib (1, 4 or 8 bits with a palette, 24,
// or 32 with alpha), or leaves a sentence in result.error. `fileSize` bounds how large a
// picture the file's data can plausibly hold. With a box in `request`, grey and RGB pictures
// without alpha come averaged down to a whole fraction of their size that still covers twice
// the box; result.fullWidth, fullHeight and fullBitCount always describe the file's picture.
void readTiffPage(tiff* tif, std::size_t fileSize, const DecodeRequest& request,
                  DecodeResult& result);

} // namespace imagelib

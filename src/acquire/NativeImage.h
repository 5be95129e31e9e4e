#pragma once

#include "acquire/PackedDib.h"
#include "twain/twain.h"

#include <cstddef>

namespace lanmira {

// Takes the packed bitmap a source handed over in a native transfer: a malloc block the
// receiver owns. The block is always freed; the picture is a checked copy, empty when the
// block does not hold a bitmap that fits in it.
PackedDib dibFromNativeHandle(TW_HANDLE handle);
// The same check on bytes of a known size (what the handle's allocation holds).
PackedDib dibFromNativeBytes(const void* data, std::size_t size);

} // namespace lanmira

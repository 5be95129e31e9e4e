#pragma once

#include "acquire/PackedDib.h"
#include "twain/twain.h"

#include <cstddef>

namespace lanmira {

// Takes the packed bitmap a source handed over in a native transfer: a malloc block the
// receiver owns. The picture takes over the block; a block that does not hold a bitmap
// fitting in it is freed and the picture is empty.
PackedDib dibFromNativeHandle(TW_HANDLE handle);
// The same check on bytes of a known size (what the handle's allocation holds).
PackedDib dibFromNativeBytes(const void* data, std::size_t size);

} // namespace lanmira

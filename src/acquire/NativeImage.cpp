#include "acquire/NativeImage.h"

#include "acquire/DibLayout.h"

#include <cstdlib>
#include <malloc.h>

namespace lanmira {

PackedDib dibFromNativeBytes(const void* data, std::size_t size) {
    // The copy is checked against the header (a source may claim more rows than it sent).
    return dibFromBytes(data, size);
}

PackedDib dibFromNativeHandle(TW_HANDLE handle) {
    if (!handle)
        return {};
    // A block from malloc knows how large it is, as a global handle would. A block whose
    // header fits in it is kept as it is: a page scan is tens of megabytes, not worth a copy.
    const std::size_t size = malloc_usable_size(handle);
    if (!DibLayout::read(static_cast<const std::uint8_t*>(handle), size)) {
        std::free(handle);
        return {};
    }
    return PackedDib::adoptMallocBlock(handle, size);
}

} // namespace lanmira

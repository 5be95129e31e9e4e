#include "acquire/NativeImage.h"

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
    // A block from malloc knows how large it is, as a global handle would.
    PackedDib dib = dibFromNativeBytes(handle, malloc_usable_size(handle));
    std::free(handle);
    return dib;
}

} // namespace lanmira

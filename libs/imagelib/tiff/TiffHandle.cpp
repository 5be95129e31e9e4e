#include "imagelib/tiff/TiffHandle.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <tiffio.h>
#include <unistd.h>
#include <utility>

namespace imagelib {

// The bytes a reading handle walks through, with libtiff's file position.
struct TiffMemorySource {
    const std::uint8_t* data;
    toff_t size;
    toff_t pos;
};

namespace {

// libtiff's own allocations (strip tables, codec state) for one handle; our pixel buffers are
// checked separately against the file's size.
constexpr tmsize_t kMaxLibraryAlloc = tmsize_t{256} << 20;

int quiet(TIFF*, void*, const char*, const char*, va_list) {
    return 1; // handled: libtiff must not pass it on to the process-wide handlers
}

// Messages raised without a handle still go to the process-wide handlers, which would print.
void silenceGlobalHandlers() {
    static std::once_flag once;
    std::call_once(once, [] {
        TIFFSetErrorHandler(nullptr);
        TIFFSetWarningHandler(nullptr);
    });
}

struct Options {
    TIFFOpenOptions* opts = TIFFOpenOptionsAlloc();
    Options() {
        TIFFOpenOptionsSetMaxSingleMemAlloc(opts, kMaxLibraryAlloc);
        TIFFOpenOptionsSetErrorHandlerExtR(opts, quiet, nullptr);
        TIFFOpenOptionsSetWarningHandlerExtR(opts, quiet, nullptr);
    }
    ~Options() { TIFFOpenOptionsFree(opts); }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;
};

TiffMemorySource* source(thandle_t h) {
    return static_cast<TiffMemorySource*>(static_cast<void*>(h));
}

tmsize_t memRead(thandle_t h, void* buf, tmsize_t size) {
    auto* s = source(h);
    if (size <= 0 || s->pos >= s->size)
        return 0;
    const toff_t n = std::min<toff_t>(static_cast<toff_t>(size), s->size - s->pos);
    std::memcpy(buf, s->data + s->pos, n);
    s->pos += n;
    return static_cast<tmsize_t>(n);
}

tmsize_t memWrite(thandle_t, void*, tmsize_t) {
    return -1;
}

toff_t memSeek(thandle_t h, toff_t offset, int whence) {
    auto* s = source(h);
    toff_t base = 0;
    if (whence == SEEK_CUR)
        base = s->pos;
    else if (whence == SEEK_END)
        base = s->size;
    // Offsets are unsigned here; a "negative" one wraps and is refused like any past the end.
    if (offset > s->size || base > s->size - offset)
        return static_cast<toff_t>(-1);
    s->pos = base + offset;
    return s->pos;
}

int memClose(thandle_t) {
    return 0;
}

toff_t memSize(thandle_t h) {
    return source(h)->size;
}

int memMap(thandle_t h, void** base, toff_t* size) {
    auto* s = source(h);
    // libtiff only reads through a mapping of a file opened for reading.
    *base = const_cast<std::uint8_t*>(s->data);
    *size = s->size;
    return 1;
}

void memUnmap(thandle_t, void*, toff_t) {}

} // namespace

TiffHandle::TiffHandle(TiffHandle&& other) noexcept {
    *this = std::move(other);
}

TiffHandle& TiffHandle::operator=(TiffHandle&& other) noexcept {
    if (this != &other) {
        if (m_tif)
            TIFFClose(m_tif);
        m_tif = std::exchange(other.m_tif, nullptr);
        m_source = std::move(other.m_source);
    }
    return *this;
}

TiffHandle::~TiffHandle() {
    if (m_tif)
        TIFFClose(m_tif);
}

TiffHandle TiffHandle::openMemory(std::span<const std::uint8_t> bytes) {
    silenceGlobalHandlers();
    TiffHandle handle;
    handle.m_source =
        std::make_unique<TiffMemorySource>(TiffMemorySource{bytes.data(), bytes.size(), 0});
    const Options options;
    // "h": the caller picks the directory, so a damaged first page does not hide the others.
    handle.m_tif = TIFFClientOpenExt("memory", "rh", handle.m_source.get(), memRead, memWrite,
                                     memSeek, memClose, memSize, memMap, memUnmap, options.opts);
    return handle;
}

TiffHandle TiffHandle::openFd(int fd, const char* mode) {
    silenceGlobalHandlers();
    TiffHandle handle;
    const int own = ::fcntl(fd, F_DUPFD_CLOEXEC, 0);
    if (own < 0)
        return handle;
    // libtiff reads the header from where the descriptor stands, and an appended page comes
    // with the offset at the end of the copied file.
    if (::lseek(own, 0, SEEK_SET) != 0) {
        ::close(own);
        return handle;
    }
    const Options options;
    handle.m_tif = TIFFFdOpenExt(own, "output", mode, options.opts);
    if (!handle.m_tif)
        ::close(own);
    return handle;
}

} // namespace imagelib

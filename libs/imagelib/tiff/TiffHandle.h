#pragma once

#include <cstdint>
#include <memory>
#include <span>

struct tiff;

namespace imagelib {

struct TiffMemorySource;

// An open libtiff handle that never prints: its warnings and errors are swallowed here and
// callers turn failed calls into sentences of their own.
class TiffHandle {
public:
    TiffHandle() = default;
    TiffHandle(TiffHandle&& other) noexcept;
    TiffHandle& operator=(TiffHandle&& other) noexcept;
    ~TiffHandle();

    // Reads from bytes that must outlive the handle; no directory is read yet.
    static TiffHandle openMemory(std::span<const std::uint8_t> bytes);
    // Writes through a duplicate of `fd` (libtiff closes what it is given); mode "w" starts
    // a new file, "a" adds directories to the one the file holds.
    static TiffHandle openFd(int fd, const char* mode);

    explicit operator bool() const { return m_tif != nullptr; }
    tiff* get() const { return m_tif; }

private:
    tiff* m_tif = nullptr;
    std::unique_ptr<TiffMemorySource> m_source;
};

} // namespace imagelib

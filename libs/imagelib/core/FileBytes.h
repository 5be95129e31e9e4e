#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace imagelib {

// A whole file read into memory, so that every decoder reads from a buffer (the path the
// fuzzers drive). Reading, not mapping: a file truncated in place by another program must
// give an error, not a bus error.
class FileBytes {
public:
    // False with a reason when the file cannot be opened, is not a regular file, is empty
    // or larger than the library will ever decode.
    bool read(const char* path, std::string& error);
    std::span<const std::uint8_t> bytes() const { return {m_data.get(), m_size}; }

private:
    std::unique_ptr<std::uint8_t[]> m_data;
    std::size_t m_size = 0;
};

} // namespace imagelib

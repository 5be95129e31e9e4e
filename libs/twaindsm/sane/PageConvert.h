#pragma once

#include "sane/ScanPage.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace twaindsm {

// The forms a scanned page leaves the source in.
class PageConvert {
public:
    // Bytes of the packed bitmap for the page: header, palette, rows padded to four bytes.
    static std::uint64_t dibSize(const ScanPage& page);
    // A packed bitmap in one malloc block (bottom-up rows, 1-bit with a black-and-white
    // palette, 8-bit with a grey ramp, or 24-bit BGR), for the receiver to free; null when
    // memory is short or the page is malformed.
    static void* toDib(const ScanPage& page);
    // The same bitmap built as a scan goes: allocDib makes the block with its header and
    // palette for the page's kind and size (its data unused), putRow turns the page's row
    // `y`, as the scanner delivered it, into the bitmap's row, and shortenDib trims a
    // bitmap whose scan ended after `rows` rows.
    static void* allocDib(const ScanPage& page);
    static void putRow(const ScanPage& page, void* dib, std::int32_t y, const std::uint8_t* src);
    static void shortenDib(ScanPage& page, void* dib, std::int32_t rows);
    // Rows [first, first + count) of the memory transfer's layout: top-down, R G B, with 0
    // meaning black in black and white, each row `rowBytes` long.
    static std::uint32_t rowBytes(const ScanPage& page);
    static void copyRows(const ScanPage& page, std::uint32_t first, std::uint32_t count,
                         std::uint8_t* out);
    // Writes the page as a BMP, TIFF, PNG or JPEG file (TWAIN file format number); false
    // with a reason otherwise. The file appears whole or not at all.
    static bool toFile(const ScanPage& page, const std::string& path, unsigned format,
                       std::string& error);
};

} // namespace twaindsm

#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace lanmira {

// Frees a block with the allocator that made it.
struct DibBlockRelease {
    void (*release)(void*) = nullptr;
    void operator()(std::uint8_t* block) const { release(block); }
};

// One picture in memory: a bitmap header, its colour table and its rows bottom-up, in one
// block that this object owns. A block the image library made is kept as it is and given
// back to the library, so opening a file costs no full-size copy.
class PackedDib {
public:
    PackedDib() = default;
    PackedDib(PackedDib&& other) noexcept;
    PackedDib& operator=(PackedDib&& other) noexcept;
    PackedDib(const PackedDib&) = delete;
    PackedDib& operator=(const PackedDib&) = delete;
    ~PackedDib() = default;

    // `size` bytes, not cleared; null when memory is short.
    // Pictures come and go in a steady rhythm (next image, turn, turn back). Freed large
    // blocks are kept mapped so the next picture reuses them instead of faulting in fresh,
    // zero-filled pages, which costs about as much as copying the picture once. Call once
    // at start-up, before the first picture.
    static void retainLargeBlocks();
    static PackedDib allocate(std::size_t size);
    // Takes over a block of `size` bytes from ImageLib_Open.
    static PackedDib adoptImageLibBlock(void* block, std::size_t size);
    // Takes over a block of `size` bytes made with malloc (a scanner's native transfer).
    static PackedDib adoptMallocBlock(void* block, std::size_t size);

    bool isNull() const { return !m_block; }
    explicit operator bool() const { return m_block != nullptr; }
    std::uint8_t* data() { return m_block.get(); }
    const std::uint8_t* data() const { return m_block.get(); }
    // Bytes allocated, which may exceed the picture's block size.
    std::size_t size() const { return m_size; }
    void reset();

private:
    std::unique_ptr<std::uint8_t, DibBlockRelease> m_block;
    std::size_t m_size = 0;
};

// The size rules. Each gives 0 for a null or malformed picture.
std::uint32_t dibColourTableSize(const PackedDib& dib);
std::uint32_t dibColourCount(const PackedDib& dib);
std::uint64_t dibRowStride(const PackedDib& dib);
// Header, bit-field masks, colour table and rows; for RLE, the stream instead of the rows.
std::uint64_t dibBlockSize(const PackedDib& dib);
// Where the drawing code looks for the rows: it assumes a full colour table whatever the
// header says, unlike dibColourTableSize. Both agree for the image library's pictures.
std::uint64_t dibPixelOffsetForDrawing(const PackedDib& dib);

// Adopts a block from ImageLib_Open without copying it; null or a block the layout rules
// refuse gives an empty picture, and the refused block is freed.
PackedDib dibFromImageLib(void* block);

// The byte-block hand-over used by the clipboard and camera frames: exactly block size
// bytes out; in, a copy of all the bytes, refused (empty) when there are none or the
// header claims more than they hold.
QByteArray dibToBytes(const PackedDib& dib);
PackedDib dibFromBytes(const void* data, std::size_t size);
inline PackedDib dibFromBytes(const QByteArray& bytes) {
    return dibFromBytes(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

// Any depth or compression to 24 bits, uncompressed, bottom-up, with a 40-byte header and
// no colour table: the pixels a copy of the picture drawn on a true-colour screen has.
PackedDib dibToRgb24(const PackedDib& dib);

// Single rows of an uncompressed picture of any depth as 24-bit pixels, for callers that
// need a few rows of a large picture without a 24-bit copy of all of it. The picture must
// outlive the reader.
class Rgb24Rows {
public:
    explicit Rgb24Rows(const PackedDib& dib);
    ~Rgb24Rows();
    Rgb24Rows(const Rgb24Rows&) = delete;
    Rgb24Rows& operator=(const Rgb24Rows&) = delete;

    // False for compressed or malformed pictures.
    bool valid() const;
    std::int32_t width() const;
    std::int32_t height() const;
    // Row y counted from the bottom, as a bottom-up picture lies in memory, written as
    // width() BGR pixels to `out`.
    void read(std::int32_t y, std::uint8_t* out) const;

private:
    struct State;
    State* m_state;
};

} // namespace lanmira

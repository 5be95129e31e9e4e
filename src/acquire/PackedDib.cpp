#include "acquire/PackedDib.h"

#include "acquire/DibLayout.h"
#include "imagelib/imagelib.h"

#include <sys/mman.h>

#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <new>
#include <utility>

namespace lanmira {
namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;
// Below this a block comes from the ordinary heap.
constexpr std::size_t kLargeBlock = std::size_t{8} << 20;

std::optional<DibLayout> layoutOf(const PackedDib& dib) {
    return DibLayout::read(dib.data(), dib.size());
}

} // namespace

PackedDib::PackedDib(PackedDib&& other) noexcept
    : m_block(std::move(other.m_block)), m_size(std::exchange(other.m_size, 0)) {}

PackedDib& PackedDib::operator=(PackedDib&& other) noexcept {
    if (this != &other) {
        m_block = std::move(other.m_block);
        m_size = std::exchange(other.m_size, 0);
    }
    return *this;
}

void PackedDib::retainLargeBlocks() {
    // Blocks up to 512 MB come from the heap and go back to it, and the heap is not trimmed
    // below 1 GB of free space at its top; bigger pictures still get their own mapping.
    mallopt(M_MMAP_THRESHOLD, 512 << 20);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
}

PackedDib PackedDib::allocate(std::size_t size) {
    if (size == 0 || size > SIZE_MAX - kHugePage)
        return {};
    void* block = nullptr;
    if (size >= kLargeBlock) {
        // A fresh picture is written once from end to end; faulting its pages in 4 KiB at a
        // time costs several times the copy itself, so large blocks ask for huge pages.
        const std::size_t rounded = (size + kHugePage - 1) & ~(kHugePage - 1);
        block = std::aligned_alloc(kHugePage, rounded);
        if (block)
            madvise(block, rounded, MADV_HUGEPAGE);
    } else {
        block = std::malloc(size);
    }
    if (!block)
        return {};
    PackedDib dib;
    dib.m_block = {static_cast<std::uint8_t*>(block), DibBlockRelease{&std::free}};
    dib.m_size = size;
    return dib;
}

PackedDib PackedDib::adoptImageLibBlock(void* block, std::size_t size) {
    PackedDib dib;
    if (!block)
        return dib;
    dib.m_block = {static_cast<std::uint8_t*>(block), DibBlockRelease{&ImageLib_Free}};
    dib.m_size = size;
    return dib;
}

PackedDib PackedDib::adoptMallocBlock(void* block, std::size_t size) {
    PackedDib dib;
    if (!block)
        return dib;
    dib.m_block = {static_cast<std::uint8_t*>(block), DibBlockRelease{&std::free}};
    dib.m_size = size;
    return dib;
}

void PackedDib::reset() {
    m_block.reset();
    m_size = 0;
}

std::uint32_t dibColourTableSize(const PackedDib& dib) {
    const auto layout = layoutOf(dib);
    return layout ? layout->colourTableSize : 0;
}

std::uint32_t dibColourCount(const PackedDib& dib) {
    const auto layout = layoutOf(dib);
    return layout ? layout->colourCount : 0;
}

std::uint64_t dibRowStride(const PackedDib& dib) {
    const auto layout = layoutOf(dib);
    return layout ? layout->stride : 0;
}

std::uint64_t dibBlockSize(const PackedDib& dib) {
    const auto layout = layoutOf(dib);
    return layout ? layout->blockSize : 0;
}

std::uint64_t dibPixelOffsetForDrawing(const PackedDib& dib) {
    const auto layout = layoutOf(dib);
    if (!layout)
        return 0;
    std::uint64_t offset = layout->headerSize;
    if (layout->bitCount <= 8)
        offset += 4u << layout->bitCount;
    if (layout->compression == DibLayout::kBitFields)
        offset += 12;
    return offset;
}

PackedDib dibFromImageLib(void* block) {
    PackedDib dib = PackedDib::adoptImageLibBlock(block, block ? ImageLib_DibSize(block) : 0);
    if (dib && !layoutOf(dib))
        dib.reset();
    return dib;
}

QByteArray dibToBytes(const PackedDib& dib) {
    const auto layout = layoutOf(dib);
    if (!layout)
        return {};
    try {
        return QByteArray(reinterpret_cast<const char*>(dib.data()),
                          static_cast<qsizetype>(layout->blockSize));
    } catch (const std::bad_alloc&) {
        return {};
    }
}

PackedDib dibFromBytes(const void* data, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    if (!bytes || size == 0 || !DibLayout::read(bytes, size))
        return {};
    PackedDib dib = PackedDib::allocate(size);
    if (dib)
        std::memcpy(dib.data(), bytes, size);
    return dib;
}

} // namespace lanmira

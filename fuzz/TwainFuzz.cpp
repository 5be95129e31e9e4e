// What crosses between a scanner source and the program: capability containers as a
// source or an application may fill them, the packed bitmap of a native transfer, and a
// scanned page turned into that bitmap or into memory strips. The first byte picks.
#include "acquire/DibLayout.h"
#include "acquire/NativeImage.h"
#include "core/CapContainer.h"
#include "sane/PageConvert.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <vector>

namespace {

// Pages beyond this are legal but would only hit the fuzzer's memory limit.
constexpr std::uint64_t kMaxPageBytes = std::uint64_t{4} << 20;

void containers(const std::uint8_t* data, std::size_t size) {
    if (size < 1)
        return;
    const auto conType = static_cast<TW_UINT16>(data[0] % 8);
    const auto parsed = twaindsm::CapContainer::read(conType, data + 1, size - 1);
    if (!parsed)
        return;
    (void)parsed->current();
    // What we read, we write back the same.
    void* block = parsed->write();
    if (!block)
        return;
    const auto again = twaindsm::CapContainer::read(conType, block, malloc_usable_size(block));
    std::free(block);
    if (!again || again->items != parsed->items || again->itemType != parsed->itemType)
        std::abort();
}

void handOver(const std::uint8_t* data, std::size_t size) {
    void* block = std::malloc(size ? size : 1);
    if (!block)
        return;
    std::memcpy(block, data, size);
    const lanmira::PackedDib dib = lanmira::dibFromNativeHandle(block);
    if (dib && !lanmira::DibLayout::read(dib.data(), dib.size()))
        std::abort();
}

void pages(const std::uint8_t* data, std::size_t size) {
    if (size < 8)
        return;
    twaindsm::ScanPage page;
    page.kind = static_cast<twaindsm::ScanPage::Kind>(data[0] % 3);
    page.width = static_cast<std::int32_t>(data[1] | data[2] << 8) - 8;
    page.height = static_cast<std::int32_t>(data[3] | data[4] << 8) - 8;
    page.bytesPerLine = static_cast<std::uint32_t>(data[5] | data[6] << 8);
    page.dpi = data[7];
    page.data.assign(data + 8, data + size);
    if (twaindsm::PageConvert::dibSize(page) > kMaxPageBytes)
        return;
    void* dib = twaindsm::PageConvert::toDib(page);
    if (!dib)
        return;
    // Whatever the source makes, the program takes.
    if (!lanmira::dibFromNativeHandle(dib))
        std::abort();
    const std::uint32_t rowBytes = twaindsm::PageConvert::rowBytes(page);
    std::vector<std::uint8_t> strip(std::size_t(rowBytes) * 2);
    const auto rows = static_cast<std::uint32_t>(page.height);
    twaindsm::PageConvert::copyRows(page, rows > 2 ? rows - 2 : 0, rows >= 2 ? 2 : rows,
                                    strip.data());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1)
        return 0;
    switch (data[0] % 3) {
    case 0:
        containers(data + 1, size - 1);
        break;
    case 1:
        handOver(data + 1, size - 1);
        break;
    default:
        pages(data + 1, size - 1);
        break;
    }
    return 0;
}

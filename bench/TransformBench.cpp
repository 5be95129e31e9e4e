// The viewer's turns and mirrors on a 4000 x 3000 24-bit picture, beside a plain copy of
// its 36 MB of rows into a block already in use and into a fresh block, which is what every
// transform must make. Faulting in a fresh block's pages costs the kernel about as much as
// the copy itself; to see the transforms on memory already mapped, run with
// GLIBC_TUNABLES=glibc.malloc.mmap_threshold=1073741824:glibc.malloc.trim_threshold=2147483648
#include "acquire/PackedDib.h"
#include "viewer/ImageTransforms.h"

#include <benchmark/benchmark.h>

#include <cstring>

namespace {

// The program keeps freed picture blocks mapped (see main); measure what it does.
const bool g_retained = (lanmira::PackedDib::retainLargeBlocks(), true);

constexpr std::int32_t kWidth = 4000;
constexpr std::int32_t kHeight = 3000;
constexpr std::size_t kHeader = 40;
constexpr std::size_t kPixelBytes = std::size_t{kWidth} * 3 * kHeight;

const lanmira::PackedDib& picture() {
    static const lanmira::PackedDib dib = [] {
        lanmira::PackedDib d = lanmira::PackedDib::allocate(kHeader + kPixelBytes);
        std::uint8_t* h = d.data();
        std::memset(h, 0, kHeader);
        const std::int32_t fields[] = {40, kWidth, kHeight};
        std::memcpy(h, fields, sizeof fields);
        h[12] = 1;
        h[14] = 24;
        std::uint32_t x = 12345;
        for (std::size_t i = 0; i < kPixelBytes; ++i) {
            x = x * 1103515245u + 12345u;
            h[kHeader + i] = static_cast<std::uint8_t>(x >> 24);
        }
        return d;
    }();
    return dib;
}

void BM_MemcpyReusedBlock(benchmark::State& state) {
    const std::uint8_t* rows = picture().data() + kHeader;
    lanmira::PackedDib target = lanmira::PackedDib::allocate(kPixelBytes);
    std::memset(target.data(), 0, kPixelBytes);
    for (auto _ : state) {
        std::memcpy(target.data(), rows, kPixelBytes);
        benchmark::ClobberMemory();
    }
}

void BM_MemcpyFreshBlock(benchmark::State& state) {
    const std::uint8_t* rows = picture().data() + kHeader;
    for (auto _ : state) {
        lanmira::PackedDib target = lanmira::PackedDib::allocate(kPixelBytes);
        std::memcpy(target.data(), rows, kPixelBytes);
        benchmark::ClobberMemory();
    }
}

template <lanmira::PackedDib (*transform)(const lanmira::PackedDib&)>
void BM_Transform(benchmark::State& state) {
    const lanmira::PackedDib& in = picture();
    for (auto _ : state) {
        lanmira::PackedDib out = transform(in);
        if (!out)
            state.SkipWithError("out of memory");
        benchmark::ClobberMemory();
    }
}

} // namespace

BENCHMARK(BM_MemcpyReusedBlock)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MemcpyFreshBlock)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Transform<lanmira::rotateCounterClockwise>)
    ->Name("BM_RotateCounterClockwise")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Transform<lanmira::rotateClockwise>)
    ->Name("BM_RotateClockwise")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Transform<lanmira::rotate180>)->Name("BM_Rotate180")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Transform<lanmira::mirrorLeftRight>)
    ->Name("BM_MirrorLeftRight")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Transform<lanmira::mirrorTopBottom>)
    ->Name("BM_MirrorTopBottom")
    ->Unit(benchmark::kMillisecond);

#include "dscap/demo/SensorModel.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace dscap {
namespace {

constexpr double kRippleHz = 100; // twice the 50 Hz mains
constexpr double kRippleDepth = 0.6;
constexpr std::int64_t kRipplePeriodNs = 10'000'000;

constexpr int kNoiseSamples = 1 << 17;
constexpr int kNoiseOne = 4096; // a noise sample of 1 sigma; samples are cut at 4 sigma
constexpr int kChunk = 48;      // 16 BGR pixels: the channel pattern repeats in whole vectors
constexpr int kMaxQuarterLevel = 2000; // brighter than this is white whatever the noise

// Per-sample constants of one row, repeated with the channel pattern.
struct RowConstants {
    alignas(16) std::uint16_t level[kChunk];      // quarter levels per unit of s*s, over 2^16
    alignas(16) std::uint16_t sigmaBase[kChunk];  // 64 x sigma at level 0
    alignas(16) std::uint16_t sigmaSlope[kChunk]; // 64 x sigma per sample code, over 256
};

// Levels are kept in quarters so that the noise keeps a fraction through the sum;
// everything stays in 16 bits, which the compiler turns into eight lanes a vector.
inline std::uint8_t exposeSample(std::uint8_t s, std::uint16_t level, std::uint16_t sigmaBase,
                                 std::uint16_t sigmaSlope, std::int16_t noise) {
    const auto t = static_cast<std::uint16_t>(s * s);
    auto quarters = static_cast<std::uint16_t>((static_cast<std::uint32_t>(t) * level) >> 16);
    quarters = std::min<std::uint16_t>(quarters, kMaxQuarterLevel);
    const auto scaled = static_cast<std::uint16_t>(s << 8);
    const auto sigma = static_cast<std::int16_t>(
        sigmaBase +
        static_cast<std::uint16_t>((static_cast<std::uint32_t>(sigmaSlope) * scaled) >> 16));
    const auto offset = static_cast<std::int16_t>(
        (static_cast<std::int32_t>(noise) * static_cast<std::int32_t>(sigma)) >> 16);
    const int value = (quarters + offset + 2) >> 2;
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

void exposeRow(const std::uint8_t* __restrict src, std::uint8_t* __restrict dst, int count,
               const RowConstants& k, const std::int16_t* __restrict noise) {
    int i = 0;
    for (; i + kChunk <= count; i += kChunk) {
        for (int j = 0; j < kChunk; ++j)
            dst[i + j] =
                exposeSample(src[i + j], k.level[j], k.sigmaBase[j], k.sigmaSlope[j], noise[i + j]);
    }
    for (int j = 0; i + j < count; ++j)
        dst[i + j] =
            exposeSample(src[i + j], k.level[j], k.sigmaBase[j], k.sigmaSlope[j], noise[i + j]);
}

std::uint64_t nextRandom(std::uint64_t& state) {
    state ^= state >> 12;
    state ^= state << 25;
    state ^= state >> 27;
    return state * 0x2545F4914F6CDD1DULL;
}

} // namespace

SensorModel::SensorModel(std::uint32_t seed, int maxWidth)
    : noise_(kNoiseSamples + 3 * static_cast<std::size_t>(maxWidth) + kChunk),
      state_(0x9E3779B97F4A7C15ULL ^ seed) {
    std::mt19937 rng(seed);
    std::normal_distribution<float> normal(0.0f, 1.0f);
    for (auto& n : noise_)
        n = static_cast<std::int16_t>(
            std::lround(std::clamp(normal(rng), -4.0f, 4.0f) * kNoiseOne));
}

double SensorModel::meanLight(double startS, double exposureS) {
    const double w = 2 * std::numbers::pi * kRippleHz;
    if (exposureS <= 0)
        return 1 + kRippleDepth * std::cos(w * startS);
    return 1 + kRippleDepth * (std::sin(w * (startS + exposureS)) - std::sin(w * startS)) /
                   (w * exposureS);
}

void SensorModel::expose(const SlideTexture& texture, int x0, int y0, int width, int height,
                         const SensorExposure& exposure, std::uint8_t* out, int stride) {
    const int channels = texture.channels;
    const int count = width * channels;
    if (channels == 1)
        greyRow_.resize(static_cast<std::size_t>(width));
    const double exposureS = exposure.exposureUs * 1e-6;
    const double phaseS = static_cast<double>(exposure.startNs % kRipplePeriodNs) * 1e-9;
    const double scale = exposure.exposureUs / kReferenceExposureUs * exposure.gain;
    const double noiseGain = exposure.gain / exposure.noiseDivisor;
    const int maxOffset = static_cast<int>(noise_.size()) - count - kChunk;

    RowConstants k;
    for (int y = 0; y < height; ++y) {
        const double light =
            exposure.flicker ? meanLight(phaseS + y * exposure.lineTimeS, exposureS) : 1.0;
        std::uint16_t level[3], base[3], slope[3];
        for (int c = 0; c < channels; ++c) {
            // Levels past 16000 clip even at 1.6 % transmittance; capping keeps 16 bits.
            const double full = std::min(exposure.lamp[c] * scale * light, 16000.0);
            level[c] =
                static_cast<std::uint16_t>(std::min(4.0 * full * 65536.0 / 65025.0, 65535.0));
            // sigma = (1 + 0.3 sqrt(level)) x gain, and sqrt(level) = s / 255 x sqrt(full).
            const double b = std::min(64.0 * noiseGain, 16383.0);
            const double m = 64.0 * noiseGain * 0.3 * std::sqrt(full) * 256.0 / 255.0;
            base[c] = static_cast<std::uint16_t>(b);
            slope[c] = static_cast<std::uint16_t>(std::min(m, 32767.0 - b));
        }
        for (int j = 0; j < kChunk; ++j) {
            const int c = j % channels;
            k.level[j] = level[c];
            k.sigmaBase[j] = base[c];
            k.sigmaSlope[j] = slope[c];
        }
        const int offset =
            static_cast<int>(nextRandom(state_) % static_cast<std::uint64_t>(maxOffset));
        const std::uint8_t* src = texture.row(y0 + y) + static_cast<std::size_t>(x0) * channels;
        std::uint8_t* dst = out + static_cast<std::size_t>(y) * stride;
        if (channels == 3) {
            exposeRow(src, dst, count, k, noise_.data() + offset);
        } else {
            std::uint8_t* grey = greyRow_.data();
            exposeRow(src, grey, count, k, noise_.data() + offset);
            for (int x = 0; x < width; ++x) {
                dst[3 * x] = grey[x];
                dst[3 * x + 1] = grey[x];
                dst[3 * x + 2] = grey[x];
            }
        }
    }
}

} // namespace dscap

#include "dscap/processing/FrameProcessor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace dscap {
namespace {

using Table8 = std::array<std::uint8_t, 256>;
using Table32 = std::array<std::int32_t, 256>;

// Luma weights of B, G, R in 16-bit fixed point; they sum to exactly 1 << 16 so that white
// stays 255.
constexpr std::int32_t kLumaB = 7471;
constexpr std::int32_t kLumaG = 38470;
constexpr std::int32_t kLumaR = 19595;
constexpr int kLumaShift = 16;
constexpr std::int32_t kLumaHalf = 1 << (kLumaShift - 1);
constexpr std::int32_t lumaWeights[3] = {kLumaB, kLumaG, kLumaR};
constexpr double kWeightB = 0.114, kWeightG = 0.587, kWeightR = 0.299;

// The colour mix adds, per input channel, one table word that carries that input's share
// of all three outputs in 21-bit fields, so a pixel costs three loads and two adds. Each
// field holds the output value biased to be positive, with `fraction` bits below the point.
constexpr int kFieldBits = 21;
constexpr int kMaxFraction = 8;
constexpr double kMixLimit = 128.0; // keeps every field within its bits at any gain

constexpr std::int32_t lumaOf(std::int32_t b, std::int32_t g, std::int32_t r) {
    return (kLumaB * b + kLumaG * g + kLumaR * r + kLumaHalf) >> kLumaShift;
}

using Matrix = std::array<std::array<double, 3>, 3>; // [out][in], channels B, G, R

// Keeps luma, turns the chroma (as Cb, Cr) by the hue angle and scales it by
// saturation / 128. Positive hue turns red towards yellow and green.
Matrix colourMatrix(int hue, int saturation) {
    const double angle = hue * (3.14159265358979323846 / 180.0);
    const double s = saturation / 128.0;
    const double c = std::cos(angle) * s, n = std::sin(angle) * s;
    const double cbScale = 2.0 * (1.0 - kWeightB), crScale = 2.0 * (1.0 - kWeightR);
    Matrix m{};
    for (int k = 0; k < 3; ++k) {
        const double in[3] = {k == 0 ? 1.0 : 0.0, k == 1 ? 1.0 : 0.0, k == 2 ? 1.0 : 0.0};
        const double y = kWeightB * in[0] + kWeightG * in[1] + kWeightR * in[2];
        const double cb = (in[0] - y) / cbScale, cr = (in[2] - y) / crScale;
        const double db = (cb * c - cr * n) * cbScale, dr = (cb * n + cr * c) * crScale;
        m[0][k] = y + db;
        m[1][k] = y - (kWeightB * db + kWeightR * dr) / kWeightG;
        m[2][k] = y + dr;
    }
    return m;
}

// Input levels, contrast, brightness and gamma for one channel as a table.
Table8 postTable(int low, int high, int contrast, int brightness, int gamma) {
    Table8 t{};
    const double exponent = 100.0 / gamma;
    for (int v = 0; v < 256; ++v) {
        double x;
        if (high > low)
            x = std::clamp((v - low) * 255.0 / (high - low), 0.0, 255.0);
        else
            x = v > low ? 255.0 : 0.0;
        x = std::clamp((x - 128.0) * (100 + contrast) / 100.0 + 128.0, 0.0, 255.0);
        x = std::clamp(x + brightness, 0.0, 255.0);
        x = 255.0 * std::pow(x / 255.0, exponent);
        t[v] = static_cast<std::uint8_t>(std::lround(std::clamp(x, 0.0, 255.0)));
    }
    return t;
}

bool isIdentity(const Table8& t) {
    for (int v = 0; v < 256; ++v)
        if (t[v] != v)
            return false;
    return true;
}

// Everything a frame needs, derived from the parameters once.
struct Pipeline {
    ProcessingParams params;
    bool mix = false;  // hue or saturation in use: the 3x3 colour mix runs per pixel
    bool copy = false; // colour output that changes no value: rows are only copied

    std::array<Table8, 3> pre{};      // white balance per channel, without mix
    std::array<Table8, 3> direct{};   // post[c][pre[c][v]], the whole colour path without mix
    std::array<Table8, 4> post{};     // levels .. gamma per channel, grey last
    std::array<Table32, 3> preLuma{}; // luma weight x pre value, for grey output without mix

    std::array<std::array<std::uint64_t, 256>, 3> mixIn{}; // per input: its packed shares
    std::array<int, 3> mixShift{};                         // per output: where its index starts
    std::uint64_t mixMask = 0;
    std::array<std::vector<std::uint8_t>, 3> mixPost;  // biased sum -> shown value
    std::array<std::vector<std::uint8_t>, 3> mixClamp; // biased sum -> value before levels
    std::array<std::vector<std::int32_t>, 3> mixLuma;  // biased sum -> luma weight x value

    // Two sets of counts taken alternately, so neighbouring samples of a smooth picture do
    // not queue on the same counter.
    std::array<std::array<std::array<std::uint32_t, 256>, 4>, 2> counts{};

    void build(const ProcessingParams& p);

    void buildMix(const double (&gains)[3]);

    std::uint64_t mixSum(const std::uint8_t* s) const {
        return mixIn[0][s[0]] + mixIn[1][s[1]] + mixIn[2][s[2]];
    }
    std::size_t mixIndex(std::uint64_t sum, int c) const {
        return static_cast<std::size_t>((sum >> mixShift[c]) & mixMask);
    }
    // The mixed value of each channel before the level stage.
    void mixPixel(const std::uint8_t* s, std::int32_t& b, std::int32_t& g, std::int32_t& r) const {
        const std::uint64_t sum = mixSum(s);
        b = mixClamp[0][mixIndex(sum, 0)];
        g = mixClamp[1][mixIndex(sum, 1)];
        r = mixClamp[2][mixIndex(sum, 2)];
    }
};

void Pipeline::build(const ProcessingParams& p) {
    params = p;
    const double gains[3] = {std::clamp(p.gainB, 0.0, 64.0), std::clamp(p.gainG, 0.0, 64.0),
                             std::clamp(p.gainR, 0.0, 64.0)};
    const int contrast = std::clamp(p.contrast, -100, 100);
    const int gamma = std::clamp(p.gamma, 1, 1000);
    for (int c = 0; c < 4; ++c) {
        const int low = std::min<int>(p.low[c], 255), high = std::min<int>(p.high[c], 255);
        post[c] = postTable(low, high, contrast, p.brightness, gamma);
    }

    for (int c = 0; c < 3; ++c) {
        for (int v = 0; v < 256; ++v) {
            pre[c][v] = static_cast<std::uint8_t>(std::lround(std::min(v * gains[c], 255.0)));
            direct[c][v] = post[c][pre[c][v]];
            preLuma[c][v] = lumaWeights[c] * pre[c][v];
        }
    }

    mix = p.hue != 0 || p.saturation != 128;
    copy = !mix && !p.monochrome && isIdentity(direct[0]) && isIdentity(direct[1]) &&
           isIdentity(direct[2]);
    if (mix)
        buildMix(gains);
}

void Pipeline::buildMix(const double (&gains)[3]) {
    const Matrix m =
        colourMatrix(std::clamp(params.hue, -180, 180), std::clamp(params.saturation, 0, 255));
    double coefficient[3][3];
    // The widest span any output can take decides how many bits are left for the fraction.
    double widest = 0;
    std::array<double, 3> lowest{};
    for (int out = 0; out < 3; ++out) {
        double below = 0, above = 0;
        for (int in = 0; in < 3; ++in) {
            const double k = std::clamp(m[out][in] * gains[in], -kMixLimit, kMixLimit);
            coefficient[out][in] = k;
            (k < 0 ? below : above) += k * 255.0;
        }
        lowest[out] = below;
        widest = std::max(widest, above - below);
    }
    int fraction = kMaxFraction;
    while (fraction > 0 && std::ldexp(widest + 4.0, fraction) >= std::ldexp(1.0, kFieldBits))
        --fraction;
    const std::size_t size = std::size_t{1} << (kFieldBits - fraction);
    mixMask = size - 1;

    const double one = std::ldexp(1.0, fraction);
    std::array<std::int64_t, 3> bias{};
    for (int out = 0; out < 3; ++out) {
        // The bias lifts the lowest possible sum to 1; half a unit makes the cut a rounding.
        bias[out] = 1 - static_cast<std::int64_t>(std::floor(lowest[out]));
        mixShift[out] = out * kFieldBits + fraction;
        mixPost[out].resize(size);
        mixClamp[out].resize(size);
        mixLuma[out].resize(size);
        for (std::size_t i = 0; i < size; ++i) {
            const auto value = std::clamp<std::int64_t>(std::int64_t(i) - bias[out], 0, 255);
            mixClamp[out][i] = static_cast<std::uint8_t>(value);
            mixPost[out][i] = post[out][value];
            mixLuma[out][i] = lumaWeights[out] * static_cast<std::int32_t>(value);
        }
    }
    for (int in = 0; in < 3; ++in) {
        for (int v = 0; v < 256; ++v) {
            std::uint64_t word = 0;
            for (int out = 0; out < 3; ++out) {
                std::int64_t field = std::llround(coefficient[out][in] * v * one);
                if (in == 0)
                    field += (bias[out] << fraction) + (std::int64_t{1} << fraction >> 1);
                // Shares may be negative; the sum of the three words is not, and unsigned
                // wrap-around keeps it exact.
                word += static_cast<std::uint64_t>(field) << (out * kFieldBits);
            }
            mixIn[in][v] = word;
        }
    }
}

// The row kernels take the destination pixel step as a constant (3 forwards, -3 for a
// horizontal flip) so each is a plain loop without a per-pixel test.

template <int Step>
void copyRow(const std::uint8_t* __restrict s, std::uint8_t* __restrict d, int width) {
    if constexpr (Step > 0) {
        std::memcpy(d, s, static_cast<std::size_t>(width) * 3);
    } else {
        for (int x = 0; x < width; ++x, s += 3, d += Step) {
            d[0] = s[0];
            d[1] = s[1];
            d[2] = s[2];
        }
    }
}

template <int Step>
void directRow(const std::uint8_t* __restrict s, std::uint8_t* __restrict d, int width,
               const Table8& tb, const Table8& tg, const Table8& tr) {
    for (int x = 0; x < width; ++x, s += 3, d += Step) {
        d[0] = tb[s[0]];
        d[1] = tg[s[1]];
        d[2] = tr[s[2]];
    }
}

template <int Step>
void directGreyRow(const std::uint8_t* __restrict s, std::uint8_t* __restrict d, int width,
                   const std::array<Table32, 3>& luma, const Table8& grey) {
    const Table32& lb = luma[0];
    const Table32& lg = luma[1];
    const Table32& lr = luma[2];
    for (int x = 0; x < width; ++x, s += 3, d += Step) {
        const std::int32_t y = (lb[s[0]] + lg[s[1]] + lr[s[2]] + kLumaHalf) >> kLumaShift;
        const std::uint8_t v = grey[y];
        d[0] = v;
        d[1] = v;
        d[2] = v;
    }
}

template <int Step>
void mixRow(const std::uint8_t* __restrict s, std::uint8_t* __restrict d, int width,
            const Pipeline& t) {
    const std::uint64_t* __restrict ib = t.mixIn[0].data();
    const std::uint64_t* __restrict ig = t.mixIn[1].data();
    const std::uint64_t* __restrict ir = t.mixIn[2].data();
    const std::uint8_t* __restrict pb = t.mixPost[0].data();
    const std::uint8_t* __restrict pg = t.mixPost[1].data();
    const std::uint8_t* __restrict pr = t.mixPost[2].data();
    const int shiftB = t.mixShift[0], shiftG = t.mixShift[1], shiftR = t.mixShift[2];
    const std::uint64_t mask = t.mixMask;
    for (int x = 0; x < width; ++x, s += 3, d += Step) {
        const std::uint64_t sum = ib[s[0]] + ig[s[1]] + ir[s[2]];
        d[0] = pb[(sum >> shiftB) & mask];
        d[1] = pg[(sum >> shiftG) & mask];
        d[2] = pr[(sum >> shiftR) & mask];
    }
}

template <int Step>
void mixGreyRow(const std::uint8_t* __restrict s, std::uint8_t* __restrict d, int width,
                const Pipeline& t) {
    const std::uint64_t* __restrict ib = t.mixIn[0].data();
    const std::uint64_t* __restrict ig = t.mixIn[1].data();
    const std::uint64_t* __restrict ir = t.mixIn[2].data();
    const std::int32_t* __restrict lb = t.mixLuma[0].data();
    const std::int32_t* __restrict lg = t.mixLuma[1].data();
    const std::int32_t* __restrict lr = t.mixLuma[2].data();
    const int shiftB = t.mixShift[0], shiftG = t.mixShift[1], shiftR = t.mixShift[2];
    const std::uint64_t mask = t.mixMask;
    const Table8& grey = t.post[kGrey];
    for (int x = 0; x < width; ++x, s += 3, d += Step) {
        const std::uint64_t sum = ib[s[0]] + ig[s[1]] + ir[s[2]];
        const std::int32_t y = (lb[(sum >> shiftB) & mask] + lg[(sum >> shiftG) & mask] +
                                lr[(sum >> shiftR) & mask] + kLumaHalf) >>
                               kLumaShift;
        const std::uint8_t v = grey[y];
        d[0] = v;
        d[1] = v;
        d[2] = v;
    }
}

template <int Step>
void processRow(const std::uint8_t* s, std::uint8_t* d, int width, const Pipeline& t) {
    if (t.mix) {
        if (t.params.monochrome)
            mixGreyRow<Step>(s, d, width, t);
        else
            mixRow<Step>(s, d, width, t);
    } else if (t.params.monochrome) {
        directGreyRow<Step>(s, d, width, t.preLuma, t.post[kGrey]);
    } else if (t.copy) {
        copyRow<Step>(s, d, width);
    } else {
        directRow<Step>(s, d, width, t.direct[0], t.direct[1], t.direct[2]);
    }
}

// Counts every second pixel of the row, by its value before the level stage.
void countRow(const std::uint8_t* s, int width, Pipeline& t) {
    auto& c0 = t.counts[0];
    auto& c1 = t.counts[1];
    const auto count = [](auto& c, std::int32_t b, std::int32_t g, std::int32_t r) {
        ++c[kBlue][b];
        ++c[kGreen][g];
        ++c[kRed][r];
        ++c[kGrey][lumaOf(b, g, r)];
    };
    const int samples = (width + 1) / 2;
    const int pairs = samples / 2;
    if (t.mix) {
        std::int32_t b, g, r;
        for (int i = 0; i < pairs; ++i, s += 12) {
            t.mixPixel(s, b, g, r);
            count(c0, b, g, r);
            t.mixPixel(s + 6, b, g, r);
            count(c1, b, g, r);
        }
        if (samples % 2) {
            t.mixPixel(s, b, g, r);
            count(c0, b, g, r);
        }
    } else {
        const Table8& pb = t.pre[0];
        const Table8& pg = t.pre[1];
        const Table8& pr = t.pre[2];
        for (int i = 0; i < pairs; ++i, s += 12) {
            count(c0, pb[s[0]], pg[s[1]], pr[s[2]]);
            count(c1, pb[s[6]], pg[s[7]], pr[s[8]]);
        }
        if (samples % 2)
            count(c0, pb[s[0]], pg[s[1]], pr[s[2]]);
    }
}

} // namespace

struct FrameProcessor::Tables : Pipeline {};

FrameProcessor::FrameProcessor() : tables_(std::make_unique<Tables>()) {
    tables_->build(ProcessingParams{});
}

FrameProcessor::~FrameProcessor() = default;

void FrameProcessor::setParams(const ProcessingParams& params) {
    if (params == tables_->params)
        return;
    tables_->build(params);
}

const ProcessingParams& FrameProcessor::params() const {
    return tables_->params;
}

void FrameProcessor::process(const SourceFrame& in, Image& out, Histogram* histogram) {
    Tables& t = *tables_;
    if (histogram)
        histogram->clear();
    if (!in.bgr || in.width <= 0 || in.height <= 0) {
        out.resize(0, 0);
        return;
    }
    out.resize(in.width, in.height);
    if (histogram)
        t.counts = {};

    const int width = in.width, height = in.height;
    const bool hflip = t.params.horizontalFlip, vflip = t.params.verticalFlip;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* s = in.bgr + static_cast<std::ptrdiff_t>(y) * in.stride;
        std::uint8_t* d = out.row(vflip ? height - 1 - y : y);
        if (hflip)
            processRow<-3>(s, d + static_cast<std::ptrdiff_t>(width - 1) * 3, width, t);
        else
            processRow<3>(s, d, width, t);
        // Counted right after the row is processed, while it is still in the cache.
        if (histogram && y % 2 == 0)
            countRow(s, width, t);
    }

    if (histogram) {
        for (int c = 0; c < 4; ++c)
            for (int v = 0; v < 256; ++v)
                histogram->bins[c][v] = double(t.counts[0][c][v]) + double(t.counts[1][c][v]);
    }
}

} // namespace dscap

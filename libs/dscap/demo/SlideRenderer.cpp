#include "dscap/demo/SlideRenderer.h"

#include <algorithm>
#include <cmath>
#include <system_error>
#include <thread>
#include <vector>

namespace dscap {
namespace {

// Optical density per unit of each stain, in B, G, R order: haematoxylin (purple nuclei),
// eosin (pink cytoplasm and collagen) and a brown-black pigment (debris).
constexpr float kHaem[3] = {0.286f, 0.704f, 0.650f};
constexpr float kEosin[3] = {0.283f, 0.954f, 0.093f};
constexpr float kPigment[3] = {0.70f, 0.60f, 0.45f};

constexpr float kBackgroundTransmittance = 0.93f;
constexpr float kVignetteDensity = 0.036f; // at the corners of the field: about 8 % darker
constexpr int kBandRows = 32;              // a multiple of 4, so no bin straddles two bands

// Density to transmittance by table: a step of 1/1024 is far below what eight bits resolve,
// and a pow() per sample would dominate the time to open the camera.
constexpr int kDensitySteps = 1024;
constexpr int kDensityEntries = 4 * kDensitySteps;

struct Box {
    int x0, y0, x1, y1;
};

// Stain amounts of a strip of rows while it is painted.
struct Band {
    Band(int w, int fieldWidth)
        : width(w), haem(w * kBandRows), eosin(w * kBandRows), pigment(w * kBandRows),
          fibre(w * kBandRows), transmittance(w * kBandRows * 3), fieldRow(fieldWidth) {}

    void reset(int top, int count) {
        y0 = top;
        rows = count;
        std::fill(haem.begin(), haem.end(), 0.0f);
        std::fill(eosin.begin(), eosin.end(), 0.0f);
        std::fill(pigment.begin(), pigment.end(), 0.0f);
    }
    std::size_t index(int x, int y) const { return static_cast<std::size_t>(y - y0) * width + x; }
    // The pixels of a square around (cx, cy) that fall in this band; false when none do.
    bool clip(float cx, float cy, float reach, Box& box) const {
        return clip(cx - reach, cy - reach, cx + reach, cy + reach, box);
    }
    bool clip(float x0, float top, float x1, float bottom, Box& box) const {
        box.x0 = std::max(0, static_cast<int>(std::floor(x0)));
        box.x1 = std::min(width - 1, static_cast<int>(std::ceil(x1)));
        box.y0 = std::max(y0, static_cast<int>(std::floor(top)));
        box.y1 = std::min(y0 + rows - 1, static_cast<int>(std::ceil(bottom)));
        return box.x0 <= box.x1 && box.y0 <= box.y1;
    }

    int width;
    int y0 = 0;
    int rows = 0;
    std::vector<float> haem, eosin, pigment;
    std::vector<float> fibre; // one fibre's profile, combined by maximum so joints show no beads
    std::vector<float> transmittance; // the finished band, kept whole for the binned textures
    std::vector<float> fieldRow;
};

void paintCell(Band& band, const Cell& cell) {
    Box box;
    if (!band.clip(cell.body.cx, cell.body.cy, cell.body.reach() + 3, box))
        return;
    const float rimReach = cell.body.soft * 0.5f + 4;
    for (int y = box.y0; y <= box.y1; ++y) {
        float* haem = &band.haem[band.index(0, y)];
        float* eosin = &band.eosin[band.index(0, y)];
        for (int x = box.x0; x <= box.x1; ++x) {
            const auto fx = static_cast<float>(x), fy = static_cast<float>(y);
            const float d = cell.body.distance(fx, fy);
            if (d > rimReach)
                continue;
            // Cytoplasm is thicker towards the middle, mottled and finely granular; the
            // membrane holds a little more stain than what lies inside it.
            float grain = 0.8f + 0.4f * std::clamp(-d / cell.body.a, 0.0f, 1.0f);
            if (cell.grain > 0)
                grain *= (0.8f + 0.4f * valueNoise(fx / 9.0f, fy / 9.0f, cell.seed + 3)) *
                         (0.88f + 0.24f * valueNoise(fx / 2.7f, fy / 2.7f, cell.seed));
            const float rim = 0.35f * std::exp(-(d + 1.5f) * (d + 1.5f) / 3.0f);
            const float cover = cell.body.coverage(d);
            float e = cell.cytoEosin * (cover * grain + rim);
            float h = cell.cytoHaem * cover;
            for (const Blob& n : cell.nuclei) {
                const float dn = n.distance(fx, fy);
                if (dn > n.soft + 3)
                    continue;
                const float cn = n.coverage(dn);
                float chromatin = 1;
                if (cell.grain > 0)
                    chromatin = 0.35f + 0.9f * valueNoise(fx / 2.2f, fy / 2.2f, cell.seed + 1) +
                                0.4f * valueNoise(fx / 1.1f, fy / 1.1f, cell.seed + 2);
                const float envelope = cell.grain * 0.3f * std::exp(-(dn + 1) * (dn + 1) / 1.5f);
                h = std::max(h, cell.nucleusHaem * (cn * chromatin + envelope));
                e *= 1 - 0.5f * cn;
            }
            if (cell.nucleolusHaem > 0) {
                const float dx = fx - cell.nucleolusX, dy = fy - cell.nucleolusY;
                const float s2 = 2 * cell.nucleolusSigma * cell.nucleolusSigma;
                h += cell.nucleolusHaem * std::exp(-(dx * dx + dy * dy) / s2);
            }
            haem[x] += h;
            eosin[x] += e;
        }
    }
}

void paintFibre(Band& band, const Fibre& fibre) {
    const auto segmentBox = [&](const FibreSegment& s, Box& box) {
        const float reach = 3 * s.sigma + 1;
        return band.clip(std::min(s.x0, s.x1) - reach, std::min(s.y0, s.y1) - reach,
                         std::max(s.x0, s.x1) + reach, std::max(s.y0, s.y1) + reach, box);
    };
    Box box;
    bool touched = false;
    for (const FibreSegment& s : fibre.segments) {
        if (!segmentBox(s, box))
            continue;
        touched = true;
        const float vx = s.x1 - s.x0, vy = s.y1 - s.y0;
        const float inv = 1.0f / std::max(vx * vx + vy * vy, 1e-6f);
        const float k = -0.5f / (s.sigma * s.sigma);
        for (int y = box.y0; y <= box.y1; ++y) {
            float* profile = &band.fibre[band.index(0, y)];
            for (int x = box.x0; x <= box.x1; ++x) {
                const float px = static_cast<float>(x) - s.x0, py = static_cast<float>(y) - s.y0;
                const float t = std::clamp((px * vx + py * vy) * inv, 0.0f, 1.0f);
                const float dx = px - t * vx, dy = py - t * vy;
                profile[x] = std::max(profile[x], s.amplitude * std::exp(k * (dx * dx + dy * dy)));
            }
        }
    }
    if (!touched)
        return;
    // Add the profile once, clearing it behind, over the same boxes.
    for (const FibreSegment& s : fibre.segments) {
        if (!segmentBox(s, box))
            continue;
        for (int y = box.y0; y <= box.y1; ++y)
            for (std::size_t i = band.index(box.x0, y); i <= band.index(box.x1, y); ++i) {
                band.haem[i] += band.fibre[i] * fibre.haem;
                band.eosin[i] += band.fibre[i] * fibre.eosin;
                band.pigment[i] += band.fibre[i] * fibre.pigment;
                band.fibre[i] = 0;
            }
    }
}

void paintMote(Band& band, const Mote& mote) {
    Box box;
    if (!band.clip(mote.shape.cx, mote.shape.cy, mote.shape.reach() + 1, box))
        return;
    for (int y = box.y0; y <= box.y1; ++y)
        for (int x = box.x0; x <= box.x1; ++x) {
            const float c = mote.shape.coverage(
                mote.shape.distance(static_cast<float>(x), static_cast<float>(y)));
            band.pigment[band.index(x, y)] += c * mote.pigment;
            band.haem[band.index(x, y)] += c * 0.15f * mote.pigment;
        }
}

void paintHaze(Band& band, const Haze& haze) {
    Box box;
    const float reach = haze.width > 0 ? haze.radius + 3 * haze.width : 1.5f * haze.radius;
    if (!band.clip(haze.cx, haze.cy, reach, box))
        return;
    for (int y = box.y0; y <= box.y1; ++y)
        for (int x = box.x0; x <= box.x1; ++x) {
            const float dx = static_cast<float>(x) - haze.cx, dy = static_cast<float>(y) - haze.cy;
            const float r = std::sqrt(dx * dx + dy * dy);
            float p;
            if (haze.width > 0) {
                const float q = (r - haze.radius) / haze.width;
                p = std::exp(-0.5f * q * q) + 0.25f * smoothstep(1 - r / haze.radius);
            } else {
                const float q = r / (0.5f * haze.radius);
                p = std::exp(-0.5f * q * q);
            }
            band.pigment[band.index(x, y)] += p * haze.pigment;
            band.eosin[band.index(x, y)] += p * haze.eosin;
        }
}

std::uint8_t sampleCode(float transmittance) {
    return static_cast<std::uint8_t>(255.0f * std::sqrt(std::clamp(transmittance, 0.0f, 1.0f)) +
                                     0.5f);
}

// Never freed: a slide may still be painting on its thread while the process exits.
const std::vector<float>& densityTable() {
    static const auto* table = [] {
        auto* t = new std::vector<float>(kDensityEntries);
        for (int i = 0; i < kDensityEntries; ++i)
            (*t)[i] = std::pow(10.0f, -static_cast<float>(i) / kDensitySteps);
        return t;
    }();
    return *table;
}

// Bin averages blocks of the full-resolution slide; skip takes their top-left sample.
void sampleBand(const Band& band, int channels, int factor, SlideTexture& bin, SlideTexture& skip) {
    const float norm = 1.0f / static_cast<float>(factor * factor);
    const std::vector<float>& t = band.transmittance;
    for (int by = band.y0 / factor; by < (band.y0 + band.rows) / factor; ++by) {
        std::uint8_t* binRow = bin.row(by);
        std::uint8_t* skipRow = skip.row(by);
        const std::size_t top = band.index(0, by * factor);
        for (int bx = 0; bx < bin.width; ++bx) {
            for (int c = 0; c < channels; ++c) {
                float sum = 0;
                for (int dy = 0; dy < factor; ++dy)
                    for (int dx = 0; dx < factor; ++dx)
                        sum +=
                            t[(top + static_cast<std::size_t>(dy) * band.width + bx * factor + dx) *
                                  channels +
                              c];
                binRow[bx * channels + c] = sampleCode(sum * norm);
                skipRow[bx * channels + c] =
                    sampleCode(t[(top + static_cast<std::size_t>(bx) * factor) * channels + c]);
            }
        }
    }
}

} // namespace

SlideRenderer::SlideRenderer(const Options& options)
    : options_(options),
      layout_(SlideLayout::generate(options.width + 2 * Slide::kMargin,
                                    options.height + 2 * Slide::kMargin, options.seed)) {}

std::unique_ptr<Slide> SlideRenderer::render(const std::atomic<bool>* cancel) const {
    auto slide = std::make_unique<Slide>();
    const int channels = options_.colour ? 3 : 1;
    const int width = layout_.width, height = layout_.height;
    const auto allocate = [&](SlideTexture& t, int factor) {
        t.width = width / factor;
        t.height = height / factor;
        t.channels = channels;
        t.samples.resize(t.stride() * t.height);
    };
    allocate(slide->full, 1);
    allocate(slide->bin2, 2);
    allocate(slide->skip2, 2);
    allocate(slide->bin4, 4);
    allocate(slide->skip4, 4);

    const std::vector<float>& table = densityTable();
    float grey[3];
    const double weightSum =
        options_.greyWeights[0] + options_.greyWeights[1] + options_.greyWeights[2];
    for (int c = 0; c < 3; ++c)
        grey[c] = static_cast<float>(options_.greyWeights[c] / weightSum);
    const float baseDensity = -std::log10(kBackgroundTransmittance);
    const float centreX = 0.5f * static_cast<float>(width);
    const float centreY = 0.5f * static_cast<float>(height);
    const float scaleX = 2.0f / static_cast<float>(options_.width);
    const float scaleY = 2.0f / static_cast<float>(options_.height);
    constexpr int step = SlideLayout::kFieldStep;

    // Bands are independent and write disjoint rows of every texture, so two threads take
    // alternate ones: the first frame of the demo camera waits for this.
    std::atomic<bool> cancelled{false};
    const auto paint = [&](int firstBand, int bandStride) {
        Band band(width, layout_.fieldWidth);
        for (int top = firstBand * kBandRows; top < height; top += bandStride * kBandRows) {
            if (cancelled || (cancel && cancel->load(std::memory_order_relaxed))) {
                cancelled = true;
                return;
            }
            band.reset(top, std::min(kBandRows, height - top));
            for (const Cell& cell : layout_.cells)
                paintCell(band, cell);
            for (const Fibre& fibre : layout_.fibres)
                paintFibre(band, fibre);
            for (const Mote& mote : layout_.motes)
                paintMote(band, mote);
            for (const Haze& haze : layout_.hazes)
                paintHaze(band, haze);

            for (int y = band.y0; y < band.y0 + band.rows; ++y) {
                if (cancel && cancel->load(std::memory_order_relaxed)) {
                    cancelled = true;
                    return;
                }
                const float ty = static_cast<float>(y % step) / step;
                for (int fx = 0; fx < layout_.fieldWidth; ++fx) {
                    const float a = layout_.field(fx, y / step),
                                b = layout_.field(fx, y / step + 1);
                    band.fieldRow[fx] = a + (b - a) * ty;
                }
                const float ry = (static_cast<float>(y) - centreY) * scaleY;
                const std::size_t first = band.index(0, y);
                float* trans = &band.transmittance[first * channels];
                std::uint8_t* full = slide->full.row(y);
                for (int x = 0; x < width; ++x) {
                    const float tx = static_cast<float>(x % step) / step;
                    const float rx = (static_cast<float>(x) - centreX) * scaleX;
                    const float* f = &band.fieldRow[x / step];
                    const float background = baseDensity + f[0] + (f[1] - f[0]) * tx +
                                             kVignetteDensity * 0.5f * (rx * rx + ry * ry);
                    const float h = band.haem[first + x], e = band.eosin[first + x],
                                p = band.pigment[first + x];
                    float t[3];
                    for (int c = 0; c < 3; ++c) {
                        const float density =
                            background + h * kHaem[c] + e * kEosin[c] + p * kPigment[c];
                        const int i = static_cast<int>(density * kDensitySteps + 0.5f);
                        t[c] = table[std::clamp(i, 0, kDensityEntries - 1)];
                    }
                    if (channels == 3) {
                        for (int c = 0; c < 3; ++c) {
                            trans[3 * x + c] = t[c];
                            full[3 * x + c] = sampleCode(t[c]);
                        }
                    } else {
                        trans[x] = grey[0] * t[0] + grey[1] * t[1] + grey[2] * t[2];
                        full[x] = sampleCode(trans[x]);
                    }
                }
            }
            sampleBand(band, channels, 2, slide->bin2, slide->skip2);
            sampleBand(band, channels, 4, slide->bin4, slide->skip4);
        }
    };
    std::thread helper;
    try {
        helper = std::thread(paint, 1, 2);
    } catch (const std::system_error&) {
    }
    paint(0, helper.joinable() ? 2 : 1);
    if (helper.joinable())
        helper.join();
    if (cancelled)
        return nullptr;
    return slide;
}

} // namespace dscap

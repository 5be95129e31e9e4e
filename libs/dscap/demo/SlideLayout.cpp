#include "dscap/demo/SlideLayout.h"

#include <numbers>
#include <random>

namespace dscap {
namespace {

constexpr float kTau = 2 * std::numbers::pi_v<float>;

float hash01(int x, int y, std::uint32_t seed) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x8da6b343u ^
                      static_cast<std::uint32_t>(y) * 0xd8163841u ^ seed * 0xcb1ab31fu;
    h ^= h >> 13;
    h *= 0x5bd1e995u;
    h ^= h >> 15;
    return static_cast<float>(h & 0xffffffu) * (1.0f / 16777216.0f);
}

float frand(std::mt19937& rng, float lo, float hi) {
    return std::uniform_real_distribution<float>(lo, hi)(rng);
}

Blob makeBlob(std::mt19937& rng, float cx, float cy, float a, float b, float ripple, float soft) {
    Blob blob;
    blob.cx = cx;
    blob.cy = cy;
    blob.a = a;
    blob.b = b;
    const float turn = frand(rng, 0, kTau), p2 = frand(rng, 0, kTau), p3 = frand(rng, 0, kTau);
    blob.cosR = std::cos(turn);
    blob.sinR = std::sin(turn);
    blob.k2 = frand(rng, 0, ripple);
    blob.c2 = std::cos(p2);
    blob.s2 = std::sin(p2);
    blob.k3 = frand(rng, 0, ripple * 0.6f);
    blob.c3 = std::cos(p3);
    blob.s3 = std::sin(p3);
    blob.soft = soft;
    return blob;
}

// A cell of one of three kinds seen in a smear, centred on (x, y).
Cell makeCell(std::mt19937& rng, float x, float y) {
    Cell cell;
    cell.seed = rng();
    cell.grain = 1;
    const float kind = frand(rng, 0, 1);
    if (kind < 0.58f) { // squamous or epithelial: large, pale, one big nucleus
        const float a = frand(rng, 26, 56);
        cell.body = makeBlob(rng, x, y, a, a * frand(rng, 0.6f, 1.0f), 0.2f, frand(rng, 1.6f, 3));
        cell.cytoEosin = frand(rng, 0.10f, 0.30f);
        cell.cytoHaem = frand(rng, 0.0f, 0.12f);
        const float na = a * frand(rng, 0.26f, 0.42f);
        const float off = a * frand(rng, 0, 0.25f), dir = frand(rng, 0, kTau);
        cell.nuclei.push_back(makeBlob(rng, x + off * std::cos(dir), y + off * std::sin(dir), na,
                                       na * frand(rng, 0.7f, 1.0f), 0.08f, 1.4f));
        cell.nucleusHaem = frand(rng, 0.55f, 1.0f);
        if (frand(rng, 0, 1) < 0.6f) {
            cell.nucleolusX = cell.nuclei[0].cx + frand(rng, -0.3f, 0.3f) * na;
            cell.nucleolusY = cell.nuclei[0].cy + frand(rng, -0.3f, 0.3f) * na;
            cell.nucleolusSigma = frand(rng, 1.2f, 2.4f);
            cell.nucleolusHaem = frand(rng, 0.4f, 0.8f);
        }
    } else if (kind < 0.85f) { // lymphocyte: small, nearly all nucleus
        const float a = frand(rng, 10, 15);
        cell.body = makeBlob(rng, x, y, a, a * frand(rng, 0.85f, 1.0f), 0.05f, 1.2f);
        cell.cytoEosin = frand(rng, 0.10f, 0.18f);
        cell.cytoHaem = frand(rng, 0.08f, 0.16f);
        const float na = a * frand(rng, 0.72f, 0.85f);
        cell.nuclei.push_back(makeBlob(rng, x + frand(rng, -1.5f, 1.5f),
                                       y + frand(rng, -1.5f, 1.5f), na, na * 0.92f, 0.05f, 1.2f));
        cell.nucleusHaem = frand(rng, 1.4f, 1.9f);
    } else { // granulocyte: pale granular cytoplasm, a nucleus of three or four lobes
        const float a = frand(rng, 17, 23);
        cell.body = makeBlob(rng, x, y, a, a * frand(rng, 0.85f, 1.0f), 0.06f, 1.5f);
        cell.cytoEosin = frand(rng, 0.14f, 0.24f);
        cell.cytoHaem = 0.02f;
        const int lobes = frand(rng, 0, 1) < 0.6f ? 3 : 4;
        const float start = frand(rng, 0, kTau);
        for (int i = 0; i < lobes; ++i) {
            const float t = start + static_cast<float>(i) * frand(rng, 1.2f, 1.7f);
            const float r = a * 0.36f;
            cell.nuclei.push_back(makeBlob(rng, x + r * std::cos(t), y + r * std::sin(t), a * 0.28f,
                                           a * 0.22f, 0.05f, 1.2f));
        }
        cell.nucleusHaem = frand(rng, 1.2f, 1.6f);
    }
    return cell;
}

void placeCells(SlideLayout& l, std::mt19937& rng) {
    const float w = static_cast<float>(l.width), h = static_cast<float>(l.height);
    const std::uint32_t densitySeed = rng();
    // Cells gather in clusters with clear glass between them.
    const auto density = [&](float x, float y) {
        const float n = 0.7f * valueNoise(x / 420, y / 420, densitySeed) +
                        0.3f * valueNoise(x / 150, y / 150, densitySeed + 1);
        return smoothstep((n - 0.38f) / 0.3f);
    };
    const auto target = static_cast<std::size_t>(w * h / 21000);
    for (std::size_t attempt = 0; attempt < target * 30 && l.cells.size() < target; ++attempt) {
        const float x = frand(rng, -40, w + 40), y = frand(rng, -40, h + 40);
        if (frand(rng, 0, 1) > density(x, y))
            continue;
        Cell cell = makeCell(rng, x, y);
        // Neighbours may overlap a little, as cells of a smear do, but not pile up.
        const bool crowded = std::any_of(l.cells.begin(), l.cells.end(), [&](const Cell& other) {
            const float dx = other.body.cx - x, dy = other.body.cy - y;
            const float reach = 0.6f * (other.body.a + cell.body.a);
            return dx * dx + dy * dy < reach * reach;
        });
        if (!crowded)
            l.cells.push_back(std::move(cell));
    }
    // Cells above or below the focal plane: soft, faint, without texture.
    for (int i = 0; i < static_cast<int>(w * h / 250000); ++i) {
        const float x = frand(rng, 0, w), y = frand(rng, 0, h), a = frand(rng, 18, 45);
        Cell cell;
        cell.body = makeBlob(rng, x, y, a, a * frand(rng, 0.7f, 1.0f), 0.1f, frand(rng, 6, 12));
        cell.cytoEosin = frand(rng, 0.05f, 0.11f);
        cell.nuclei.push_back(makeBlob(rng, x, y, a * 0.35f, a * 0.3f, 0.05f, frand(rng, 5, 9)));
        cell.nucleusHaem = frand(rng, 0.10f, 0.22f);
        l.cells.push_back(std::move(cell));
    }
}

// Wavy collagen bundles a few pixels wide, and fine dark elastic fibres about a pixel wide
// (those alias when the sensor skips pixels).
void placeFibres(SlideLayout& l, std::mt19937& rng) {
    const float w = static_cast<float>(l.width), h = static_cast<float>(l.height);
    const int count = static_cast<int>(w * h / 250000);
    for (int i = 0; i < count; ++i) {
        const bool fine = i % 2 == 1;
        Fibre fibre;
        float width;
        if (fine) {
            width = frand(rng, 0.9f, 1.6f);
            fibre.haem = frand(rng, 0.45f, 0.8f);
            fibre.pigment = frand(rng, 0.15f, 0.35f);
        } else {
            width = frand(rng, 2.5f, 6.0f);
            fibre.eosin = frand(rng, 0.22f, 0.45f);
            fibre.haem = 0.02f;
        }
        float x = frand(rng, -100, w + 100), y = frand(rng, -100, h + 100);
        float heading = frand(rng, 0, kTau), turn = 0;
        const float length = fine ? frand(rng, 400, 1800) : frand(rng, 1000, 3000);
        const float waveAmp = fine ? frand(rng, 0.1f, 0.35f) : frand(rng, 0.15f, 0.4f);
        const float waveLen = frand(rng, 60, 220), phase = frand(rng, 0, kTau);
        constexpr float step = 3.0f;
        std::normal_distribution<float> bend(0.0f, fine ? 0.006f : 0.003f);
        for (float s = 0; s < length; s += step) {
            turn = std::clamp(turn + bend(rng), -0.025f, 0.025f);
            heading += turn;
            const float dir = heading + waveAmp * std::sin(kTau * s / waveLen + phase);
            const float nx = x + step * std::cos(dir), ny = y + step * std::sin(dir);
            const float taper = 0.75f + 0.25f * std::sin(s / 97.0f + phase);
            const float sigma = width * taper / 2.355f;
            // A pixel integrates over its own width: widen the profile, keep its integral.
            const float blurred = std::sqrt(sigma * sigma + 1.0f / 12.0f);
            fibre.segments.push_back({x, y, nx, ny, blurred, sigma / blurred});
            x = nx;
            y = ny;
        }
        l.fibres.push_back(std::move(fibre));
    }
}

void placeDebris(SlideLayout& l, std::mt19937& rng) {
    const float w = static_cast<float>(l.width), h = static_cast<float>(l.height);
    const int groups = static_cast<int>(w * h / 80000);
    for (int i = 0; i < groups; ++i) {
        const float gx = frand(rng, 0, w), gy = frand(rng, 0, h);
        const int n = frand(rng, 0, 1) < 0.7f ? 1 : static_cast<int>(frand(rng, 2, 7));
        const float spread = n > 1 ? 15.0f : 0.0f;
        for (int k = 0; k < n; ++k) {
            const float r = frand(rng, 0.8f, 4.5f);
            const float x = gx + frand(rng, -1, 1) * spread, y = gy + frand(rng, -1, 1) * spread;
            l.motes.push_back({makeBlob(rng, x, y, r, r * frand(rng, 0.5f, 1.0f), 0.25f, 0.9f),
                               frand(rng, 0.5f, 1.4f)});
        }
    }
    for (int i = 0; i < 9; ++i) {
        const bool ring = i % 2 == 0;
        Haze haze;
        haze.cx = frand(rng, 0, w);
        haze.cy = frand(rng, 0, h);
        haze.radius = ring ? frand(rng, 25, 70) : frand(rng, 40, 140);
        haze.width = ring ? frand(rng, 5, 11) : 0.0f;
        haze.pigment = frand(rng, 0.02f, 0.06f);
        haze.eosin = ring ? 0.0f : frand(rng, 0.0f, 0.03f);
        l.hazes.push_back(haze);
    }
}

void makeField(SlideLayout& l, std::mt19937& rng) {
    l.fieldWidth = l.width / SlideLayout::kFieldStep + 2;
    l.fieldHeight = l.height / SlideLayout::kFieldStep + 2;
    l.fieldGrid.resize(static_cast<std::size_t>(l.fieldWidth) * l.fieldHeight);
    const std::uint32_t seed = rng();
    for (int fy = 0; fy < l.fieldHeight; ++fy) {
        for (int fx = 0; fx < l.fieldWidth; ++fx) {
            const auto x = static_cast<float>(fx * SlideLayout::kFieldStep);
            const auto y = static_cast<float>(fy * SlideLayout::kFieldStep);
            const float n = 0.6f * valueNoise(x / 500, y / 500, seed) +
                            0.4f * valueNoise(x / 130, y / 130, seed + 7);
            l.fieldGrid[static_cast<std::size_t>(fy) * l.fieldWidth + fx] = 0.024f * (n - 0.5f);
        }
    }
}

} // namespace

float valueNoise(float x, float y, std::uint32_t seed) {
    const float fx = std::floor(x), fy = std::floor(y);
    const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
    const float tx = smoothstep(x - fx), ty = smoothstep(y - fy);
    const float a = hash01(ix, iy, seed), b = hash01(ix + 1, iy, seed);
    const float c = hash01(ix, iy + 1, seed), d = hash01(ix + 1, iy + 1, seed);
    const float top = a + (b - a) * tx, bottom = c + (d - c) * tx;
    return top + (bottom - top) * ty;
}

SlideLayout SlideLayout::generate(int width, int height, std::uint32_t seed) {
    SlideLayout l;
    l.width = width;
    l.height = height;
    std::mt19937 rng(seed ^ 0x9e3779b9u);
    placeCells(l, rng);
    placeFibres(l, rng);
    placeDebris(l, rng);
    makeField(l, rng);
    return l;
}

} // namespace dscap

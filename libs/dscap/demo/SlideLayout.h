#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace dscap {

inline float smoothstep(float t) {
    t = std::clamp(t, 0.0f, 1.0f);
    return t * t * (3.0f - 2.0f * t);
}

// Smooth lattice noise in 0..1 with features about one unit across.
float valueNoise(float x, float y, std::uint32_t seed);

// An irregular ellipse: radii a and b, turned, its outline rippled by two harmonics.
struct Blob {
    float cx = 0, cy = 0, a = 1, b = 1;
    float cosR = 1, sinR = 0;
    float k2 = 0, c2 = 1, s2 = 0, k3 = 0, c3 = 1, s3 = 0;
    float soft = 1; // width of the edge in pixels

    // Signed distance to the outline in pixels (negative inside), close enough near the edge.
    float distance(float x, float y) const {
        const float dx = x - cx, dy = y - cy;
        const float u = (dx * cosR + dy * sinR) / a, v = (dy * cosR - dx * sinR) / b;
        const float r = std::sqrt(u * u + v * v);
        if (r < 1e-4f)
            return -std::min(a, b);
        const float c = u / r, s = v / r;
        const float cos2 = c * c - s * s, sin2 = 2 * c * s;
        const float cos3 = c * (4 * c * c - 3), sin3 = s * (3 - 4 * s * s);
        const float outline = 1 + k2 * (cos2 * c2 + sin2 * s2) + k3 * (cos3 * c3 + sin3 * s3);
        return (r - outline) * std::sqrt(a * a * c * c + b * b * s * s);
    }
    float coverage(float d) const { return smoothstep(0.5f - d / soft); }
    // How far from the centre anything of it reaches.
    float reach() const { return std::max(a, b) * (1 + k2 + k3) + soft; }
};

struct Cell {
    Blob body;
    std::vector<Blob> nuclei; // lobes of one nucleus, or one
    float cytoEosin = 0, cytoHaem = 0, nucleusHaem = 0;
    float grain = 0; // texture of cytoplasm and chromatin; 0 for cells out of the focal plane
    float nucleolusX = 0, nucleolusY = 0, nucleolusSigma = 0, nucleolusHaem = 0;
    std::uint32_t seed = 0;
};

struct FibreSegment {
    float x0, y0, x1, y1;
    float sigma, amplitude; // a Gaussian profile, widened by the pixel's own width
};

struct Fibre {
    std::vector<FibreSegment> segments;
    float haem = 0, eosin = 0, pigment = 0;
};

struct Mote {
    Blob shape;
    float pigment = 0;
};

// Out-of-focus matter: a soft disc, or the ring a defocused mote of dust makes.
struct Haze {
    float cx = 0, cy = 0, radius = 0;
    float width = 0; // of the ring; 0 for a disc
    float pigment = 0, eosin = 0;
};

// What lies on a stained smear, placed from a seed: cells in clusters with clear glass
// between them, fibres, debris, out-of-focus blobs, and the slow unevenness of the
// background. Coordinates are full-resolution pixels of a width x height slide.
struct SlideLayout {
    static SlideLayout generate(int width, int height, std::uint32_t seed);

    // The background's density offset at a point of a grid kFieldStep pixels apart.
    static constexpr int kFieldStep = 16;
    float field(int fx, int fy) const {
        return fieldGrid[static_cast<std::size_t>(fy) * fieldWidth + fx];
    }

    int width = 0;
    int height = 0;
    std::vector<Cell> cells;
    std::vector<Fibre> fibres;
    std::vector<Mote> motes;
    std::vector<Haze> hazes;
    int fieldWidth = 0;
    int fieldHeight = 0;
    std::vector<float> fieldGrid;
};

} // namespace dscap

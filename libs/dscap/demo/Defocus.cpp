#include "dscap/demo/Defocus.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace dscap {
namespace {

// Box mean along one line of n samples, `step` apart, with running sums: the cost does not
// grow with the radius, so a strong blur costs what a weak one does.
void boxLine(const std::uint8_t* in, std::uint8_t* out, int n, std::size_t step, int radius,
             std::vector<std::uint8_t>& line) {
    line.resize(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        line[static_cast<std::size_t>(i)] = in[static_cast<std::size_t>(i) * step];
    auto at = [&](int i) { return static_cast<int>(line[std::clamp(i, 0, n - 1)]); };
    const int window = 2 * radius + 1;
    int sum = 0;
    for (int i = -radius; i <= radius; ++i)
        sum += at(i);
    for (int i = 0; i < n; ++i) {
        out[static_cast<std::size_t>(i) * step] =
            static_cast<std::uint8_t>((sum + window / 2) / window);
        sum += at(i + radius + 1) - at(i - radius);
    }
}

} // namespace

SlideTexture defocus(const SlideTexture& texture, int radius) {
    SlideTexture out = texture;
    if (radius <= 0 || texture.width <= 0 || texture.height <= 0)
        return out;
    const int channels = texture.channels;
    const int height = texture.height;
    std::vector<std::uint8_t> line;
    SlideTexture across = texture;
    for (int y = 0; y < height; ++y)
        for (int c = 0; c < channels; ++c)
            boxLine(texture.row(y) + c, across.row(y) + c, texture.width,
                    static_cast<std::size_t>(channels), radius, line);
    // Down the columns a whole row at a time, which keeps to the memory's order.
    const std::size_t stride = texture.stride();
    const int window = 2 * radius + 1;
    auto row = [&](int y) { return across.row(std::clamp(y, 0, height - 1)); };
    std::vector<int> sums(stride, 0);
    for (int y = -radius; y <= radius; ++y) {
        const std::uint8_t* r = row(y);
        for (std::size_t i = 0; i < stride; ++i)
            sums[i] += r[i];
    }
    for (int y = 0; y < height; ++y) {
        std::uint8_t* o = out.row(y);
        const std::uint8_t* enter = row(y + radius + 1);
        const std::uint8_t* leave = row(y - radius);
        for (std::size_t i = 0; i < stride; ++i) {
            o[i] = static_cast<std::uint8_t>((sums[i] + window / 2) / window);
            sums[i] += enter[i] - leave[i];
        }
    }
    return out;
}

} // namespace dscap

// Writes a small seed corpus for fuzz_webp into the folder given: lossy and lossless stills
// with and without alpha, and a two-frame animation, all made with libwebp here. The first
// byte of each seed is the fuzzer's own: 0 a plain decode, 1 the second page, 4 a thumbnail.
// Built and run by make-webp-seeds.sh.
#include <webp/encode.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes picture(int w, int h, int channels) {
    Bytes b;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < channels; ++c)
                b.push_back(static_cast<std::uint8_t>(x * 37 + y * 11 + c * 90));
    return b;
}

Bytes encode(int w, int h, bool alpha, bool lossless) {
    const Bytes rows = picture(w, h, alpha ? 4 : 3);
    const int stride = w * (alpha ? 4 : 3);
    std::uint8_t* out = nullptr;
    std::size_t n = 0;
    if (alpha)
        n = lossless ? WebPEncodeLosslessBGRA(rows.data(), w, h, stride, &out)
                     : WebPEncodeBGRA(rows.data(), w, h, stride, 50, &out);
    else
        n = lossless ? WebPEncodeLosslessBGR(rows.data(), w, h, stride, &out)
                     : WebPEncodeBGR(rows.data(), w, h, stride, 50, &out);
    Bytes b(out, out + n);
    WebPFree(out);
    return b;
}

void put(Bytes& b, std::uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i)
        b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

void append(Bytes& b, const char* fourcc, const Bytes& payload) {
    b.insert(b.end(), fourcc, fourcc + 4);
    put(b, static_cast<std::uint32_t>(payload.size()), 4);
    b.insert(b.end(), payload.begin(), payload.end());
    if (payload.size() % 2)
        b.push_back(0);
}

// Two frames on an 8 x 8 canvas: a full lossless one with alpha, then a smaller lossy one
// blended at an offset.
Bytes animation() {
    Bytes body;
    Bytes vp8x = {0x12, 0, 0, 0}; // animated, alpha
    put(vp8x, 7, 3);
    put(vp8x, 7, 3);
    append(body, "VP8X", vp8x);
    append(body, "ANIM", Bytes(6, 0));
    const struct {
        int x, y, w, h;
        std::uint8_t flags;
    } frames[] = {{0, 0, 8, 8, 0x02}, {2, 4, 4, 4, 0x01}};
    for (const auto& f : frames) {
        const Bytes still = encode(f.w, f.h, f.x == 0, f.x == 0);
        Bytes anmf;
        put(anmf, static_cast<std::uint32_t>(f.x / 2), 3);
        put(anmf, static_cast<std::uint32_t>(f.y / 2), 3);
        put(anmf, static_cast<std::uint32_t>(f.w - 1), 3);
        put(anmf, static_cast<std::uint32_t>(f.h - 1), 3);
        put(anmf, 100, 3);
        anmf.push_back(f.flags);
        anmf.insert(anmf.end(), still.begin() + 12, still.end()); // the chunks after "WEBP"
        append(body, "ANMF", anmf);
    }
    Bytes b = {'R', 'I', 'F', 'F'};
    put(b, static_cast<std::uint32_t>(4 + body.size()), 4);
    b.insert(b.end(), {'W', 'E', 'B', 'P'});
    b.insert(b.end(), body.begin(), body.end());
    return b;
}

bool write(const std::string& path, std::uint8_t first, const Bytes& file) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f)
        return false;
    const bool ok = std::fwrite(&first, 1, 1, f) == 1 &&
                    std::fwrite(file.data(), 1, file.size(), f) == file.size();
    return std::fclose(f) == 0 && ok;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUT_DIR\n", argv[0]);
        return 2;
    }
    const std::string out = argv[1];
    const bool ok = write(out + "/lossless", 0, encode(13, 7, false, true)) &&
                    write(out + "/lossy", 0, encode(13, 7, false, false)) &&
                    write(out + "/lossless-alpha", 0, encode(9, 5, true, true)) &&
                    write(out + "/lossy-alpha", 0, encode(9, 5, true, false)) &&
                    write(out + "/thumbnail", 4, encode(300, 40, false, false)) &&
                    write(out + "/animation", 1, animation());
    return ok ? 0 : 1;
}

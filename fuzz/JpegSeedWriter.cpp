// Writes a small seed corpus for fuzz_jpeg: one file per coding and colour layout the
// decoder handles, each behind the fuzzer's request byte (0 full decode, 4 thumbnail).
// Built and run by make-jpeg-seeds.sh.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>
#include <string>
#include <vector>

namespace {

struct Seed {
    const char* name;
    J_COLOR_SPACE input; // JCS_GRAYSCALE, JCS_RGB or JCS_CMYK
    J_COLOR_SPACE stored;
    int width, height, quality;
    bool progressive = false;
    bool arithmetic = false;
    int restartRows = 0;
    int chromaH = 2, chromaV = 2; // luma sampling factors against chroma
    unsigned char request = 0;
};

std::vector<unsigned char> encode(const Seed& s) {
    jpeg_compress_struct c;
    jpeg_error_mgr err;
    c.err = jpeg_std_error(&err);
    jpeg_create_compress(&c);
    unsigned char* out = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&c, &out, &size);
    const int comps = s.input == JCS_GRAYSCALE ? 1 : s.input == JCS_CMYK ? 4 : 3;
    c.image_width = static_cast<JDIMENSION>(s.width);
    c.image_height = static_cast<JDIMENSION>(s.height);
    c.input_components = comps;
    c.in_color_space = s.input;
    jpeg_set_defaults(&c);
    jpeg_set_colorspace(&c, s.stored);
    jpeg_set_quality(&c, s.quality, TRUE);
    if (s.stored == JCS_YCbCr) {
        c.comp_info[0].h_samp_factor = s.chromaH;
        c.comp_info[0].v_samp_factor = s.chromaV;
    }
    if (s.progressive)
        jpeg_simple_progression(&c);
    c.arith_code = s.arithmetic ? TRUE : FALSE;
    c.restart_in_rows = s.restartRows;
    jpeg_start_compress(&c, TRUE);
    std::vector<JSAMPLE> row(static_cast<std::size_t>(s.width * comps));
    for (int y = 0; y < s.height; ++y) {
        for (int x = 0; x < s.width; ++x)
            for (int i = 0; i < comps; ++i) {
                const double v = 128 + 100 * std::sin(x * 0.05 * (i + 1) + y * 0.03);
                const bool edge = (x / 8 + y / 8 + i) % 5 == 0;
                row[static_cast<std::size_t>(x * comps + i)] =
                    static_cast<JSAMPLE>(edge ? 255 - static_cast<int>(v) : static_cast<int>(v));
            }
        JSAMPROW r = row.data();
        jpeg_write_scanlines(&c, &r, 1);
    }
    jpeg_finish_compress(&c);
    jpeg_destroy_compress(&c);
    std::vector<unsigned char> bytes(out, out + size);
    std::free(out);
    return bytes;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUT_DIR\n", argv[0]);
        return 2;
    }
    const Seed seeds[] = {
        {"baseline-420", JCS_RGB, JCS_YCbCr, 37, 21, 80},
        {"baseline-444-restarts", JCS_RGB, JCS_YCbCr, 40, 24, 90, false, false, 1, 1, 1},
        {"baseline-422", JCS_RGB, JCS_YCbCr, 33, 17, 60, false, false, 0, 2, 1},
        {"progressive-420", JCS_RGB, JCS_YCbCr, 37, 21, 80, true},
        {"arithmetic", JCS_RGB, JCS_YCbCr, 30, 20, 75, false, true},
        {"arithmetic-progressive", JCS_RGB, JCS_YCbCr, 30, 20, 75, true, true},
        {"grey", JCS_GRAYSCALE, JCS_GRAYSCALE, 25, 19, 85},
        {"grey-progressive", JCS_GRAYSCALE, JCS_GRAYSCALE, 25, 19, 85, true},
        {"rgb", JCS_RGB, JCS_RGB, 20, 12, 70},
        {"cmyk", JCS_CMYK, JCS_CMYK, 20, 12, 70},
        {"ycck-progressive", JCS_CMYK, JCS_YCCK, 20, 12, 70, true},
        {"thumbnail", JCS_RGB, JCS_YCbCr, 400, 300, 30, false, false, 0, 2, 2, 4},
        {"thumbnail-progressive", JCS_RGB, JCS_YCbCr, 400, 300, 30, true, false, 0, 2, 2, 4},
    };
    for (const Seed& s : seeds) {
        const std::vector<unsigned char> bytes = encode(s);
        const std::string path = std::string(argv[1]) + "/" + s.name + ".jpg";
        std::FILE* f = std::fopen(path.c_str(), "wb");
        if (!f || std::fputc(s.request, f) == EOF ||
            std::fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size() || std::fclose(f)) {
            std::fprintf(stderr, "cannot write %s\n", path.c_str());
            return 1;
        }
    }
    return 0;
}

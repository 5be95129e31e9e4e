// Writes small seed files for fuzz_png and fuzz_gif: every PNG colour type and depth, plain
// and interlaced, with transparency and resolution chunks; GIFs with one and several
// frames, local colour tables, transparency and interlacing. Each seed starts with the
// byte DecoderFuzz reads as page and thumbnail choice.
// Usage: png-gif-seeds PNG_DIR GIF_DIR (see make-png-gif-seeds.sh)
#include <cstdio>
#include <cstdlib>
#include <gif_lib.h>
#include <png.h>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

void save(const std::string& path, unsigned char selector, const Bytes& bytes) {
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) {
        std::perror(path.c_str());
        std::exit(1);
    }
    std::fputc(selector, f);
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
}

void appendPng(png_structp png, png_bytep data, size_t n) {
    auto* out = static_cast<Bytes*>(png_get_io_ptr(png));
    out->insert(out->end(), data, data + n);
}

// A generator, not a product: libpng's default handler (message and abort) is enough.
Bytes png(int type, int depth, bool interlaced, bool transparency) {
    const int width = 9, height = 5;
    Bytes out;
    png_structp p = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(p);
    png_set_write_fn(p, &out, appendPng, nullptr);
    png_set_IHDR(p, info, width, height, depth, type,
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_color palette[256];
    png_byte alpha[256];
    for (int i = 0; i < 256; ++i) {
        palette[i] = {static_cast<png_byte>(i), static_cast<png_byte>(255 - i),
                      static_cast<png_byte>(i * 7)};
        alpha[i] = static_cast<png_byte>(i * 3);
    }
    const int entries = 1 << (depth < 8 ? depth : 8);
    if (type == PNG_COLOR_TYPE_PALETTE)
        png_set_PLTE(p, info, palette, entries);
    if (transparency) {
        png_color_16 colour{0, 1, 1, 1, 1};
        png_set_tRNS(p, info, alpha, type == PNG_COLOR_TYPE_PALETTE ? entries : 0, &colour);
    }
    png_set_pHYs(p, info, 3780, 3780, PNG_RESOLUTION_METER);
    png_text text{PNG_TEXT_COMPRESSION_zTXt,
                  const_cast<char*>("Comment"),
                  const_cast<char*>("seed"),
                  4,
                  0,
                  nullptr,
                  nullptr};
    png_set_text(p, info, &text, 1);
    png_write_info(p, info);
    const int passes = png_set_interlace_handling(p);
    const size_t rowBytes = png_get_rowbytes(p, info);
    Bytes row(rowBytes);
    for (int pass = 0; pass < passes; ++pass)
        for (int y = 0; y < height; ++y) {
            for (size_t i = 0; i < rowBytes; ++i)
                row[i] = static_cast<unsigned char>(type == PNG_COLOR_TYPE_PALETTE && depth == 8
                                                        ? (i + y) % entries
                                                        : i * 37 + y * 11);
            png_write_row(p, row.data());
        }
    png_write_end(p, info);
    png_destroy_write_struct(&p, &info);
    return out;
}

int appendGif(GifFileType* gif, const GifByteType* data, int n) {
    auto* out = static_cast<Bytes*>(gif->UserData);
    out->insert(out->end(), data, data + n);
    return n;
}

struct Frame {
    int left, top, width, height;
    bool local;
    bool interlaced;
    int transparent;
};

Bytes gif(const std::vector<Frame>& frames) {
    Bytes out;
    int error = 0;
    GifFileType* g = EGifOpen(&out, appendGif, &error);
    EGifSetGifVersion(g, true);
    GifColorType colours[16];
    for (int i = 0; i < 16; ++i)
        colours[i] = {static_cast<GifByteType>(i * 16), static_cast<GifByteType>(255 - i * 9),
                      static_cast<GifByteType>(i)};
    ColorMapObject* global = GifMakeMapObject(16, colours);
    ColorMapObject* local = GifMakeMapObject(4, colours + 4);
    EGifPutScreenDesc(g, 12, 9, 8, 2, global);
    for (const Frame& f : frames) {
        if (f.transparent >= 0) {
            GraphicsControlBlock control{DISPOSAL_UNSPECIFIED, false, 10, f.transparent};
            GifByteType ext[4];
            EGifGCBToExtension(&control, ext);
            EGifPutExtension(g, GRAPHICS_EXT_FUNC_CODE, 4, ext);
        }
        EGifPutImageDesc(g, f.left, f.top, f.width, f.height, f.interlaced,
                         f.local ? local : nullptr);
        std::vector<GifPixelType> line(static_cast<size_t>(f.width));
        for (int y = 0; y < f.height; ++y) {
            for (int x = 0; x < f.width; ++x)
                line[static_cast<size_t>(x)] =
                    static_cast<GifPixelType>((x + y * 3) % (f.local ? 4 : 16));
            EGifPutLine(g, line.data(), f.width);
        }
    }
    EGifCloseFile(g, &error);
    GifFreeMapObject(global);
    GifFreeMapObject(local);
    return out;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s PNG_DIR GIF_DIR\n", argv[0]);
        return 2;
    }
    const std::string pngDir = argv[1], gifDir = argv[2];
    struct Kind {
        int type;
        std::vector<int> depths;
    };
    const std::vector<Kind> kinds = {{PNG_COLOR_TYPE_GRAY, {1, 2, 4, 8, 16}},
                                     {PNG_COLOR_TYPE_PALETTE, {1, 2, 4, 8}},
                                     {PNG_COLOR_TYPE_RGB, {8, 16}},
                                     {PNG_COLOR_TYPE_GRAY_ALPHA, {8, 16}},
                                     {PNG_COLOR_TYPE_RGB_ALPHA, {8, 16}}};
    int n = 0;
    for (const Kind& k : kinds)
        for (int depth : k.depths) {
            const bool alpha = k.type & PNG_COLOR_MASK_ALPHA;
            save(pngDir + "/png-" + std::to_string(++n), 0, png(k.type, depth, false, false));
            save(pngDir + "/png-" + std::to_string(++n), 0, png(k.type, depth, true, !alpha));
        }

    save(gifDir + "/one-frame", 0, gif({{0, 0, 12, 9, false, false, -1}}));
    save(gifDir + "/interlaced", 0, gif({{0, 0, 12, 9, false, true, 3}}));
    const std::vector<Frame> animation = {{0, 0, 12, 9, false, false, -1},
                                          {3, 2, 5, 4, true, false, 1},
                                          {8, 6, 6, 5, true, true, -1}};
    for (unsigned char page = 0; page < 3; ++page)
        save(gifDir + "/animation-page" + std::to_string(page), page, gif(animation));
    return 0;
}

#pragma once

#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>
#include <string>
#include <vector>

namespace bench {

// Encodes 3-byte pixels (`space` says their order) with libjpeg-turbo at quality 90, the
// way a camera program saves its pictures.
inline std::vector<unsigned char> encodeJpeg(const unsigned char* pixels, int width, int height,
                                             J_COLOR_SPACE space, bool progressive = false) {
    jpeg_compress_struct c{};
    jpeg_error_mgr err{};
    c.err = jpeg_std_error(&err);
    jpeg_create_compress(&c);
    unsigned char* out = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&c, &out, &size);
    c.image_width = static_cast<JDIMENSION>(width);
    c.image_height = static_cast<JDIMENSION>(height);
    c.input_components = 3;
    c.in_color_space = space;
    jpeg_set_defaults(&c);
    jpeg_set_quality(&c, 90, TRUE);
    if (progressive)
        jpeg_simple_progression(&c);
    jpeg_start_compress(&c, TRUE);
    while (c.next_scanline < c.image_height) {
        auto* row = const_cast<unsigned char*>(pixels + std::size_t{c.next_scanline} * width * 3);
        jpeg_write_scanlines(&c, &row, 1);
    }
    jpeg_finish_compress(&c);
    jpeg_destroy_compress(&c);
    std::vector<unsigned char> bytes(out, out + size);
    std::free(out);
    return bytes;
}

inline bool writeFile(const std::string& path, const std::vector<unsigned char>& bytes) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f)
        return false;
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    return std::fclose(f) == 0 && written;
}

} // namespace bench

#include "imagelib/tiff/TiffPageWriter.h"

#include "imagelib/core/MaskChannel.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <tiffio.h>
#include <vector>

namespace imagelib {
namespace {

constexpr char kWriteFailed[] = "The TIFF file could not be written (the disk may be full).";
constexpr std::uint16_t kJpegQuality = 90;

enum class Layout { Grey, WhiteIsZero, Palette, Rgb, Rgba };

bool anyAlpha(const DibView& dib) {
    for (int y = 0; y < dib.height(); ++y) {
        const std::uint8_t* row = dib.row(y);
        for (int x = 0; x < dib.width(); ++x)
            if (row[4 * x + 3])
                return true;
    }
    return false;
}

Layout chooseLayout(const DibView& dib) {
    const int bits = dib.bitCount();
    if (bits <= 8) {
        const auto pal = dib.palette();
        if (pal.size() == (std::size_t{1} << bits) && dib.isGreyRamp())
            return Layout::Grey;
        const auto isGrey = [](const RgbQuad& q, int v) {
            return q.red == v && q.green == v && q.blue == v;
        };
        if (bits == 1 && pal.size() == 2 && isGrey(pal[0], 255) && isGrey(pal[1], 0))
            return Layout::WhiteIsZero;
        return Layout::Palette;
    }
    // 32-bit pictures whose fourth byte is all zero (most camera frames) are opaque, not
    // invisible.
    if (bits == 32 && dib.header().compression == kBiRgb && anyAlpha(dib))
        return Layout::Rgba;
    return Layout::Rgb;
}

void setColourMap(TIFF* tif, const DibView& dib) {
    const std::size_t n = std::size_t{1} << dib.bitCount();
    std::vector<std::uint16_t> r(n, 0), g(n, 0), b(n, 0);
    const auto pal = dib.palette();
    for (std::size_t i = 0; i < std::min(n, pal.size()); ++i) {
        r[i] = static_cast<std::uint16_t>(pal[i].red * 257);
        g[i] = static_cast<std::uint16_t>(pal[i].green * 257);
        b[i] = static_cast<std::uint16_t>(pal[i].blue * 257);
    }
    TIFFSetField(tif, TIFFTAG_COLORMAP, r.data(), g.data(), b.data());
}

// Rows go top first, in the file's sample order (R, G, B[, A]).
void fileRow(const DibView& dib, Layout layout, int y, std::uint8_t* out) {
    const std::uint8_t* src = dib.topRow(y);
    const int w = dib.width();
    const int bits = dib.bitCount();
    if (bits <= 8) {
        std::memcpy(out, src,
                    (static_cast<std::size_t>(w) * static_cast<std::size_t>(bits) + 7) / 8);
        return;
    }
    if (bits == 24 || (bits == 32 && dib.header().compression == kBiRgb)) {
        const int in = bits / 8;
        const int outBytes = layout == Layout::Rgba ? 4 : 3;
        for (int x = 0; x < w; ++x, src += in, out += outBytes) {
            out[0] = src[2];
            out[1] = src[1];
            out[2] = src[0];
            if (layout == Layout::Rgba)
                out[3] = src[3];
        }
        return;
    }
    const MaskChannel red(dib.redMask()), green(dib.greenMask()), blue(dib.blueMask());
    for (int x = 0; x < w; ++x, out += 3) {
        const std::uint32_t px = bits == 16 ? readLe16(src + 2 * x) : readLe32(src + 4 * x);
        out[0] = red.value(px);
        out[1] = green.value(px);
        out[2] = blue.value(px);
    }
}

bool chooseCompression(std::uint32_t asked, Layout layout, int bits, std::uint16_t& compression,
                       std::string& error) {
    switch (asked) {
    case 0:
        compression = COMPRESSION_LZW;
        break;
    case COMPRESSION_NONE:
    case COMPRESSION_LZW:
    case COMPRESSION_ADOBE_DEFLATE:
    case COMPRESSION_PACKBITS:
    case COMPRESSION_JPEG:
        compression = static_cast<std::uint16_t>(asked);
        break;
    default:
        error = "The TIFF compression chosen is not one this program can write.";
        return false;
    }
    if (compression == COMPRESSION_JPEG && layout != Layout::Rgb &&
        !(layout == Layout::Grey && bits == 8))
        compression = COMPRESSION_LZW;
    if (!TIFFIsCODECConfigured(compression)) {
        error = "The TIFF compression chosen is not one this program can write.";
        return false;
    }
    return true;
}

} // namespace

bool writeTiffPage(TIFF* tif, const DibView& dib, std::uint32_t asked, std::string& error) {
    const Layout layout = chooseLayout(dib);
    const int bits = dib.bitCount();
    std::uint16_t compression = COMPRESSION_LZW;
    if (!chooseCompression(asked, layout, bits, compression, error))
        return false;
    const bool rgb = layout == Layout::Rgb || layout == Layout::Rgba;
    const std::uint16_t spp = layout == Layout::Rgba ? 4 : rgb ? 3 : 1;
    const std::uint16_t bps = rgb ? 8 : static_cast<std::uint16_t>(bits);
    std::uint16_t photometric = PHOTOMETRIC_RGB;
    if (layout == Layout::Grey)
        photometric = PHOTOMETRIC_MINISBLACK;
    else if (layout == Layout::WhiteIsZero)
        photometric = PHOTOMETRIC_MINISWHITE;
    else if (layout == Layout::Palette)
        photometric = PHOTOMETRIC_PALETTE;
    else if (compression == COMPRESSION_JPEG)
        photometric = PHOTOMETRIC_YCBCR; // what JPEG compresses best; libtiff converts

    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(dib.width()));
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(dib.height()));
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, bps);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, spp);
    TIFFSetField(tif, TIFFTAG_COMPRESSION, compression);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, photometric);
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tif, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    if (layout == Layout::Rgba) {
        const std::uint16_t extra[] = {EXTRASAMPLE_UNASSALPHA};
        TIFFSetField(tif, TIFFTAG_EXTRASAMPLES, 1, extra);
    }
    if (layout == Layout::Palette)
        setColourMap(tif, dib);
    if (compression == COMPRESSION_JPEG) {
        TIFFSetField(tif, TIFFTAG_JPEGQUALITY, static_cast<int>(kJpegQuality));
        if (photometric == PHOTOMETRIC_YCBCR)
            TIFFSetField(tif, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    }
    if ((compression == COMPRESSION_LZW || compression == COMPRESSION_ADOBE_DEFLATE) && bps == 8 &&
        layout != Layout::Palette)
        TIFFSetField(tif, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    const BitmapInfoHeader& h = dib.header();
    if (h.xPelsPerMeter > 0 && h.yPelsPerMeter > 0) {
        TIFFSetField(tif, TIFFTAG_RESOLUTIONUNIT, RESUNIT_CENTIMETER);
        TIFFSetField(tif, TIFFTAG_XRESOLUTION, h.xPelsPerMeter / 100.0);
        TIFFSetField(tif, TIFFTAG_YRESOLUTION, h.yPelsPerMeter / 100.0);
    }
    TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tif, 0));

    const tmsize_t scanline = TIFFScanlineSize(tif);
    const std::size_t rowBytes =
        std::max<std::size_t>(scanline > 0 ? static_cast<std::size_t>(scanline) : 0,
                              static_cast<std::size_t>(dib.width()) * 4);
    // libtiff may encode in place, so every row goes through a buffer of our own.
    const std::unique_ptr<std::uint8_t[]> row(new (std::nothrow) std::uint8_t[rowBytes]);
    if (!row || scanline <= 0) {
        error = "There is not enough memory to save the image.";
        return false;
    }
    for (int y = 0; y < dib.height(); ++y) {
        fileRow(dib, layout, y, row.get());
        if (TIFFWriteScanline(tif, row.get(), static_cast<std::uint32_t>(y), 0) < 0) {
            error = kWriteFailed;
            return false;
        }
    }
    if (!TIFFWriteDirectory(tif)) {
        error = kWriteFailed;
        return false;
    }
    return true;
}

} // namespace imagelib

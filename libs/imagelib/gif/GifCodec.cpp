#include "imagelib/gif/GifCodec.h"

#include "imagelib/core/BoxShrinker.h"
#include "imagelib/imagelib.h"

#include <algorithm>
#include <cstring>
#include <gif_lib.h>
#include <memory>
#include <vector>

namespace imagelib {
namespace {

constexpr char kDamaged[] = "The GIF file is damaged or incomplete.";
// Once its table is full an LZW code stands for at most 4096 pixels, so a GIF cannot hold
// much more than this many pixels per byte. Screens up to kAnyScreen pixels pass whatever
// the data, since a small frame may sit on a larger screen.
constexpr std::uint64_t kMaxPixelsPerByte = 4096;
constexpr std::uint64_t kAnyScreen = 1 << 24;

struct Source {
    std::span<const std::uint8_t> data;
    std::size_t pos = 0;
};

int readFromMemory(GifFileType* gif, GifByteType* out, int n) {
    auto* s = static_cast<Source*>(gif->UserData);
    const std::size_t take =
        std::min(static_cast<std::size_t>(std::max(n, 0)), s->data.size() - s->pos);
    std::memcpy(out, s->data.data() + s->pos, take);
    s->pos += take;
    return static_cast<int>(take);
}

struct CloseGif {
    void operator()(GifFileType* gif) const {
        int status = 0;
        DGifCloseFile(gif, &status);
    }
};
using GifPtr = std::unique_ptr<GifFileType, CloseGif>;

// Reads past the current frame's pixel data without decoding it.
bool skipPixels(GifFileType& gif) {
    GifByteType* block = nullptr;
    do {
        if (DGifGetCodeNext(&gif, &block) == GIF_ERROR)
            return false;
    } while (block);
    return true;
}

// A graphic control extension gives the next frame's transparent colour; others are
// skipped.
bool readExtension(GifFileType& gif, int& transparent) {
    int code = 0;
    GifByteType* block = nullptr;
    if (DGifGetExtension(&gif, &code, &block) == GIF_ERROR)
        return false;
    GraphicsControlBlock control;
    if (code == GRAPHICS_EXT_FUNC_CODE && block &&
        DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK)
        transparent = control.TransparentColor;
    while (block)
        if (DGifGetExtensionNext(&gif, &block) == GIF_ERROR)
            return false;
    return true;
}

// Frames may use indices past the end of their colour table. Rather than leave readers of
// the bitmap to look past its table, such pictures get the full table, the extra entries
// black.
bool coverAllIndices(DibBuffer& dib, int highest, std::string& error) {
    const int colours = static_cast<int>(dib.header().clrUsed);
    if (highest < colours)
        return true;
    DibBuffer full = DibBuffer::create(dib.width(), dib.height(), 8, 256, error);
    if (!full)
        return false;
    std::memcpy(full.palette(), dib.palette(), sizeof(RgbQuad) * static_cast<std::size_t>(colours));
    std::memcpy(full.row(0), dib.row(0), dib.stride() * static_cast<std::size_t>(dib.height()));
    dib = std::move(full);
    return true;
}

// Draws the current frame onto a screen filled with the background colour. Transparent
// pixels let the background show; whatever lies outside the screen is dropped. On failure
// the caller drops the picture.
bool decodeFrame(GifFileType& gif, int transparent, DibBuffer& dib, std::string& error) {
    const GifImageDesc& frame = gif.Image;
    const ColorMapObject* map = frame.ColorMap ? frame.ColorMap : gif.SColorMap;
    // A file with no colour table at all is shown in grey rather than refused.
    const int colours = map ? std::clamp(map->ColorCount, 1, 256) : 256;
    dib = DibBuffer::create(gif.SWidth, gif.SHeight, 8, colours, error);
    if (!dib)
        return false;
    for (int i = 0; i < colours; ++i) {
        const auto grey = static_cast<std::uint8_t>(i);
        dib.palette()[i] =
            map ? RgbQuad{map->Colors[i].Blue, map->Colors[i].Green, map->Colors[i].Red, 0}
                : RgbQuad{grey, grey, grey, 0};
    }
    const int background = gif.SBackGroundColor < colours ? gif.SBackGroundColor : 0;
    const auto screenWidth = static_cast<std::size_t>(dib.width());
    for (int y = 0; y < dib.height(); ++y) {
        std::memset(dib.row(y), background, screenWidth);
        std::memset(dib.row(y) + screenWidth, 0, dib.stride() - screenWidth);
    }
    if (frame.Width <= 0 || frame.Height <= 0) {
        if (skipPixels(gif))
            return true;
        error = kDamaged;
        return false;
    }

    std::vector<GifPixelType> line(static_cast<std::size_t>(frame.Width));
    const int visibleWidth = std::clamp(dib.width() - frame.Left, 0, frame.Width);
    int highest = background;
    auto readRow = [&](int y) {
        if (DGifGetLine(&gif, line.data(), frame.Width) == GIF_ERROR)
            return false;
        const int screenY = frame.Top + y;
        if (screenY >= dib.height() || visibleWidth == 0)
            return true;
        std::uint8_t* dst = dib.topRow(screenY) + frame.Left;
        for (int x = 0; x < visibleWidth; ++x) {
            const int index = line[static_cast<std::size_t>(x)];
            if (index != transparent) {
                dst[x] = static_cast<std::uint8_t>(index);
                highest = std::max(highest, index);
            }
        }
        return true;
    };
    bool ok = true;
    if (frame.Interlace) {
        constexpr int kStart[4] = {0, 4, 2, 1};
        constexpr int kStep[4] = {8, 8, 4, 2};
        for (int pass = 0; pass < 4 && ok; ++pass)
            for (int y = kStart[pass]; y < frame.Height && ok; y += kStep[pass])
                ok = readRow(y);
    } else {
        // Rows below the screen are not decoded at all: a hostile frame may claim many.
        const int visibleRows = std::clamp(dib.height() - frame.Top, 0, frame.Height);
        for (int y = 0; y < visibleRows && ok; ++y)
            ok = readRow(y);
        if (ok && visibleRows < frame.Height)
            ok = skipPixels(gif);
    }
    if (!ok) {
        error = kDamaged;
        return false;
    }
    return coverAllIndices(dib, highest, error);
}

// A thumbnail of a frame that is not interlaced: each screen row, background or frame, is
// turned into RGB and box-averaged as it comes, so a screen of any size costs a row and the
// small result. Interlaced frames arrive out of order and are decoded whole.
bool decodeFrameShrunk(GifFileType& gif, int transparent, std::uint32_t factor, DibBuffer& dib,
                       std::string& error) {
    const GifImageDesc& frame = gif.Image;
    const ColorMapObject* map = frame.ColorMap ? frame.ColorMap : gif.SColorMap;
    const int colours = map ? std::clamp(map->ColorCount, 1, 256) : 256;
    std::uint8_t rgb[256][3] = {}; // indices past the table are black
    for (int i = 0; i < colours; ++i) {
        const auto grey = static_cast<std::uint8_t>(i);
        rgb[i][0] = map ? map->Colors[i].Red : grey;
        rgb[i][1] = map ? map->Colors[i].Green : grey;
        rgb[i][2] = map ? map->Colors[i].Blue : grey;
    }
    BoxShrinker::Shape shape;
    shape.width = static_cast<std::uint32_t>(gif.SWidth);
    shape.height = static_cast<std::uint32_t>(gif.SHeight);
    shape.factor = factor;
    shape.channels = 3;
    shape.blockWidth = shape.width;
    shape.samplesPerPixel = 3;
    BoxShrinker shrink;
    if (!shrink.start(shape, error))
        return false;
    const std::size_t width = shape.width;
    const int background = gif.SBackGroundColor < colours ? gif.SBackGroundColor : 0;
    std::vector<std::uint8_t> backgroundRow(width * 3), row(width * 3);
    for (std::size_t x = 0; x < width; ++x)
        std::memcpy(&backgroundRow[3 * x], rgb[background], 3);
    const bool empty = frame.Width <= 0 || frame.Height <= 0;
    const int visibleWidth = std::clamp(gif.SWidth - frame.Left, 0, std::max(frame.Width, 0));
    const int visibleRows = empty ? 0 : std::clamp(gif.SHeight - frame.Top, 0, frame.Height);
    std::vector<GifPixelType> line(static_cast<std::size_t>(std::max(frame.Width, 1)));
    for (int y = 0; y < gif.SHeight; ++y) {
        const int frameY = y - frame.Top;
        if (frameY < 0 || frameY >= visibleRows) {
            if (!shrink.addRow(static_cast<std::uint32_t>(y), backgroundRow.data()))
                return false;
            continue;
        }
        if (DGifGetLine(&gif, line.data(), frame.Width) == GIF_ERROR) {
            error = kDamaged;
            return false;
        }
        row = backgroundRow;
        for (int x = 0; x < visibleWidth; ++x) {
            const int index = line[static_cast<std::size_t>(x)];
            if (index != transparent)
                std::memcpy(&row[3 * static_cast<std::size_t>(frame.Left + x)], rgb[index], 3);
        }
        if (!shrink.addRow(static_cast<std::uint32_t>(y), row.data()))
            return false;
    }
    if (!empty && visibleRows < frame.Height && !skipPixels(gif)) {
        error = kDamaged;
        return false;
    }
    if (empty && !skipPixels(gif)) {
        error = kDamaged;
        return false;
    }
    dib = std::move(shrink.dib());
    return true;
}

std::string noSuchPage(int frames, int page) {
    return "The GIF file has only " + std::to_string(frames) + (frames == 1 ? " page" : " pages") +
           "; page " + std::to_string(page + 1) + " does not exist.";
}

} // namespace

std::uint32_t GifCodec::format() const {
    return IMAGELIB_FMT_GIF;
}

bool GifCodec::probe(std::span<const std::uint8_t> head) const {
    return head.size() >= 6 && (std::memcmp(head.data(), "GIF87a", 6) == 0 ||
                                std::memcmp(head.data(), "GIF89a", 6) == 0);
}

DecodeResult GifCodec::decode(std::span<const std::uint8_t> bytes,
                              const DecodeRequest& request) const {
    DecodeResult r;
    if (!probe(bytes)) {
        r.error = "The file is not a GIF image.";
        return r;
    }
    Source source{bytes};
    int status = 0;
    const GifPtr gif(DGifOpen(&source, readFromMemory, &status));
    if (!gif) {
        r.error = status == D_GIF_ERR_NOT_ENOUGH_MEM
                      ? "There is not enough memory to open the image."
                      : kDamaged;
        return r;
    }
    if (!DibBuffer::sizeAcceptable(gif->SWidth, gif->SHeight, 8, r.error))
        return r;
    const auto screen = static_cast<std::uint64_t>(gif->SWidth) * gif->SHeight;
    if (screen > std::max(kAnyScreen, bytes.size() * kMaxPixelsPerByte)) {
        r.error = "The GIF file claims a picture far larger than its data.";
        return r;
    }
    r.fullWidth = gif->SWidth;
    r.fullHeight = gif->SHeight;
    r.fullBitCount = 8;

    // Every frame is walked past to count the pages; only the one asked for is decoded.
    // Damage after that frame ends the count but keeps the picture, as a partly
    // downloaded animation still shows its first frames.
    int frames = 0;
    int transparent = -1;
    bool broken = false;
    for (bool done = false; !done && !broken;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif.get(), &type) == GIF_ERROR) {
            broken = true;
            break;
        }
        switch (type) {
        case IMAGE_DESC_RECORD_TYPE:
            if (DGifGetImageDesc(gif.get()) == GIF_ERROR) {
                broken = true;
            } else if (frames == request.page) {
                const std::uint32_t factor =
                    gif->Image.Interlace
                        ? 1
                        : BoxShrinker::factorFor(static_cast<std::uint32_t>(gif->SWidth),
                                                 static_cast<std::uint32_t>(gif->SHeight),
                                                 request.boxWidth, request.boxHeight);
                if (factor > 1 ? !decodeFrameShrunk(*gif, transparent, factor, r.dib, r.error)
                               : !decodeFrame(*gif, transparent, r.dib, r.error)) {
                    r.dib = {};
                    return r;
                }
            } else {
                broken = !skipPixels(*gif);
            }
            // A frame cut short is no page: there would be nothing to show.
            if (!broken)
                ++frames;
            transparent = -1;
            break;
        case EXTENSION_RECORD_TYPE:
            broken = !readExtension(*gif, transparent);
            break;
        case TERMINATE_RECORD_TYPE:
            done = true;
            break;
        default:
            broken = true;
            break;
        }
    }
    r.pageCount = frames;
    if (!r.dib) {
        r.error = broken        ? std::string(kDamaged)
                  : frames == 0 ? std::string("The GIF file contains no picture.")
                                : noSuchPage(frames, request.page);
    }
    return r;
}

const Codec& gifCodec() {
    static const GifCodec codec;
    return codec;
}

} // namespace imagelib

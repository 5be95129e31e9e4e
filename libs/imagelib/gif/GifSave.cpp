#include "imagelib/core/WriteAll.h"
#include "imagelib/gif/GifCodec.h"

#include <algorithm>
#include <bit>
#include <gif_lib.h>
#include <memory>
#include <vector>

namespace imagelib {
namespace {

constexpr int kMaxSide = 0xFFFF;

struct Sink {
    int fd = -1;
    bool failed = false;
};

int writeToFd(GifFileType* gif, const GifByteType* data, int n) {
    auto* sink = static_cast<Sink*>(gif->UserData);
    if (n < 0 || !writeAll(sink->fd, data, static_cast<std::size_t>(n))) {
        sink->failed = true;
        return 0;
    }
    return n;
}

struct CloseGif {
    void operator()(GifFileType* gif) const {
        int status = 0;
        EGifCloseFile(gif, &status);
    }
};

struct FreeMap {
    void operator()(ColorMapObject* map) const { GifFreeMapObject(map); }
};

int indexAt(const std::uint8_t* row, int x, int bitCount) {
    switch (bitCount) {
    case 1:
        return (row[x / 8] >> (7 - x % 8)) & 1;
    case 4:
        return (x & 1) ? row[x / 2] & 0x0F : row[x / 2] >> 4;
    default:
        return row[x];
    }
}

// The table written covers every index the picture uses, even past the bitmap's own table,
// and is a power of two long as GIF requires (extra entries black).
std::unique_ptr<ColorMapObject, FreeMap> colourTable(const DibView& dib) {
    int highest = static_cast<int>(dib.palette().size()) - 1;
    for (int y = 0; y < dib.height(); ++y)
        for (int x = 0; x < dib.width(); ++x)
            highest = std::max(highest, indexAt(dib.row(y), x, dib.bitCount()));
    const auto size = std::bit_ceil(static_cast<unsigned>(std::max(highest + 1, 2)));
    std::unique_ptr<ColorMapObject, FreeMap> map(GifMakeMapObject(static_cast<int>(size), nullptr));
    if (!map)
        return map;
    for (std::size_t i = 0; i < size; ++i) {
        const RgbQuad q = i < dib.palette().size() ? dib.palette()[i] : RgbQuad{0, 0, 0, 0};
        map->Colors[i] = {q.red, q.green, q.blue};
    }
    return map;
}

} // namespace

bool GifCodec::canSave(const DibView& dib) const {
    return dib.valid() && dib.bitCount() <= 8 && dib.width() <= kMaxSide &&
           dib.height() <= kMaxSide;
}

bool GifCodec::save(const DibView& dib, const SaveRequest& /*request*/, int fd,
                    std::string& error) const {
    const int width = dib.width();
    const int height = dib.height();
    const auto map = colourTable(dib);
    std::vector<GifPixelType> line(static_cast<std::size_t>(width));
    Sink sink{fd};
    int status = 0;
    std::unique_ptr<GifFileType, CloseGif> gif(EGifOpen(&sink, writeToFd, &status));
    if (!map || !gif) {
        error = "There is not enough memory to save the image.";
        return false;
    }
    bool ok = EGifPutScreenDesc(gif.get(), width, height, 8, 0, map.get()) == GIF_OK &&
              EGifPutImageDesc(gif.get(), 0, 0, width, height, false, nullptr) == GIF_OK;
    for (int y = 0; y < height && ok; ++y) {
        const std::uint8_t* row = dib.topRow(y);
        for (int x = 0; x < width; ++x)
            line[static_cast<std::size_t>(x)] =
                static_cast<GifPixelType>(indexAt(row, x, dib.bitCount()));
        ok = EGifPutLine(gif.get(), line.data(), width) == GIF_OK;
    }
    // Closing writes the trailer; its own result ignores a failed write, the sink does not.
    ok = EGifCloseFile(gif.release(), &status) == GIF_OK && ok && !sink.failed;
    if (!ok) {
        error = sink.failed ? "The file could not be written (the disk may be full)."
                            : "The GIF file could not be written.";
        return false;
    }
    return true;
}

} // namespace imagelib

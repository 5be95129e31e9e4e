// Test files are written with giflib itself.
#include "../DecodedPicture.h"
#include "../ScratchDir.h"

#include <gtest/gtest.h>

#include <functional>
#include <gif_lib.h>

using namespace imagelib;

namespace {

struct Frame {
    int left, top, width, height;
    std::vector<GifColorType> local; // empty: the global table
    bool interlaced = false;
    int transparent = -1;
    std::function<int(int, int)> index = [](int x, int y) { return (x + y) % 4; };
};

int appendTo(GifFileType* gif, const GifByteType* data, int n) {
    auto* out = static_cast<Bytes*>(gif->UserData);
    out->insert(out->end(), data, data + n);
    return n;
}

ColorMapObject* table(const std::vector<GifColorType>& colours) {
    return colours.empty() ? nullptr
                           : GifMakeMapObject(static_cast<int>(colours.size()), colours.data());
}

Bytes gifFile(int width, int height, const std::vector<GifColorType>& global, int background,
              const std::vector<Frame>& frames) {
    Bytes out;
    int status = 0;
    GifFileType* gif = EGifOpen(&out, appendTo, &status);
    EGifSetGifVersion(gif, true);
    ColorMapObject* globalMap = table(global);
    EGifPutScreenDesc(gif, width, height, 8, background, globalMap);
    GifFreeMapObject(globalMap);
    for (const Frame& f : frames) {
        if (f.transparent >= 0) {
            GraphicsControlBlock control{DISPOSAL_UNSPECIFIED, false, 0, f.transparent};
            GifByteType ext[4];
            EGifGCBToExtension(&control, ext);
            EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, ext);
        }
        ColorMapObject* local = table(f.local);
        if (!local) { // giflib would drop the previous frame's table without freeing it
            GifFreeMapObject(gif->Image.ColorMap);
            gif->Image.ColorMap = nullptr;
        }
        EGifPutImageDesc(gif, f.left, f.top, f.width, f.height, f.interlaced, local);
        GifFreeMapObject(local);
        // Interlaced rows are written in their four passes' order.
        constexpr int kStart[] = {0, 4, 2, 1}, kStep[] = {8, 8, 4, 2};
        std::vector<GifPixelType> line(static_cast<std::size_t>(f.width));
        for (int pass = 0; pass < (f.interlaced ? 4 : 1); ++pass)
            for (int y = f.interlaced ? kStart[pass] : 0; y < f.height;
                 y += f.interlaced ? kStep[pass] : 1) {
                for (int x = 0; x < f.width; ++x)
                    line[static_cast<std::size_t>(x)] = static_cast<GifPixelType>(f.index(x, y));
                EGifPutLine(gif, line.data(), f.width);
            }
    }
    EGifCloseFile(gif, &status);
    return out;
}

const std::vector<GifColorType> kGlobal = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {9, 9, 9}};
const std::vector<GifColorType> kLocal = {{1, 2, 3},    {4, 5, 6},    {7, 8, 9},    {10, 11, 12},
                                          {13, 14, 15}, {16, 17, 18}, {19, 20, 21}, {22, 23, 24}};

} // namespace

TEST(GifCodec, EachFrameIsAPageDrawnAloneOntoTheBackground) {
    // A 7 x 10 screen, background colour 3: a full frame; a frame with its own table and a
    // transparent colour, hanging off the bottom right corner; an interlaced frame.
    const std::vector<Frame> frames = {
        {0, 0, 7, 10, {}},
        {5, 8, 4, 4, kLocal, false, 1, [](int x, int y) { return x + 2 * y; }},
        {1, 0, 5, 10, {}, true, -1, [](int, int y) { return y % 3; }},
    };
    const Bytes file = gifFile(7, 10, kGlobal, 3, frames);
    for (int page = 0; page < 3; ++page) {
        SCOPED_TRACE(page);
        const DecodedPicture d = openMemory(file, page);
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.format, IMAGELIB_FMT_GIF);
        EXPECT_EQ(d.params.pageCount, 3);
        EXPECT_EQ(d.header().bitCount, 8);
        const Frame& f = frames[static_cast<std::size_t>(page)];
        const auto& colours = f.local.empty() ? kGlobal : f.local;
        EXPECT_EQ(d.header().clrUsed, colours.size());
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 7; ++x) {
                const bool inside =
                    x >= f.left && x < f.left + f.width && y >= f.top && y < f.top + f.height;
                int index = inside ? f.index(x - f.left, y - f.top) : 3;
                if (index == f.transparent)
                    index = 3;
                const GifColorType& c = colours[static_cast<std::size_t>(index)];
                ASSERT_EQ(d.pixel(x, y), (Bgra{c.Blue, c.Green, c.Red, 255})) << x << "," << y;
            }
    }
    const DecodedPicture beyond = openMemory(file, 3);
    EXPECT_FALSE(beyond.dib);
    EXPECT_EQ(beyond.params.pageCount, 3);
    EXPECT_EQ(beyond.error(), "The GIF file has only 3 pages; page 4 does not exist.");
}

TEST(GifCodec, BrokenAndHostileFiles) {
    const std::string damaged = "The GIF file is damaged or incomplete.";
    const Bytes two = gifFile(7, 10, kGlobal, 0, {{0, 0, 7, 10, {}}, {0, 0, 7, 10, {}}});
    const Bytes one = gifFile(7, 10, kGlobal, 0, {{0, 0, 7, 10, {}}});
    const Bytes twoCut(two.begin(), two.end() - 6);
    Bytes garbage = one;
    std::fill(garbage.begin() + 6, garbage.begin() + 30, 0xC3);
    expectRefused({
        {"truncated in the pixels", Bytes(one.begin(), one.end() - 6), damaged},
        {"garbage after the signature", garbage, damaged},
        {"screen far larger than the data", gifFile(20000, 20000, kGlobal, 0, {{0, 0, 2, 2, {}}}),
         "The GIF file claims a picture far larger than its data."},
        {"no frame at all", gifFile(7, 10, kGlobal, 0, {}), "The GIF file contains no picture."},
        {"second frame cut off, asked for", twoCut, damaged, 1},
    });
    // A partly downloaded animation still shows the frames that arrived.
    const DecodedPicture first = openMemory(twoCut, 0);
    ASSERT_TRUE(first.dib) << first.error();
    EXPECT_EQ(first.params.pageCount, 1);
}

TEST(GifCodec, SavesPalettedPicturesAsOneFrame) {
    const ScratchDir dir;
    const std::string path = dir.file("round.gif");
    const ImageIoParams save = saveParams(IMAGELIB_FMT_GIF);
    for (int bits : {1, 4, 8}) {
        SCOPED_TRACE(bits);
        std::vector<RgbQuad> palette(bits == 1 ? 2 : bits == 4 ? 5 : 256);
        for (std::size_t i = 0; i < palette.size(); ++i)
            palette[i] = {static_cast<std::uint8_t>(i * 3), static_cast<std::uint8_t>(255 - i), 77,
                          0};
        const Bytes dib = patternDib(bits, palette);
        ASSERT_EQ(ImageLib_CanSave(dib.data(), &save), 1);
        const DecodedPicture back = saveAndOpen(path, dib.data(), save);
        ASSERT_TRUE(back.dib) << back.error();
        EXPECT_EQ(back.params.pageCount, 1);
        EXPECT_EQ(back.header().bitCount, 8);
        expectSamePixels(back, dib.data());
    }
    const BitmapInfoHeader rgb{40, 2, 2, 1, 24, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(ImageLib_CanSave(&rgb, &save), 0);
}

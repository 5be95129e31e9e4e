#include "../DecodedPicture.h"
#include "../ScratchDir.h"

#include <gtest/gtest.h>

using namespace imagelib;

namespace {

Bytes bytes(const std::string& text, const Bytes& tail = {}) {
    Bytes b(text.begin(), text.end());
    b.insert(b.end(), tail.begin(), tail.end());
    return b;
}

constexpr Bgra kRed{0, 0, 255, 255}, kGreen{0, 255, 0, 255}, kBlue{255, 0, 0, 255};
constexpr Bgra kWhite{255, 255, 255, 255}, kBlack{0, 0, 0, 255}, kGrey{128, 128, 128, 255};

const RgbQuad kPalWhite{255, 255, 255, 0};
const RgbQuad kPalBlack{0, 0, 0, 0};

} // namespace

TEST(PnmCodec, DecodesEveryKindToTheSamePixels) {
    const std::vector<Bgra> colour = {kRed, kGreen, kBlue, kWhite, kBlack, kGrey};
    const std::vector<Bgra> grey = {kBlack,         kGrey,          kWhite,
                                    {1, 1, 1, 255}, {2, 2, 2, 255}, {3, 3, 3, 255}};
    const std::vector<Bgra> bits = {kBlack, kWhite, kWhite, kWhite, kBlack, kBlack};
    // The file, the bits it decodes to and its pixels, 3 x 2 with the top row first.
    const std::vector<std::tuple<const char*, Bytes, int, std::vector<Bgra>>> rows = {
        {"P3 with comments",
         bytes("P3\n# by hand\n3 #w\n2\n255\n255 0 0 0 255 0 0 0 255\n"
               "255 255 255 0 0 0 128 128 128\n"),
         24, colour},
        {"P6",
         bytes("P6 3 2 255\n",
               {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255, 0, 0, 0, 128, 128, 128}),
         24, colour},
        {"P6 16-bit",
         bytes("P6 3 2 65535\n",
               {255, 255, 0,   0,   0,   0,   0, 0, 255, 255, 0, 0, 0,   0,   0,   0,   255, 255,
                255, 255, 255, 255, 255, 255, 0, 0, 0,   0,   0, 0, 128, 128, 128, 128, 128, 128}),
         24, colour},
        {"P3 maxval 15, a sample above it",
         bytes("P3 3 2 15 15 0 0 0 15 0 0 0 15 15 99 15 0 0 0 8 8 8\n"),
         24,
         {kRed, kGreen, kBlue, kWhite, kBlack, {136, 136, 136, 255}}},
        {"P2", bytes("P2 3 2 255\n0 128 255\n1 2 3\n"), 8, grey},
        {"P5", bytes("P5 3 2 255\r", {0, 128, 255, 1, 2, 3}), 8, grey},
        {"P5 16-bit", bytes("P5 3 2 65535\n", {0, 0, 128, 128, 255, 255, 1, 0, 2, 0, 3, 0}), 8,
         grey},
        {"P1 without separators", bytes("P1\n3 2\n100\n0 1 1"), 1, bits},
        {"P4", bytes("P4 3 2\n", {0x9F, 0x60}), 1, bits},
    };
    for (const auto& [name, file, bitCount, pixels] : rows) {
        SCOPED_TRACE(name);
        const DecodedPicture d = openMemory(file);
        ASSERT_TRUE(d.dib) << d.error();
        EXPECT_EQ(d.params.format, IMAGELIB_FMT_PNM);
        EXPECT_EQ(d.header().bitCount, bitCount);
        EXPECT_EQ(d.header().width, 3);
        EXPECT_EQ(d.header().height, 2);
        for (int i = 0; i < 6; ++i)
            EXPECT_EQ(d.pixel(i % 3, i / 3), pixels[static_cast<std::size_t>(i)]) << i;
        // Bits and bytes past the last pixel are cleared, whatever the file had there.
        EXPECT_EQ(d.topRow(0)[bitCount == 1 ? 1 : 3 * bitCount / 8], 0);
        if (bitCount == 1) {
            EXPECT_EQ(d.topRow(0)[0] & 0x1F, 0);
        }
    }
}

TEST(PnmCodec, HostileFilesGiveATextNeverACrash) {
    const std::string damaged = "The PNM file is damaged or incomplete.";
    const std::string badHeader = "The PNM file's header is invalid.";
    expectRefused({
        {"raw rows cut short", bytes("P6 3 2 255\n", Bytes(17, 7)), damaged},
        {"plain samples run out", bytes("P2 4 1 255\n1 2 3        "), damaged},
        {"letter among samples", bytes("P2 2 1 255\n1 x\n"), damaged},
        {"plain bitmap with a 2", bytes("P1 2 1 12"), damaged},
        {"claimed size far beyond the data", bytes("P6 30000 20000 255\n", {1, 2, 3}), damaged},
        {"plain claim far beyond the data", bytes("P1 30000 30000\n0101"), damaged},
        {"width beyond any picture", bytes("P5 2000000 1 255\n", Bytes(64, 0)),
         "The image is too large to open."},
        {"overlong number", bytes("P5 00000000001 1 255\n", {0}), badHeader},
        {"number glued to a letter", bytes("P5 1x 1 255\n", {0}), badHeader},
        {"comment straight after maxval", bytes("P5 1 1 255#\n", {0}), badHeader},
        {"header ends early", bytes("P6 3 2"), damaged},
        {"maxval too large", bytes("P5 1 1 65536\n", {0, 0}),
         "The PNM file's maximum sample value is outside 1 to 65535."},
    });
    // Not anymaps at all: no codec claims them.
    for (const char* text : {"P7 1 1", "P", "PX"})
        EXPECT_FALSE(openMemory(bytes(text)).dib) << text;
}

TEST(PnmCodec, SavesTheDepthsItCanHoldAndReadsThemBack) {
    // 9 x 2 at 1 bit: the second byte of each row holds the ninth pixel.
    const Bytes bits = {0xA5, 0x80, 0x3C, 0x00};
    // The picture, the magic it is saved with, and whether the reread block equals it byte
    // for byte.
    const std::vector<std::tuple<const char*, Bytes, const char*, bool>> rows = {
        {"1-bit white then black", makeDib(9, 2, 1, {kPalWhite, kPalBlack}, bits), "P4", true},
        {"1-bit black then white", makeDib(9, 2, 1, {kPalBlack, kPalWhite}, bits), "P4", false},
        {"8-bit grey ramp", makeDib(3, 2, 8, greyRamp(256), {0, 100, 255, 7, 8, 9}), "P5", true},
        {"8-bit colour palette",
         makeDib(3, 2, 8, {{0, 0, 255, 0}, {255, 0, 0, 0}, {9, 8, 7, 0}}, {0, 1, 2, 2, 1, 0}), "P6",
         false},
        {"24-bit", makeDib(3, 2, 24, {}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 8, 7, 6, 5, 4, 3, 2, 1}),
         "P6", true},
    };
    const ScratchDir dir;
    const std::string path = dir.file("round.pnm");
    const ImageIoParams pnm = saveParams(IMAGELIB_FMT_PNM);
    for (const auto& [name, picture, magic, sameBlock] : rows) {
        SCOPED_TRACE(name);
        ASSERT_EQ(ImageLib_CanSave(picture.data(), &pnm), 1);
        const DecodedPicture back = saveAndOpen(path, picture.data()); // the extension decides
        ASSERT_TRUE(back.dib) << back.error();
        const Bytes written = readFile(path);
        EXPECT_EQ(std::string(written.begin(), written.begin() + 2), magic);
        expectSamePixels(back, picture.data());
        if (sameBlock) {
            EXPECT_EQ(back.bytes(), picture);
        }
    }

    // Colour bitmaps, 4 bits and alpha have no anymap kind.
    for (const Bytes& b :
         {makeDib(1, 1, 1, {{0, 0, 255, 0}, kPalWhite}, {0}),
          makeDib(1, 1, 4, {kPalBlack, kPalWhite}, {0}), makeDib(1, 1, 32, {}, {1, 2, 3, 4})})
        EXPECT_EQ(ImageLib_CanSave(b.data(), &pnm), 0);
}

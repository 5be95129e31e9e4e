#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

// The image library: a table of formats, and opening and saving pictures as packed
// device-independent bitmaps (a 40-byte information header, the colour table, then the
// rows bottom-up, each padded to 4 bytes, in one block).
extern "C" {

struct ImageLibExtFmt {
    const char* ext; // without the dot, lower case; nullptr ends the table
    std::uint32_t format;
};

struct ImageLibFmtInfo {
    std::uint32_t format;
    const char* name; // display name, e.g. "JPEG"
};

enum ImageLibFormat : std::uint32_t {
    IMAGELIB_FMT_NONE = 0,
    IMAGELIB_FMT_BMP = 1,
    IMAGELIB_FMT_JPEG = 2,
    IMAGELIB_FMT_PNG = 3,
    IMAGELIB_FMT_TIFF = 4,
    IMAGELIB_FMT_GIF = 5,
    IMAGELIB_FMT_WEBP = 6,
    IMAGELIB_FMT_PNM = 7,
    IMAGELIB_FMT_COUNT = 16,
};

// The parameter block exchanged for opening and saving. 608 bytes; zero it before use.
// On save, formatOption and the option bytes carry the format's options: formatOption is
// the first option value and optionFlags the second (see iopt.h); optionBytes[0] bit 0
// asks TIFF to append the picture as a new page.
struct ImageIoParams {
    std::uint32_t format;       // out on open, in on save
    std::uint32_t formatOption; // in on save
    std::uint8_t optionBytes[2];
    std::uint8_t reserved0;
    std::uint8_t optionFlags[4]; // the second option value, little-endian
    std::uint8_t reserved1;
    std::int32_t pageIndex; // in on open: the page to decode, from 0
    std::int32_t pageCount; // out on open: pages in the file (0 or 1 for a single image)
    std::uint8_t reserved2[72];
    char16_t errorText[256]; // out: a clear English sentence on failure, else empty
};

static_assert(sizeof(ImageIoParams) == 608);
static_assert(offsetof(ImageIoParams, formatOption) == 4);
static_assert(offsetof(ImageIoParams, optionBytes) == 8);
static_assert(offsetof(ImageIoParams, optionFlags) == 11);
static_assert(offsetof(ImageIoParams, pageIndex) == 16);
static_assert(offsetof(ImageIoParams, pageCount) == 20);
static_assert(offsetof(ImageIoParams, errorText) == 96);

inline constexpr std::uint8_t IMAGELIB_OPT_APPEND_PAGE = 0x01;

// The most pixels a picture opened whole may have (about 11585 x 11585); bigger ones are
// refused before anything is allocated. Pictures from elsewhere (the clipboard) are held
// to the same budget.
inline constexpr std::uint64_t IMAGELIB_MAX_PIXELS = std::uint64_t{1} << 27;

// What a reduced decode reports of the file's own picture.
struct ImageLibFullInfo {
    std::int32_t width;
    std::int32_t height;
    std::int32_t bitCount;
};

// The whole table, ended by a row whose extension is nullptr; valid for the process's life.
const ImageLibExtFmt* ImageLib_ExtFmt();
// The description of a format number, or nullptr for a number that names no format.
const ImageLibFmtInfo* ImageLib_GetFmtInfo(int format);

// Decodes page params->pageIndex of a file (UTF-8 path). Returns a block to give back with
// ImageLib_Free, or nullptr with params->errorText set.
void* ImageLib_Open(const char* path, ImageIoParams* params);
// The same from bytes in memory.
void* ImageLib_OpenMemory(const void* data, std::size_t size, ImageIoParams* params);
// For thumbnails: may decode at a reduced size that still covers at least twice the box in
// both directions; `full` receives the picture's own width, height and bit depth.
void* ImageLib_OpenScaled(const char* path, ImageIoParams* params, int boxWidth, int boxHeight,
                          ImageLibFullInfo* full);
void ImageLib_Free(void* dib);

// For the calling thread's reduced decodes: once `*word` holds `stopValue`, a thumbnail
// being streamed gives up (nullptr) instead of running to its end, so that whoever waits
// for the thread is not kept waiting by a huge picture. nullptr: nothing stops them.
void ImageLib_SetStopWord(const std::atomic<std::int32_t>* word, std::int32_t stopValue);
// Non-zero when the calling thread's last ImageLib_OpenScaled gave up for its stop word,
// rather than failing on the file.
int ImageLib_GaveUp();

// Bytes of a block from ImageLib_Open (header, colour table and rows).
std::size_t ImageLib_DibSize(const void* dib);

// Writes the picture in params->format with its options; non-zero on success. The file is
// written beside the target under a temporary name and renamed into place.
int ImageLib_Save(const char* path, const void* dib, ImageIoParams* params);
// Non-zero when params->format can store this picture (by its depth).
int ImageLib_CanSave(const void* dib, const ImageIoParams* params);

} // extern "C"

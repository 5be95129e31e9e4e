#pragma once

#include <cstdint>

// The image library's format table. Format numbers run from 1 to 15; 0 means "not an
// image". Several extensions may share one number.
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

// The whole table, ended by a row whose extension is nullptr; valid for the process's life.
const ImageLibExtFmt* ImageLib_ExtFmt();
// The description of a format number, or nullptr for a number that names no format.
const ImageLibFmtInfo* ImageLib_GetFmtInfo(int format);

} // extern "C"

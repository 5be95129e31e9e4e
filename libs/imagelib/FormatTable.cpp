#include "imagelib/imagelib.h"

namespace {

const ImageLibExtFmt kTable[] = {
    {"bmp", IMAGELIB_FMT_BMP},    {"dib", IMAGELIB_FMT_BMP},   {"jpg", IMAGELIB_FMT_JPEG},
    {"jpeg", IMAGELIB_FMT_JPEG},  {"jpe", IMAGELIB_FMT_JPEG},  {"jfif", IMAGELIB_FMT_JPEG},
    {"png", IMAGELIB_FMT_PNG},    {"tif", IMAGELIB_FMT_TIFF},  {"tiff", IMAGELIB_FMT_TIFF},
    {"gif", IMAGELIB_FMT_GIF},    {"webp", IMAGELIB_FMT_WEBP}, {"pbm", IMAGELIB_FMT_PNM},
    {"pgm", IMAGELIB_FMT_PNM},    {"ppm", IMAGELIB_FMT_PNM},   {"pnm", IMAGELIB_FMT_PNM},
    {nullptr, IMAGELIB_FMT_NONE},
};

const ImageLibFmtInfo kInfo[] = {
    {IMAGELIB_FMT_BMP, "Windows Bitmap"},  {IMAGELIB_FMT_JPEG, "JPEG"}, {IMAGELIB_FMT_PNG, "PNG"},
    {IMAGELIB_FMT_TIFF, "TIFF"},           {IMAGELIB_FMT_GIF, "GIF"},   {IMAGELIB_FMT_WEBP, "WebP"},
    {IMAGELIB_FMT_PNM, "Portable Anymap"},
};

} // namespace

extern "C" const ImageLibExtFmt* ImageLib_ExtFmt() {
    return kTable;
}

extern "C" const ImageLibFmtInfo* ImageLib_GetFmtInfo(int format) {
    for (const ImageLibFmtInfo& info : kInfo)
        if (static_cast<int>(info.format) == format)
            return &info;
    return nullptr;
}

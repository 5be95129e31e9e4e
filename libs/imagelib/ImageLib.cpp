// The library's C entry points: find the codec, decode or encode, and report failures as
// sentences in the parameter block.
#include "imagelib/imagelib.h"

#include "imagelib/core/BoxShrinker.h"
#include "imagelib/core/Codec.h"
#include "imagelib/core/FileBytes.h"
#include "imagelib/core/TempFile.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace {

using namespace imagelib;

void setError(ImageIoParams* params, const std::string& text) {
    if (!params)
        return;
    // The texts are English UTF-8 (a size names its "×"); a malformed sequence becomes '?'
    // rather than being mis-decoded.
    const std::size_t room = std::size(params->errorText) - 1;
    std::size_t n = 0;
    for (std::size_t i = 0; i < text.size() && n < room;) {
        const auto c = static_cast<unsigned char>(text[i]);
        char32_t code = u'?';
        std::size_t len = 1;
        if (c < 0x80) {
            code = c;
        } else if ((c & 0xE0) == 0xC0 && i + 1 < text.size() &&
                   (static_cast<unsigned char>(text[i + 1]) & 0xC0) == 0x80) {
            code = static_cast<char32_t>((c & 0x1F) << 6 | (text[i + 1] & 0x3F));
            len = 2;
        } else if ((c & 0xF0) == 0xE0 && i + 2 < text.size() &&
                   (static_cast<unsigned char>(text[i + 1]) & 0xC0) == 0x80 &&
                   (static_cast<unsigned char>(text[i + 2]) & 0xC0) == 0x80) {
            code = static_cast<char32_t>((c & 0x0F) << 12 | (text[i + 1] & 0x3F) << 6 |
                                         (text[i + 2] & 0x3F));
            len = 3;
        }
        if (len > 1 && (code < 0x80 || (code >= 0xD800 && code < 0xE000)))
            code = u'?'; // overlong forms and surrogates
        params->errorText[n++] = static_cast<char16_t>(code);
        i += len;
    }
    params->errorText[n] = u'\0';
}

void clearError(ImageIoParams* params) {
    if (params)
        params->errorText[0] = u'\0';
}

// An all-zero block names no format: the file name's extension decides.
std::uint32_t formatOfPath(const char* path) {
    const char* dot = std::strrchr(path, '.');
    const char* slash = std::strrchr(path, '/');
    if (!dot || (slash && dot < slash))
        return IMAGELIB_FMT_NONE;
    for (const ImageLibExtFmt* row = ImageLib_ExtFmt(); row->ext; ++row)
        if (strcasecmp(row->ext, dot + 1) == 0)
            return row->format;
    return IMAGELIB_FMT_NONE;
}

std::uint32_t optionFlags(const ImageIoParams& p) {
    return readLe32(p.optionFlags);
}

void* decode(std::span<const std::uint8_t> bytes, ImageIoParams* params,
             const DecodeRequest& request, ImageLibFullInfo* full) {
    const Codec* codec = codecForBytes(bytes);
    if (!codec) {
        setError(params, "The file is not an image in a format this program can read.");
        return nullptr;
    }
    if (params)
        params->format = codec->format();
    DecodeResult r = codec->decode(bytes, request);
    if (params)
        params->pageCount = r.pageCount;
    if (!r.dib) {
        setError(params,
                 r.error.empty() ? std::string("The image could not be decoded.") : r.error);
        return nullptr;
    }
    if (full) {
        full->width = r.fullWidth ? r.fullWidth : r.dib.width();
        full->height = r.fullHeight ? r.fullHeight : r.dib.height();
        full->bitCount = r.fullBitCount ? r.fullBitCount : r.dib.bitCount();
    }
    return r.dib.release();
}

void* openFile(const char* path, ImageIoParams* params, const DecodeRequest& request,
               ImageLibFullInfo* full) {
    clearError(params);
    if (!path || !*path) {
        setError(params, "No file name was given.");
        return nullptr;
    }
    FileBytes file;
    std::string error;
    if (!file.read(path, error)) {
        setError(params, error);
        return nullptr;
    }
    return decode(file.bytes(), params, request, full);
}

} // namespace

extern "C" void* ImageLib_Open(const char* path, ImageIoParams* params) {
    DecodeRequest request;
    request.page = params ? std::max(0, params->pageIndex) : 0;
    return openFile(path, params, request, nullptr);
}

extern "C" void* ImageLib_OpenMemory(const void* data, std::size_t size, ImageIoParams* params) {
    clearError(params);
    if (!data || size == 0) {
        setError(params, "The image data is empty.");
        return nullptr;
    }
    DecodeRequest request;
    request.page = params ? std::max(0, params->pageIndex) : 0;
    return decode({static_cast<const std::uint8_t*>(data), size}, params, request, nullptr);
}

extern "C" void* ImageLib_OpenScaled(const char* path, ImageIoParams* params, int boxWidth,
                                     int boxHeight, ImageLibFullInfo* full) {
    startReducedDecode();
    DecodeRequest request;
    request.page = params ? std::max(0, params->pageIndex) : 0;
    request.boxWidth = std::max(0, boxWidth);
    request.boxHeight = std::max(0, boxHeight);
    return openFile(path, params, request, full);
}

extern "C" void ImageLib_Free(void* dib) {
    std::free(dib);
}

extern "C" std::size_t ImageLib_DibSize(const void* dib) {
    const DibView view(dib);
    if (!view.valid())
        return 0;
    std::size_t size = sizeof(BitmapInfoHeader) + view.palette().size() * sizeof(RgbQuad) +
                       view.stride() * static_cast<std::size_t>(view.height());
    if (view.header().compression == kBiBitfields)
        size += 12;
    return size;
}

extern "C" int ImageLib_CanSave(const void* dib, const ImageIoParams* params) {
    if (!params)
        return 0;
    const Codec* codec = codecForFormat(params->format);
    const DibView view(dib);
    return codec && view.valid() && codec->canSave(view) ? 1 : 0;
}

extern "C" int ImageLib_Save(const char* path, const void* dib, ImageIoParams* params) {
    clearError(params);
    if (!params)
        return 0;
    if (!path || !*path) {
        setError(params, "No file name was given.");
        return 0;
    }
    const std::uint32_t format =
        params->format != IMAGELIB_FMT_NONE ? params->format : formatOfPath(path);
    const Codec* codec = codecForFormat(format);
    if (!codec) {
        setError(params, "This program cannot write files in that format.");
        return 0;
    }
    const DibView view(dib);
    if (!view.valid()) {
        setError(params, "There is no valid picture to save.");
        return 0;
    }
    if (!codec->canSave(view)) {
        setError(params, "The picture's colour depth cannot be stored in that format.");
        return 0;
    }
    SaveRequest request;
    request.option1 = params->formatOption;
    request.option2 = optionFlags(*params);
    request.appendPage = (params->optionBytes[0] & IMAGELIB_OPT_APPEND_PAGE) != 0;

    TempFile temp(path);
    if (!temp.ok()) {
        setError(params, "The file could not be created in its folder.");
        return 0;
    }
    std::string error;
    if (request.appendPage && !temp.copyTarget(error)) {
        setError(params, error);
        return 0;
    }
    if (!codec->save(view, request, temp.fd(), error) || !temp.commit(error)) {
        setError(params, error.empty() ? std::string("The file could not be written.") : error);
        return 0;
    }
    return 1;
}

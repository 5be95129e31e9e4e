#include "imagelib/tiff/TiffCodec.h"

#include "imagelib/imagelib.h"
#include "imagelib/tiff/TiffHandle.h"
#include "imagelib/tiff/TiffPageReader.h"
#include "imagelib/tiff/TiffPageWriter.h"
#include "imagelib/tiff/TiffPages.h"

#include <tiffio.h>

namespace imagelib {
namespace {

constexpr char kDamaged[] = "The TIFF file is damaged or incomplete.";

} // namespace

std::uint32_t TiffCodec::format() const {
    return IMAGELIB_FMT_TIFF;
}

bool TiffCodec::probe(std::span<const std::uint8_t> head) const {
    if (head.size() < 4)
        return false;
    // Classic (42) and BigTIFF (43), in either byte order.
    const bool little = head[0] == 'I' && head[1] == 'I' && head[3] == 0;
    const bool big = head[0] == 'M' && head[1] == 'M' && head[2] == 0;
    const std::uint8_t magic = little ? head[2] : head[3];
    return (little || big) && (magic == 42 || magic == 43);
}

DecodeResult TiffCodec::decode(std::span<const std::uint8_t> bytes,
                               const DecodeRequest& request) const {
    DecodeResult r;
    r.pageCount = countTiffPages(bytes);
    if (r.pageCount == 0) {
        r.error = kDamaged;
        return r;
    }
    if (request.page < 0 || request.page >= r.pageCount) {
        r.error = "The TIFF file has no page " + std::to_string(request.page + 1) + ".";
        return r;
    }
    const TiffHandle tif = TiffHandle::openMemory(bytes);
    if (!tif || !TIFFSetDirectory(tif.get(), static_cast<tdir_t>(request.page))) {
        r.error = kDamaged;
        return r;
    }
    readTiffPage(tif.get(), bytes.size(), request, r);
    return r;
}

bool TiffCodec::canSave(const DibView& dib) const {
    // Every depth a packed bitmap has; 16-bit pictures are stored as RGB.
    return dib.valid();
}

bool TiffCodec::save(const DibView& dib, const SaveRequest& request, int fd,
                     std::string& error) const {
    const TiffHandle tif = TiffHandle::openFd(fd, request.appendPage ? "a" : "w");
    if (!tif) {
        error = request.appendPage ? "The file to add a page to is not a TIFF file, or is damaged."
                                   : "The TIFF file could not be created.";
        return false;
    }
    return writeTiffPage(tif.get(), dib, request.option1, error);
}

const Codec& tiffCodec() {
    static const TiffCodec codec;
    return codec;
}

} // namespace imagelib

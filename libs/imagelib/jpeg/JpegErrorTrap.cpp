#include "imagelib/jpeg/JpegErrorTrap.h"

namespace imagelib {
namespace {

JpegErrorTrap& trapOf(j_common_ptr cinfo) {
    return *reinterpret_cast<JpegErrorTrap*>(cinfo->err);
}

[[noreturn]] void leave(j_common_ptr cinfo, int code) {
    JpegErrorTrap& trap = trapOf(cinfo);
    trap.code = code;
    if (code > 0)
        cinfo->err->format_message(cinfo, trap.detail);
    std::longjmp(trap.jump, 1);
}

void errorExit(j_common_ptr cinfo) {
    leave(cinfo, cinfo->err->msg_code);
}

// Running out of data makes libjpeg invent an end marker and go on with grey blocks, only
// warning. A picture with made-up rows is not what the file holds, so that is a failure
// unless every row was already out (a file that merely lacks its end marker). The Huffman
// decoder reads ahead, so for it the end of the data alone proves nothing: it warns again
// when it truly needs a bit that is not there. Progressive and arithmetic decoders never
// complain again, so for them the end of the data is the failure.
void emitMessage(j_common_ptr cinfo, int level) {
    if (level >= 0)
        return; // trace output
    JpegErrorTrap& trap = trapOf(cinfo);
    const int code = cinfo->err->msg_code;
    ++cinfo->err->num_warnings;
    if (trap.completePicture || !cinfo->is_decompressor)
        return;
    if (code == JWRN_JPEG_EOF) {
        trap.sawEndOfData = true;
        const auto* d = reinterpret_cast<j_decompress_ptr>(cinfo);
        if (d->progressive_mode || d->arith_code)
            leave(cinfo, code);
    } else if (code == JWRN_HIT_MARKER) {
        leave(cinfo, code);
    }
}

void outputMessage(j_common_ptr /*cinfo*/) {}

} // namespace

jpeg_error_mgr* JpegErrorTrap::install() {
    jpeg_std_error(&manager);
    manager.error_exit = errorExit;
    manager.emit_message = emitMessage;
    manager.output_message = outputMessage;
    code = 0;
    completePicture = false;
    sawEndOfData = false;
    detail[0] = '\0';
    return &manager;
}

void JpegErrorTrap::fail(j_common_ptr cinfo, int failCode) {
    leave(cinfo, failCode);
}

std::string JpegErrorTrap::decodeError() const {
    if (sawEndOfData)
        return "The JPEG file is damaged or incomplete.";
    switch (code) {
    case JWRN_JPEG_EOF:
    case JWRN_HIT_MARKER:
    case JERR_INPUT_EOF:
        return "The JPEG file is damaged or incomplete.";
    case kTooManyScans:
        return "The JPEG file is damaged (it has too many scans).";
    case JERR_OUT_OF_MEMORY:
        return "There is not enough memory to open the image.";
    case JERR_NO_BACKING_STORE: // our cap on libjpeg's own memory was reached
    case JERR_IMAGE_TOO_BIG:
    case JERR_WIDTH_OVERFLOW:
        return "The image is too large to open.";
    case JERR_BAD_PRECISION:
    case JERR_SOF_UNSUPPORTED:
    case JERR_NOT_COMPILED:
    case JERR_CONVERSION_NOTIMPL:
        return std::string("The JPEG file uses a kind of coding this program cannot read (") +
               detail + ").";
    default:
        return std::string("The JPEG file is damaged (") + detail + ").";
    }
}

std::string JpegErrorTrap::encodeError() const {
    if (code == kWriteFailed)
        return "The file could not be written; the disk may be full.";
    if (code == JERR_OUT_OF_MEMORY)
        return "There is not enough memory to save the image.";
    return std::string("The JPEG file could not be written (") + detail + ").";
}

} // namespace imagelib

#pragma once

#include <csetjmp>
#include <cstdio> // jpeglib.h needs FILE declared first
#include <jerror.h>
#include <jpeglib.h>
#include <string>

namespace imagelib {

// libjpeg reports a fatal error by calling error_exit, which must not return, and prints
// warnings to stderr. The trap turns both into a jump back to the setjmp of the function
// that owns the codec state, with the reason kept for a sentence. It is plain data so that
// it can live in that function's frame across the jump.
struct JpegErrorTrap {
    jpeg_error_mgr manager; // first: libjpeg hands callbacks a pointer to it
    std::jmp_buf jump;
    int code;             // libjpeg's message code, or one of the codes below
    bool completePicture; // every row is out: running out of data now loses nothing
    bool sawEndOfData;    // libjpeg ran past the end of the data and made up the rest
    char detail[JMSG_LENGTH_MAX];

    static constexpr int kTooManyScans = -1;
    static constexpr int kWriteFailed = -2;

    // Sets the trap up and returns what goes into cinfo.err.
    jpeg_error_mgr* install();
    // Leaves through the trap with one of the codes above.
    [[noreturn]] static void fail(j_common_ptr cinfo, int code);

    std::string decodeError() const;
    std::string encodeError() const;
};

} // namespace imagelib

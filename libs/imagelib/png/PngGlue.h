#pragma once

#include <csetjmp>
#include <png.h>

namespace imagelib::pngglue {

// libpng reports errors by longjmp. Runs `step` with the jump target in this frame, so an
// error comes back as false. Nothing with a destructor may be alive inside `step`: the
// jump would skip it.
template <typename Step> bool guarded(png_structp png, Step&& step) {
    if (setjmp(png_jmpbuf(png)))
        return false;
    step();
    return true;
}

// libpng's own handler prints to stderr; ours only jumps. The codec says what went wrong.
[[noreturn]] inline void jumpOnError(png_structp png, png_const_charp /*message*/) {
    png_longjmp(png, 1);
}

inline void ignoreWarning(png_structp /*png*/, png_const_charp /*message*/) {}

} // namespace imagelib::pngglue

#pragma once

#include <cstdint>

// Per-format save options, kept by the image library below the program's settings root.
extern "C" {

// The two 32-bit values the program keeps of a format's options; their meaning is the
// format's own.
struct IoptOptions {
    std::uint32_t value1;
    std::uint32_t value2;
};

// configHome nullptr: the user's XDG config folder.
void iopt_init(const char* configHome, const char* company, const char* app);
void iopt_fini();
IoptOptions iopt_get_default(int format);
// Non-zero when the format has an options dialog.
int iopt_bDlg(int format);

} // extern "C"

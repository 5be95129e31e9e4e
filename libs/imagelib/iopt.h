#pragma once

#include <cstdint>

// Per-format save options, kept by the image library below the program's settings root:
// the key Software\<company>\<app>\iopt, one subkey per format number.
extern "C" {

// The two 32-bit values the program keeps of a format's options. What they mean is the
// format's own (see the codecs): JPEG quality and progressive, PNG compression level + 1,
// TIFF compression, WebP quality and lossless; 0 stands for the format's default.
struct IoptOptions {
    std::uint32_t value1;
    std::uint32_t value2;
};

inline constexpr std::uint32_t IOPT_JPEG_PROGRESSIVE = 0x01;
inline constexpr std::uint32_t IOPT_WEBP_LOSSLESS = 0x01;

// configHome nullptr: the user's XDG config folder.
void iopt_init(const char* configHome, const char* company, const char* app);
void iopt_fini();
// The options saves of this format use unless told otherwise: what the user last chose in
// the format's dialog, else the built-in defaults.
IoptOptions iopt_get_default(int format);
// Remembers options as the format's default (the option dialog calls this on OK).
void iopt_set_default(int format, IoptOptions options);
// Non-zero when the format has an options dialog.
int iopt_bDlg(int format);

} // extern "C"

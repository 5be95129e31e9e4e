#include "imagelib/iopt.h"

#include "imagelib/imagelib.h"

#include <mutex>
#include <string>

namespace {

struct IoptState {
    std::mutex mutex; // guards every field
    bool initialised = false;
    std::string configHome;
    std::string company;
    std::string app;
};

IoptState& state() {
    static IoptState s;
    return s;
}

} // namespace

extern "C" void iopt_init(const char* configHome, const char* company, const char* app) {
    auto& s = state();
    std::lock_guard lock(s.mutex);
    s.configHome = configHome ? configHome : "";
    s.company = company ? company : "";
    s.app = app ? app : "";
    s.initialised = true;
}

extern "C" void iopt_fini() {
    auto& s = state();
    std::lock_guard lock(s.mutex);
    s.initialised = false;
}

extern "C" IoptOptions iopt_get_default(int format) {
    switch (format) {
    case IMAGELIB_FMT_JPEG:
        return {90, 0}; // quality, progressive off
    case IMAGELIB_FMT_PNG:
        return {6, 0}; // zlib level
    case IMAGELIB_FMT_WEBP:
        return {90, 0}; // quality, lossless off
    default:
        return {0, 0};
    }
}

extern "C" int iopt_bDlg(int format) {
    return format == IMAGELIB_FMT_JPEG || format == IMAGELIB_FMT_PNG ||
           format == IMAGELIB_FMT_TIFF || format == IMAGELIB_FMT_WEBP;
}

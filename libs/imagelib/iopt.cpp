#include "imagelib/iopt.h"

#include "imagelib/imagelib.h"
#include "settings/RegistryKey.h"

#include <memory>
#include <mutex>
#include <string>

namespace {

struct IoptState {
    std::mutex mutex; // guards key
    std::unique_ptr<lanmira::settings::RegistryKey> key;
};

IoptState& state() {
    static IoptState s;
    return s;
}

IoptOptions builtIn(int format) {
    switch (format) {
    case IMAGELIB_FMT_JPEG:
        return {90, 0}; // quality, baseline
    case IMAGELIB_FMT_PNG:
        return {7, 0}; // zlib level 6, stored as level + 1
    case IMAGELIB_FMT_TIFF:
        return {5, 0}; // LZW
    case IMAGELIB_FMT_WEBP:
        return {90, 0}; // quality, lossy
    default:
        return {0, 0};
    }
}

std::string section(int format) {
    return std::to_string(format);
}

} // namespace

extern "C" void iopt_init(const char* configHome, const char* company, const char* app) {
    auto& s = state();
    std::lock_guard lock(s.mutex);
    const std::string path =
        std::string("Software\\") + (company ? company : "") + "\\" + (app ? app : "") + "\\iopt";
    s.key = configHome && *configHome
                ? std::make_unique<lanmira::settings::RegistryKey>(path, configHome)
                : std::make_unique<lanmira::settings::RegistryKey>(path);
}

extern "C" void iopt_fini() {
    auto& s = state();
    std::lock_guard lock(s.mutex);
    s.key.reset();
}

extern "C" IoptOptions iopt_get_default(int format) {
    const IoptOptions fallback = builtIn(format);
    auto& s = state();
    std::lock_guard lock(s.mutex);
    if (!s.key || !iopt_bDlg(format))
        return fallback;
    const auto v1 = static_cast<std::uint32_t>(
        s.key->readInt(section(format), "value1", static_cast<std::int32_t>(fallback.value1)));
    const auto v2 = static_cast<std::uint32_t>(
        s.key->readInt(section(format), "value2", static_cast<std::int32_t>(fallback.value2)));
    return {v1, v2};
}

extern "C" void iopt_set_default(int format, IoptOptions options) {
    auto& s = state();
    std::lock_guard lock(s.mutex);
    if (!s.key || !iopt_bDlg(format))
        return;
    s.key->writeInt(section(format), "value1", static_cast<std::int32_t>(options.value1));
    s.key->writeInt(section(format), "value2", static_cast<std::int32_t>(options.value2));
}

extern "C" int iopt_bDlg(int format) {
    return format == IMAGELIB_FMT_JPEG || format == IMAGELIB_FMT_PNG ||
           format == IMAGELIB_FMT_TIFF || format == IMAGELIB_FMT_WEBP;
}

#include "dscap/core/CameraSettings.h"

#include "settings/IniFile.h"
#include "settings/RegistryKey.h"

#include <algorithm>
#include <mutex>
#include <type_traits>

namespace dscap {

using lanmira::settings::IniFile;

namespace {

constexpr const char* kOptionsSection = "options";

// Several devices may save at once; each save is a load-change-write of the whole file.
std::mutex& fileMutex() {
    static std::mutex m;
    return m;
}

// Identifiers hold path characters and maybe brackets; a section name must not.
std::string sectionFor(const std::string& cameraId) {
    static const char* hex = "0123456789ABCDEF";
    std::string out = "camera ";
    for (const unsigned char c : cameraId) {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
            c == '-' || c == '_' || c == '.' || c == ':') {
            out += static_cast<char>(c);
        } else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return out;
}

// Every stored value with its key and range, for both reading and writing.
template <typename Values, typename F> void visitFields(Values& v, F&& f) {
    constexpr long long kU32 = 0xFFFFFFFFll;
    constexpr long long kMaxCoord = 1 << 20;
    f("Resolution", v.resolutionIndex, 0, 255);
    f("AutoExposure", v.autoExposure, 0, 1);
    f("AutoExposureTarget", v.autoExposureTarget, kTargetMin, kTargetMax);
    f("ExposureTime", v.exposureUs, 1, kU32);
    f("Gain", v.gain, 0, 0xFFFF);
    f("Hue", v.hue, kHueMin, kHueMax);
    f("Saturation", v.saturation, kSaturationMin, kSaturationMax);
    f("Brightness", v.brightness, kBrightnessMin, kBrightnessMax);
    f("Contrast", v.contrast, kContrastMin, kContrastMax);
    f("Gamma", v.gamma, kGammaMin, kGammaMax);
    static const char* const lowKeys[4] = {"LevelLowBlue", "LevelLowGreen", "LevelLowRed",
                                           "LevelLowGrey"};
    static const char* const highKeys[4] = {"LevelHighBlue", "LevelHighGreen", "LevelHighRed",
                                            "LevelHighGrey"};
    for (int c = 0; c < 4; ++c) {
        f(lowKeys[c], v.low[c], 0, 255);
        f(highKeys[c], v.high[c], 0, 255);
    }
    f("Monochrome", v.monochrome, 0, 1);
    f("HorizontalFlip", v.horizontalFlip, 0, 1);
    f("VerticalFlip", v.verticalFlip, 0, 1);
    f("Speed", v.speed, 0, 255);
    f("LightSource", v.lightSource, kLightAc60Hz, kLightDc);
    f("Sampling", v.sampling, kSamplingBin, kSamplingSkip);
    f("Temperature", v.temperature, kTemperatureMin, kTemperatureMax);
    f("Tint", v.tint, kTintMin, kTintMax);
    f("WhiteBalanceLeft", v.whiteBalanceRegion.left, 0, kMaxCoord);
    f("WhiteBalanceTop", v.whiteBalanceRegion.top, 0, kMaxCoord);
    f("WhiteBalanceRight", v.whiteBalanceRegion.right, 0, kMaxCoord);
    f("WhiteBalanceBottom", v.whiteBalanceRegion.bottom, 0, kMaxCoord);
    f("ExposureLeft", v.exposureRegion.left, 0, kMaxCoord);
    f("ExposureTop", v.exposureRegion.top, 0, kMaxCoord);
    f("ExposureRight", v.exposureRegion.right, 0, kMaxCoord);
    f("ExposureBottom", v.exposureRegion.bottom, 0, kMaxCoord);
}

} // namespace

CameraSettings::CameraSettings(const std::filesystem::path& configHome, const std::string& company,
                               const std::string& app)
    : file_(lanmira::settings::RegistryKey("Software\\" + company + "\\" + app + "\\dscap",
                                           configHome)
                .file()) {}

std::optional<ControlValues> CameraSettings::load(const std::string& cameraId,
                                                  const ControlValues& defaults) const {
    if (file_.empty())
        return std::nullopt;
    IniFile ini;
    {
        std::lock_guard lock(fileMutex());
        ini = IniFile::load(file_);
    }
    ControlValues v = defaults;
    const std::string section = sectionFor(cameraId);
    bool found = false;
    visitFields(v, [&](const char* key, auto& field, long long min, long long max) {
        const auto text = ini.value(section, key);
        const auto value = text ? IniFile::toInt(*text) : std::nullopt;
        if (!value)
            return;
        field = static_cast<std::remove_reference_t<decltype(field)>>(
            std::clamp<long long>(*value, min, max));
        found = true;
    });
    if (!found)
        return std::nullopt;
    return v;
}

bool CameraSettings::save(const std::string& cameraId, const ControlValues& v) const {
    if (file_.empty())
        return false;
    std::lock_guard lock(fileMutex());
    // A file that is there but cannot be read is the user's: never written over.
    std::optional<IniFile> read = IniFile::read(file_);
    if (!read)
        return false;
    IniFile& ini = *read;
    const std::string section = sectionFor(cameraId);
    ControlValues copy = v;
    visitFields(copy, [&](const char* key, auto& field, long long, long long) {
        ini.setValue(section, key, std::to_string(static_cast<long long>(field)));
    });
    std::error_code ec;
    std::filesystem::create_directories(file_.parent_path(), ec);
    return ini.save(file_);
}

bool CameraSettings::listMonochromeDemo() const {
    if (file_.empty())
        return false;
    std::lock_guard lock(fileMutex());
    const IniFile ini = IniFile::load(file_);
    const auto text = ini.value(kOptionsSection, "MonochromeDemo");
    const auto v = text ? IniFile::toInt(*text) : std::nullopt;
    return v && *v != 0;
}

} // namespace dscap

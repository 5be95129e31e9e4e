#pragma once

#include "dscap/core/ControlValues.h"

#include <filesystem>
#include <optional>
#include <string>

namespace dscap {

// Each camera's values kept in one settings file, a section per camera identifier, so a
// camera opens again as it was left.
class CameraSettings {
public:
    // The file of the key Software\company\app\dscap under the config home.
    CameraSettings(const std::filesystem::path& configHome, const std::string& company,
                   const std::string& app);

    // Values stored for the camera, each clamped to its range; fields never stored keep
    // what `defaults` has. nullopt when nothing is stored for it.
    std::optional<ControlValues> load(const std::string& cameraId,
                                      const ControlValues& defaults) const;
    bool save(const std::string& cameraId, const ControlValues& values) const;

    // Library-wide options: whether the monochrome demo camera is listed.
    bool listMonochromeDemo() const;

    const std::filesystem::path& file() const { return file_; }

private:
    std::filesystem::path file_;
};

} // namespace dscap

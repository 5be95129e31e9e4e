#pragma once

#include <QString>

#include <array>
#include <functional>
#include <vector>

namespace lanmira {

// The groups of the camera control pane, top to bottom.
enum PaneGroup : int {
    kGroupResolution = 0,
    kGroupExposure,
    kGroupWhiteBalance,
    kGroupColourAdjust,
    kGroupLightSource,
    kGroupSpeed,
    kGroupColourMode,
    kGroupFlip,
    kGroupSampling,
    kGroupHistogram,
    kGroupCount
};

// Which groups are folded, as kept in the "CameraPane" settings section: one value per
// group under its number, non-zero = collapsed. The resolution group is always open and
// never stored, so a first start shows it alone.
struct CollapsedGroups {
    using Reader = std::function<int(const QString& key, int def)>;
    using Writer = std::function<void(const QString& key, int value)>;

    std::array<bool, kGroupCount> collapsed{};

    static CollapsedGroups read(const Reader& read);
    void write(const Writer& write) const;
};

// Tells the camera window which regions of interest to show: the white balance region
// while its group is open on a colour camera, the exposure region while the exposure group
// is open. Only changes are reported after the first attach.
class RegionReporter {
public:
    struct Post {
        bool show;
        int region; // 1 white balance, 0 exposure
        friend bool operator==(const Post&, const Post&) = default;
    };

    // Both regions, as a camera is attached.
    std::vector<Post> attached(bool whiteBalanceOpen, bool exposureOpen, bool colour);
    // The regions whose group opened or closed since the last report.
    std::vector<Post> groupsChanged(bool whiteBalanceOpen, bool exposureOpen, bool colour);

private:
    bool m_whiteBalanceCollapsed = true;
    bool m_exposureCollapsed = true;
};

} // namespace lanmira

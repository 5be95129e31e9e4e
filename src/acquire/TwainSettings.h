#pragma once

#include "twain/twain.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace lanmira {

// What the browser frame negotiates with a scanner, from the "Twain" section of the
// settings: the number of pages (-1 all the source has, 0 leave it to the source), the
// pixel type (0 black and white, 1 grey, 2 colour, -1 leave it) and the resolution in dots
// per inch (0 leave it), and whether the source shows its own dialog.
struct TwainSettings {
    int xferCount = -1;
    int pixelType = 2;
    double resolution = 300;
    bool showUi = true;

    using Reader = std::function<int(const char* key, int def)>;
    using Writer = std::function<void(const char* key, int value)>;
    static TwainSettings read(const Reader& read);
    void write(const Writer& write) const;

    // One capability to set, and the question's catalog name when it fails.
    struct Step {
        TW_UINT16 cap;
        TW_UINT16 itemType;
        TW_UINT32 value;
        const char* question;
    };
    // In the order they are asked: transfer count, pixel type, resolution; each only when set.
    std::vector<Step> steps() const;
};

// The resolution as the 32-bit value handed to SetCapability: whole part in the upper 16
// bits, fraction in the lower, rounded half away from zero.
TW_UINT32 twainFixedValue(double value);

} // namespace lanmira

#include "acquire/TwainSettings.h"

#include <algorithm>
#include <cmath>

namespace lanmira {

namespace {

constexpr int kMaxCount = 0x7FFF;
constexpr int kMaxDpi = 9600;

} // namespace

TwainSettings TwainSettings::read(const Reader& read) {
    TwainSettings s;
    s.xferCount = std::clamp(read("XferCount", s.xferCount), -1, kMaxCount);
    const int type = read("PixelType", s.pixelType);
    s.pixelType = type >= 0 && type <= 2 ? type : -1;
    s.resolution = std::clamp(read("Resolution", static_cast<int>(s.resolution)), 0, kMaxDpi);
    s.showUi = read("ShowUI", 1) != 0;
    return s;
}

void TwainSettings::write(const Writer& write) const {
    write("XferCount", xferCount);
    write("PixelType", pixelType);
    write("Resolution", static_cast<int>(resolution));
    write("ShowUI", showUi ? 1 : 0);
}

TW_UINT32 twainFixedValue(double value) {
    // std::lround rounds halves away from zero.
    return static_cast<TW_UINT32>(static_cast<std::int32_t>(std::lround(value * 65536.0)));
}

std::vector<TwainSettings::Step> TwainSettings::steps() const {
    std::vector<Step> out;
    if (xferCount != 0)
        out.push_back({CAP_XFERCOUNT, TWTY_INT16, static_cast<TW_UINT32>(xferCount),
                       "ids_lanmira_twain_xfercount"});
    if (pixelType != -1)
        out.push_back({ICAP_PIXELTYPE, TWTY_UINT16, static_cast<TW_UINT32>(pixelType) & 0xFFFF,
                       "ids_lanmira_twain_pixeltype"});
    if (resolution != 0)
        out.push_back({ICAP_XRESOLUTION, TWTY_FIX32, twainFixedValue(resolution),
                       "ids_lanmira_twain_resolution"});
    return out;
}

} // namespace lanmira

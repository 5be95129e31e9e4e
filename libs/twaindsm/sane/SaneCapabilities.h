#pragma once

#include "sane/ScanPage.h"
#include "twain/twain.h"

namespace twaindsm {

class SaneDevice;

// What the application negotiated, and what the scan dialog changes.
struct SourceSettings {
    TW_INT16 xferCount = -1;
    ScanPage::Kind kind = ScanPage::Kind::Rgb;
    double dpi = 150;
    TW_UINT16 mechanism = TWSX_NATIVE;
    bool indicators = true;
    double left = 0, top = 0, width = 0, height = 0; // millimetres; 0: all the bed
};

// The source's answers to DAT_CAPABILITY for the capabilities a SANE scanner can honour.
// Values are checked against the device; the settings change only on a valid set.
class SaneCapabilities {
public:
    SaneCapabilities(const SaneDevice& device, SourceSettings& settings)
        : m_device(device), m_settings(settings) {}

    // MSG_GET, MSG_GETCURRENT, MSG_GETDEFAULT, MSG_QUERYSUPPORT, MSG_SET and MSG_RESET.
    // `setAllowed` is false outside state 4, where a set or reset is a sequence error.
    TW_UINT16 handle(TW_UINT16 msg, TW_CAPABILITY& cap, bool setAllowed, TW_UINT16& condition);

    static TW_UINT16 pixelTypeOf(ScanPage::Kind kind);

private:
    TW_UINT16 answer(TW_UINT16 msg, TW_CAPABILITY& cap, TW_UINT16& condition);
    TW_UINT16 set(TW_CAPABILITY& cap, TW_UINT16& condition);
    TW_UINT16 reset(TW_CAPABILITY& cap, TW_UINT16& condition);

    const SaneDevice& m_device;
    SourceSettings& m_settings;
};

} // namespace twaindsm

#include "sane/SaneCapabilities.h"

#include "core/CapContainer.h"
#include "sane/SaneDevice.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <malloc.h>

namespace twaindsm {

namespace {

constexpr TW_UINT16 kCaps[] = {CAP_XFERCOUNT,       ICAP_COMPRESSION,   ICAP_PIXELTYPE,
                               ICAP_UNITS,          ICAP_XFERMECH,      CAP_SUPPORTEDCAPS,
                               CAP_INDICATORS,      CAP_UICONTROLLABLE, ICAP_PHYSICALWIDTH,
                               ICAP_PHYSICALHEIGHT, ICAP_XRESOLUTION,   ICAP_YRESOLUTION,
                               ICAP_BITDEPTH};

constexpr double kMmPerInch = 25.4;
constexpr TW_INT32 kSupportGet = 0x0001, kSupportSet = 0x0002, kSupportGetDefault = 0x0004,
                   kSupportGetCurrent = 0x0008, kSupportReset = 0x0010;

bool settable(TW_UINT16 cap) {
    switch (cap) {
    case CAP_XFERCOUNT:
    case ICAP_PIXELTYPE:
    case ICAP_XFERMECH:
    case ICAP_XRESOLUTION:
    case ICAP_YRESOLUTION:
    case ICAP_UNITS:
    case CAP_INDICATORS:
    case ICAP_COMPRESSION:
        return true;
    default:
        return false;
    }
}

ScanPage::Kind kindOf(TW_UINT16 pixelType) {
    return pixelType == TWPT_BW     ? ScanPage::Kind::BlackWhite
           : pixelType == TWPT_GRAY ? ScanPage::Kind::Gray
                                    : ScanPage::Kind::Rgb;
}

TW_UINT16 store(TW_CAPABILITY& cap, const CapContainer& c, TW_UINT16& condition) {
    void* block = c.write();
    if (!block) {
        condition = TWCC_LOWMEMORY;
        return TWRC_FAILURE;
    }
    cap.ConType = c.conType;
    cap.hContainer = block;
    return TWRC_SUCCESS;
}

} // namespace

TW_UINT16 SaneCapabilities::pixelTypeOf(ScanPage::Kind kind) {
    return kind == ScanPage::Kind::BlackWhite ? TWPT_BW
           : kind == ScanPage::Kind::Gray     ? TWPT_GRAY
                                              : TWPT_RGB;
}

TW_UINT16 SaneCapabilities::handle(TW_UINT16 msg, TW_CAPABILITY& cap, bool setAllowed,
                                   TW_UINT16& condition) {
    if (std::find(std::begin(kCaps), std::end(kCaps), cap.Cap) == std::end(kCaps)) {
        condition = TWCC_CAPUNSUPPORTED;
        return TWRC_FAILURE;
    }
    switch (msg) {
    case MSG_GET:
    case MSG_GETCURRENT:
    case MSG_GETDEFAULT:
        return answer(msg, cap, condition);
    case MSG_QUERYSUPPORT: {
        TW_INT32 ops = kSupportGet | kSupportGetCurrent | kSupportGetDefault;
        if (settable(cap.Cap))
            ops |= kSupportSet | kSupportReset;
        return store(cap, CapContainer::oneValue(TWTY_INT32, static_cast<TW_UINT32>(ops)),
                     condition);
    }
    case MSG_SET:
    case MSG_RESET:
        if (!setAllowed) {
            condition = TWCC_SEQERROR;
            return TWRC_FAILURE;
        }
        if (!settable(cap.Cap)) {
            condition = TWCC_CAPBADOPERATION;
            return TWRC_FAILURE;
        }
        return msg == MSG_SET ? set(cap, condition) : reset(cap, condition);
    default:
        condition = TWCC_CAPBADOPERATION;
        return TWRC_FAILURE;
    }
}

TW_UINT16 SaneCapabilities::answer(TW_UINT16 msg, TW_CAPABILITY& cap, TW_UINT16& condition) {
    const bool all = msg == MSG_GET;
    const bool def = msg == MSG_GETDEFAULT;
    CapContainer c;
    switch (cap.Cap) {
    case CAP_XFERCOUNT:
        c = CapContainer::oneValue(TWTY_INT16,
                                   def ? 0xFFFFu : static_cast<TW_UINT16>(m_settings.xferCount));
        break;
    case ICAP_COMPRESSION:
        c = CapContainer::oneValue(TWTY_UINT16, TWCP_NONE);
        break;
    case ICAP_PIXELTYPE: {
        const TW_UINT16 now = def ? TWPT_RGB : pixelTypeOf(m_settings.kind);
        c = CapContainer::oneValue(TWTY_UINT16, now);
        if (all) {
            c.conType = TWON_ENUMERATION;
            c.items.clear();
            for (TW_UINT16 t : {TWPT_BW, TWPT_GRAY, TWPT_RGB})
                if (m_device.supports(kindOf(t))) {
                    if (t == now)
                        c.currentIndex = static_cast<TW_UINT32>(c.items.size());
                    if (t == TWPT_RGB)
                        c.defaultIndex = static_cast<TW_UINT32>(c.items.size());
                    c.items.push_back(t);
                }
        }
        break;
    }
    case ICAP_UNITS:
        c = CapContainer::oneValue(TWTY_UINT16, TWUN_INCHES);
        break;
    case ICAP_XFERMECH:
        c = CapContainer::oneValue(TWTY_UINT16, def ? TWSX_NATIVE : m_settings.mechanism);
        if (all) {
            c.conType = TWON_ENUMERATION;
            c.items = {TWSX_NATIVE, TWSX_FILE, TWSX_MEMORY};
            c.currentIndex = m_settings.mechanism;
        }
        break;
    case CAP_SUPPORTEDCAPS:
        c.conType = TWON_ARRAY;
        c.itemType = TWTY_UINT16;
        c.items.assign(std::begin(kCaps), std::end(kCaps));
        break;
    case CAP_INDICATORS:
        c = CapContainer::oneValue(TWTY_BOOL, def || m_settings.indicators ? 1 : 0);
        break;
    case CAP_UICONTROLLABLE:
        c = CapContainer::oneValue(TWTY_BOOL, 1);
        break;
    case ICAP_PHYSICALWIDTH:
    case ICAP_PHYSICALHEIGHT: {
        const double mm =
            cap.Cap == ICAP_PHYSICALWIDTH ? m_device.bedWidth() : m_device.bedHeight();
        c = CapContainer::oneValue(TWTY_FIX32, fix32Word(mm / kMmPerInch));
        break;
    }
    case ICAP_XRESOLUTION:
    case ICAP_YRESOLUTION: {
        const SaneDevice::Resolutions r = m_device.resolutions();
        const double now = def ? m_device.nearestResolution(150) : m_settings.dpi;
        c = CapContainer::oneValue(TWTY_FIX32, fix32Word(now));
        if (all && !r.list.empty()) {
            c.conType = TWON_ENUMERATION;
            c.items.clear();
            for (double v : r.list) {
                if (v == now)
                    c.currentIndex = static_cast<TW_UINT32>(c.items.size());
                c.items.push_back(fix32Word(v));
            }
        } else if (all && r.max > 0) {
            c.conType = TWON_RANGE;
            c.items = {fix32Word(r.min), fix32Word(r.max), fix32Word(1),
                       fix32Word(m_device.nearestResolution(150)), fix32Word(now)};
        }
        break;
    }
    case ICAP_BITDEPTH:
        c = CapContainer::oneValue(TWTY_UINT16,
                                   m_settings.kind == ScanPage::Kind::BlackWhite ? 1 : 8);
        break;
    }
    return store(cap, c, condition);
}

TW_UINT16 SaneCapabilities::set(TW_CAPABILITY& cap, TW_UINT16& condition) {
    if (!cap.hContainer) {
        condition = TWCC_BADVALUE;
        return TWRC_FAILURE;
    }
    // A container the application made with malloc: its usable size bounds what we read.
    const auto parsed =
        CapContainer::read(cap.ConType, cap.hContainer, malloc_usable_size(cap.hContainer));
    const auto word = parsed ? parsed->current() : std::nullopt;
    if (!word) {
        condition = TWCC_BADVALUE;
        return TWRC_FAILURE;
    }
    const std::int64_t n = capItemToInt(parsed->itemType, *word);
    const auto bad = [&condition] {
        condition = TWCC_BADVALUE;
        return TWRC_FAILURE;
    };
    switch (cap.Cap) {
    case CAP_XFERCOUNT:
        if (n == 0 || n < -1 || n > 0x7FFF)
            return bad();
        m_settings.xferCount = static_cast<TW_INT16>(n);
        return TWRC_SUCCESS;
    case ICAP_PIXELTYPE:
        if (n < TWPT_BW || n > TWPT_RGB || !m_device.supports(kindOf(static_cast<TW_UINT16>(n))))
            return bad();
        m_settings.kind = kindOf(static_cast<TW_UINT16>(n));
        return TWRC_SUCCESS;
    case ICAP_XFERMECH:
        if (n < TWSX_NATIVE || n > TWSX_MEMORY)
            return bad();
        m_settings.mechanism = static_cast<TW_UINT16>(n);
        return TWRC_SUCCESS;
    case ICAP_XRESOLUTION:
    case ICAP_YRESOLUTION: {
        const double dpi = parsed->itemType == TWTY_FIX32 ? fix32Value(*word) : double(n);
        const SaneDevice::Resolutions r = m_device.resolutions();
        if (!(dpi > 0) || (r.max > 0 && (dpi < r.min || dpi > r.max)))
            return bad();
        const double nearest = m_device.nearestResolution(dpi);
        m_settings.dpi = nearest;
        // A resolution the scanner cannot do exactly is answered with the one it will use.
        if (std::abs(nearest - dpi) > 0.01) {
            condition = TWCC_SUCCESS;
            return TWRC_CHECKSTATUS;
        }
        return TWRC_SUCCESS;
    }
    case ICAP_UNITS:
        return n == TWUN_INCHES ? TWRC_SUCCESS : bad();
    case ICAP_COMPRESSION:
        return n == TWCP_NONE ? TWRC_SUCCESS : bad();
    case CAP_INDICATORS:
        m_settings.indicators = n != 0;
        return TWRC_SUCCESS;
    }
    return bad();
}

TW_UINT16 SaneCapabilities::reset(TW_CAPABILITY& cap, TW_UINT16& condition) {
    const SourceSettings defaults;
    switch (cap.Cap) {
    case CAP_XFERCOUNT:
        m_settings.xferCount = defaults.xferCount;
        break;
    case ICAP_PIXELTYPE:
        m_settings.kind = defaults.kind;
        break;
    case ICAP_XFERMECH:
        m_settings.mechanism = defaults.mechanism;
        break;
    case ICAP_XRESOLUTION:
    case ICAP_YRESOLUTION:
        m_settings.dpi = m_device.nearestResolution(defaults.dpi);
        break;
    case CAP_INDICATORS:
        m_settings.indicators = defaults.indicators;
        break;
    default:
        break;
    }
    return answer(MSG_GETCURRENT, cap, condition);
}

} // namespace twaindsm

#include "core/CapContainer.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace twaindsm {

namespace {

TW_UINT32 loadItem(const std::uint8_t* p, TW_UINT16 type) {
    switch (capItemSize(type)) {
    case 1:
        return p[0];
    case 2: {
        TW_UINT16 v;
        std::memcpy(&v, p, 2);
        return v;
    }
    default: {
        TW_UINT32 v;
        std::memcpy(&v, p, 4);
        return v;
    }
    }
}

void storeItem(std::uint8_t* p, TW_UINT16 type, TW_UINT32 word) {
    const std::size_t n = capItemSize(type);
    if (n == 1)
        p[0] = static_cast<std::uint8_t>(word);
    else if (n == 2) {
        const auto v = static_cast<TW_UINT16>(word);
        std::memcpy(p, &v, 2);
    } else
        std::memcpy(p, &word, 4);
}

constexpr std::size_t kListHeader = offsetof(TW_ENUMERATION, ItemList);
constexpr std::size_t kArrayHeader = offsetof(TW_ARRAY, ItemList);

} // namespace

std::size_t capItemSize(TW_UINT16 itemType) {
    switch (itemType) {
    case TWTY_INT8:
    case TWTY_UINT8:
        return 1;
    case TWTY_INT16:
    case TWTY_UINT16:
    case TWTY_BOOL:
        return 2;
    case TWTY_INT32:
    case TWTY_UINT32:
    case TWTY_FIX32:
        return 4;
    default:
        return 0;
    }
}

std::int64_t capItemToInt(TW_UINT16 itemType, TW_UINT32 word) {
    switch (itemType) {
    case TWTY_INT8:
        return static_cast<std::int8_t>(word);
    case TWTY_INT16:
        return static_cast<std::int16_t>(word);
    case TWTY_INT32:
        return static_cast<std::int32_t>(word);
    case TWTY_UINT8:
        return word & 0xFF;
    case TWTY_UINT16:
    case TWTY_BOOL:
        return word & 0xFFFF;
    default:
        return word;
    }
}

TW_UINT32 fix32Word(double value) {
    const auto scaled = static_cast<std::int32_t>(std::lround(value * 65536.0));
    TW_FIX32 fix{static_cast<TW_INT16>(scaled >> 16), static_cast<TW_UINT16>(scaled & 0xFFFF)};
    TW_UINT32 word;
    std::memcpy(&word, &fix, 4);
    return word;
}

double fix32Value(TW_UINT32 word) {
    TW_FIX32 fix;
    std::memcpy(&fix, &word, 4);
    return fix.Whole + fix.Frac / 65536.0;
}

std::optional<TW_UINT32> CapContainer::current() const {
    switch (conType) {
    case TWON_ONEVALUE:
        return items.empty() ? std::nullopt : std::optional(items[0]);
    case TWON_RANGE:
        return items.size() == 5 ? std::optional(items[4]) : std::nullopt;
    case TWON_ENUMERATION:
        return currentIndex < items.size() ? std::optional(items[currentIndex]) : std::nullopt;
    default:
        return std::nullopt;
    }
}

std::optional<CapContainer> CapContainer::read(TW_UINT16 conType, const void* data,
                                               std::size_t size) {
    const auto* p = static_cast<const std::uint8_t*>(data);
    if (!p || size < 2)
        return std::nullopt;
    CapContainer c;
    c.conType = conType;
    std::memcpy(&c.itemType, p, 2);
    const std::size_t itemSize = capItemSize(c.itemType);
    if (itemSize == 0)
        return std::nullopt;
    switch (conType) {
    case TWON_ONEVALUE: {
        if (size < sizeof(TW_ONEVALUE))
            return std::nullopt;
        TW_ONEVALUE one;
        std::memcpy(&one, p, sizeof one);
        c.items = {one.Item};
        return c;
    }
    case TWON_RANGE: {
        if (size < sizeof(TW_RANGE))
            return std::nullopt;
        TW_RANGE r;
        std::memcpy(&r, p, sizeof r);
        c.items = {r.MinValue, r.MaxValue, r.StepSize, r.DefaultValue, r.CurrentValue};
        return c;
    }
    case TWON_ENUMERATION:
    case TWON_ARRAY: {
        const bool isEnum = conType == TWON_ENUMERATION;
        const std::size_t header = isEnum ? kListHeader : kArrayHeader;
        if (size < header)
            return std::nullopt;
        TW_UINT32 count;
        std::memcpy(&count, p + 2, 4);
        // Checked by division, so a huge count cannot wrap the product.
        if (count > (size - header) / itemSize)
            return std::nullopt;
        if (isEnum) {
            std::memcpy(&c.currentIndex, p + 6, 4);
            std::memcpy(&c.defaultIndex, p + 10, 4);
        }
        c.items.reserve(count);
        for (TW_UINT32 i = 0; i < count; ++i)
            c.items.push_back(loadItem(p + header + i * itemSize, c.itemType));
        return c;
    }
    default:
        return std::nullopt;
    }
}

void* CapContainer::write() const {
    const std::size_t itemSize = capItemSize(itemType);
    if (itemSize == 0)
        return nullptr;
    switch (conType) {
    case TWON_ONEVALUE: {
        auto* one = static_cast<TW_ONEVALUE*>(std::calloc(1, sizeof(TW_ONEVALUE)));
        if (one) {
            one->ItemType = itemType;
            one->Item = items.empty() ? 0 : items[0];
        }
        return one;
    }
    case TWON_RANGE: {
        auto* r = static_cast<TW_RANGE*>(std::calloc(1, sizeof(TW_RANGE)));
        if (r && items.size() == 5) {
            r->ItemType = itemType;
            r->MinValue = items[0];
            r->MaxValue = items[1];
            r->StepSize = items[2];
            r->DefaultValue = items[3];
            r->CurrentValue = items[4];
        }
        return r;
    }
    case TWON_ENUMERATION:
    case TWON_ARRAY: {
        const bool isEnum = conType == TWON_ENUMERATION;
        const std::size_t header = isEnum ? kListHeader : kArrayHeader;
        auto* p = static_cast<std::uint8_t*>(std::calloc(1, header + items.size() * itemSize + 1));
        if (!p)
            return nullptr;
        const auto count = static_cast<TW_UINT32>(items.size());
        std::memcpy(p, &itemType, 2);
        std::memcpy(p + 2, &count, 4);
        if (isEnum) {
            std::memcpy(p + 6, &currentIndex, 4);
            std::memcpy(p + 10, &defaultIndex, 4);
        }
        for (std::size_t i = 0; i < items.size(); ++i)
            storeItem(p + header + i * itemSize, itemType, items[i]);
        return p;
    }
    default:
        return nullptr;
    }
}

} // namespace twaindsm

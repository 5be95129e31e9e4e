#include "core/CapContainer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <vector>

using namespace twaindsm;

namespace {

// At most `size` bytes of the written block: never more than it holds.
std::vector<std::uint8_t> bytesOf(const CapContainer& c, std::size_t size) {
    void* block = c.write();
    size = std::min(size, malloc_usable_size(block));
    std::vector<std::uint8_t> out(static_cast<std::uint8_t*>(block),
                                  static_cast<std::uint8_t*>(block) + size);
    std::free(block);
    return out;
}

TEST(CapContainer, EachKindRoundTrips) {
    CapContainer e{TWON_ENUMERATION, TWTY_UINT16, {0, 1, 2}, 2, 1};
    CapContainer a{TWON_ARRAY, TWTY_INT8, {0xFF, 3}, 0, 0};
    CapContainer r{TWON_RANGE,
                   TWTY_FIX32,
                   {fix32Word(1), fix32Word(1200), fix32Word(1), fix32Word(150), fix32Word(300)},
                   0,
                   0};
    CapContainer o = CapContainer::oneValue(TWTY_INT16, 0xFFFF);
    for (const CapContainer* c : {&e, &a, &r, &o}) {
        const auto bytes = bytesOf(*c, 64);
        const auto back = CapContainer::read(c->conType, bytes.data(), bytes.size());
        ASSERT_TRUE(back);
        EXPECT_EQ(back->itemType, c->itemType);
        EXPECT_EQ(back->items, c->items);
        EXPECT_EQ(back->current(), c->current());
    }
    EXPECT_EQ(capItemToInt(TWTY_INT8, a.items[0]), -1);
    EXPECT_EQ(fix32Value(*r.current()), 300);
    EXPECT_FALSE(a.current()); // an array has no current value
}

TEST(CapContainer, ShortOrLyingBlocksAreRefused) {
    CapContainer e{TWON_ENUMERATION, TWTY_UINT32, {1, 2, 3}, 0, 0};
    const auto bytes = bytesOf(e, 14 + 12);
    // One byte short of the last item.
    EXPECT_FALSE(CapContainer::read(TWON_ENUMERATION, bytes.data(), bytes.size() - 1));
    // A count that would wrap a 32-bit product.
    auto lying = bytes;
    const TW_UINT32 huge = 0x40000001;
    std::memcpy(lying.data() + 2, &huge, 4);
    EXPECT_FALSE(CapContainer::read(TWON_ENUMERATION, lying.data(), lying.size()));
    // Strings and frames have no numeric word.
    CapContainer s = CapContainer::oneValue(TWTY_STR32, 0);
    EXPECT_EQ(s.write(), nullptr);
    const std::uint8_t one[6] = {TWTY_FRAME, 0, 1, 0, 0, 0};
    EXPECT_FALSE(CapContainer::read(TWON_ONEVALUE, one, sizeof one));
    EXPECT_FALSE(CapContainer::read(TWON_ONEVALUE, one, 5));
    EXPECT_FALSE(CapContainer::read(99, one, sizeof one));
    // An enumeration whose current index is past its list has no current value.
    CapContainer bad{TWON_ENUMERATION, TWTY_UINT16, {1}, 5, 0};
    EXPECT_FALSE(bad.current());
}

TEST(CapContainer, FixedPointIsTheStandardsLayout) {
    const TW_UINT32 w = fix32Word(-1.5);
    TW_FIX32 fix;
    std::memcpy(&fix, &w, 4);
    EXPECT_EQ(fix.Whole, -2);
    EXPECT_EQ(fix.Frac, 0x8000);
    EXPECT_DOUBLE_EQ(fix32Value(w), -1.5);
    EXPECT_DOUBLE_EQ(fix32Value(fix32Word(25.4)), 25.399993896484375);
}

} // namespace

#pragma once

#include <Qt>

#include <cstdint>

namespace lanmira {

// Which effect a drag over the browser has, from where it started and the keys held.
class DropRules {
public:
    // Key-state bits the table is written in.
    static constexpr std::uint32_t kShift = 4;
    static constexpr std::uint32_t kCtrl = 8;
    static constexpr std::uint32_t kAlt = 32;

    static std::uint32_t keyState(Qt::KeyboardModifiers modifiers);

    // One effect bit (copy 1, move 2, link 4) or 0 for none. `fromThisView`: the drag
    // started in the grid it is over, so only a link can come of it.
    static std::uint32_t dragOverEffect(bool folderShown, bool offersFiles, bool fromThisView,
                                        std::uint32_t keyState);

    static Qt::DropAction action(std::uint32_t effect);
};

} // namespace lanmira

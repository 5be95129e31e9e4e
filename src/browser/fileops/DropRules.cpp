#include "browser/fileops/DropRules.h"

#include "browser/fileops/FileListData.h"

namespace lanmira {

std::uint32_t DropRules::keyState(Qt::KeyboardModifiers modifiers) {
    std::uint32_t keys = 0;
    if (modifiers & Qt::ShiftModifier)
        keys |= kShift;
    if (modifiers & Qt::ControlModifier)
        keys |= kCtrl;
    if (modifiers & Qt::AltModifier)
        keys |= kAlt;
    return keys;
}

std::uint32_t DropRules::dragOverEffect(bool folderShown, bool offersFiles, bool fromThisView,
                                        std::uint32_t keys) {
    if (!folderShown || !offersFiles)
        return effect::kNone;
    const bool ctrlShift = (keys & (kCtrl | kShift)) == (kCtrl | kShift);
    if (fromThisView) {
        // Files cannot be dropped onto their own folder, but a link to them can.
        return (keys & kAlt) || ctrlShift ? effect::kLink : effect::kNone;
    }
    if (ctrlShift)
        return effect::kLink;
    if (keys & kCtrl)
        return effect::kCopy;
    if (keys & kAlt)
        return effect::kLink;
    return effect::kMove;
}

Qt::DropAction DropRules::action(std::uint32_t effectBit) {
    switch (effectBit) {
    case effect::kCopy:
        return Qt::CopyAction;
    case effect::kMove:
        return Qt::MoveAction;
    case effect::kLink:
        return Qt::LinkAction;
    default:
        return Qt::IgnoreAction;
    }
}

} // namespace lanmira

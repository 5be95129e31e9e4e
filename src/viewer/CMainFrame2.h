#pragma once

#include "platform/ModeFrame.h"

namespace lanmira {

// The viewer mode's main window.
class CMainFrame2 final : public ModeFrame {
    Q_OBJECT
public:
    explicit CMainFrame2(FrameHost& host);

    static const MenuResource& menuResource();
};

} // namespace lanmira

#pragma once

#include "platform/ModeFrame.h"

namespace lanmira {

// The browser mode's main window.
class CMainFrame1 final : public ModeFrame {
    Q_OBJECT
public:
    explicit CMainFrame1(FrameHost& host);

    static const MenuResource& menuResource();

Q_SIGNALS:
    // The list of capture devices changed (posted after device notifications).
    void camerasChanged();

protected:
    void customEvent(QEvent* event) override;
};

} // namespace lanmira

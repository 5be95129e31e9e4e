#pragma once

#include "camera/pane/CCameraBaseDlg.h"

class QSlider;

namespace lanmira {

// How fast the camera sends frames, up to what the USB connection carries.
class CCameraSpeedDlg final : public CCameraBaseDlg {
    Q_OBJECT
public:
    static constexpr int kSpeed = 1100;
    static constexpr int kHigh = 1101;
    static constexpr int kLow = 4001;
    static constexpr int kInstruction = 3256;

    explicit CCameraSpeedDlg(QObject* owner, QWidget* parent = nullptr);

    static const char* dialogName();
    static std::vector<int> controlIds() { return {kHigh, kLow, kInstruction}; }

    void UpdateControls() override;

private:
    QSlider* m_speed;
};

} // namespace lanmira

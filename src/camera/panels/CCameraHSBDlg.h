#pragma once

#include "camera/pane/CCameraBaseDlg.h"

#include <array>

class QLabel;
class QPushButton;
class QSlider;

namespace lanmira {

// Hue, saturation, brightness, contrast and gamma, each sent to the camera as the slider
// position (gamma in hundredths). Colour cameras only.
class CCameraHSBDlg final : public CCameraBaseDlg {
    Q_OBJECT
public:
    static constexpr int kHue = 1125;
    static constexpr int kSaturation = 1126;
    static constexpr int kBrightness = 1127;
    static constexpr int kDefaults = 1128;
    static constexpr int kContrast = 1135;
    static constexpr int kGamma = 1136;

    explicit CCameraHSBDlg(QObject* owner, QWidget* parent = nullptr);

    static const char* dialogName();
    static std::vector<int> controlIds();

    void InitControls() override;
    void UpdateControls() override;

    void restoreDefaults();

private:
    enum Row { Hue, Saturation, Brightness, Contrast, Gamma, RowCount };
    bool usable() const { return attached() && colour(); }
    void show(int row, int value);
    void write(int row, int value);

    std::array<QSlider*, RowCount> m_sliders{};
    std::array<QLabel*, RowCount> m_texts{};
    QPushButton* m_defaults;
};

} // namespace lanmira

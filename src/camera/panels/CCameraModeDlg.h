#pragma once

#include "camera/pane/CCameraBaseDlg.h"

class QRadioButton;

namespace lanmira {

// Colour or grey output of a colour camera; a monochrome camera shows grey, fixed.
class CCameraModeDlg final : public CCameraBaseDlg {
    Q_OBJECT
public:
    static constexpr int kColour = 1144;
    static constexpr int kGrey = 1145;

    explicit CCameraModeDlg(QObject* owner, QWidget* parent = nullptr);

    static const char* dialogName();
    static std::vector<int> controlIds() { return {kColour, kGrey}; }

    void UpdateControls() override;

private:
    QRadioButton* m_colour;
    QRadioButton* m_grey;
};

} // namespace lanmira

#pragma once

#include "camera/pane/CCameraBaseDlg.h"

class QCheckBox;

namespace lanmira {

// Mirrors the picture left to right and top to bottom.
class CCameraFlipDlg final : public CCameraBaseDlg {
    Q_OBJECT
public:
    static constexpr int kHorizontal = 1148;
    static constexpr int kVertical = 1149;

    explicit CCameraFlipDlg(QObject* owner, QWidget* parent = nullptr);

    static const char* dialogName();
    static std::vector<int> controlIds() { return {kHorizontal, kVertical}; }

    void UpdateControls() override;

private:
    QCheckBox* m_horizontal;
    QCheckBox* m_vertical;
};

} // namespace lanmira

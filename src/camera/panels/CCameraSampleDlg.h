#pragma once

#include "camera/pane/CCameraBaseDlg.h"

class QRadioButton;

namespace lanmira {

// Whether the sensor bins or skips pixels at the smaller resolutions.
class CCameraSampleDlg final : public CCameraBaseDlg {
    Q_OBJECT
public:
    static constexpr int kBin = 1146;
    static constexpr int kSkip = 1147;

    explicit CCameraSampleDlg(QObject* owner, QWidget* parent = nullptr);

    static const char* dialogName();
    static std::vector<int> controlIds() { return {kBin, kSkip}; }

    void UpdateControls() override;

private:
    QRadioButton* m_bin;
    QRadioButton* m_skip;
};

} // namespace lanmira

#pragma once

#include <QDialog>

#include <vector>

class QSpinBox;

namespace lanmira {

// "IDD_ZOOMCUSTOM": a zoom percentage. The spin box reaches down to 5, below the 10 that OK
// accepts; a value under 10 is refused with the range message.
class CZoomCustomDlg final : public QDialog {
    Q_OBJECT
public:
    static constexpr int kSpinMin = 5;
    static constexpr int kMin = 10;
    static constexpr int kMax = 400;

    CZoomCustomDlg(int percent, QWidget* parent = nullptr);
    // The accepted value, clamped to 10..400.
    int percent() const;

    void accept() override;

    // The dialog name and control ids whose texts come from the catalogs.
    static const char* dialogName();
    static std::vector<int> controlIds();

private:
    QSpinBox* m_edit; // control 1061 with its up-down control 1058
};

} // namespace lanmira

#pragma once

#include "platform/NumberDialog.h"

#include <vector>

namespace lanmira {

// "IDD_ZOOMCUSTOM": a zoom percentage. The spin box reaches down to 5, below the 10 that OK
// accepts; a value under 10 is refused with the range message.
class CZoomCustomDlg final : public NumberDialog {
    Q_OBJECT
public:
    static constexpr int kSpinMin = 5;
    static constexpr int kMin = 10;
    static constexpr int kMax = 400;

    CZoomCustomDlg(int percent, QWidget* parent = nullptr);
    // The accepted value, clamped to 10..400.
    int percent() const;

    // The dialog name and control ids whose texts come from the catalogs.
    static const char* dialogName();
    static std::vector<int> controlIds();
};

} // namespace lanmira

#include "viewer/CZoomCustomDlg.h"

#include <QSpinBox>

#include <algorithm>

namespace lanmira {
namespace {
constexpr char kDialog[] = "IDD_ZOOMCUSTOM";
constexpr int kLabel = 1060;
constexpr int kEdit = 1061;
} // namespace

const char* CZoomCustomDlg::dialogName() {
    return kDialog;
}

std::vector<int> CZoomCustomDlg::controlIds() {
    return {0, 1, 2, kLabel};
}

CZoomCustomDlg::CZoomCustomDlg(int percent, QWidget* parent)
    // Below the accepted minimum on purpose: OK refuses what the arrows can still reach.
    : NumberDialog({kDialog, kLabel, kEdit, kSpinMin, kMin, kMax}, percent, parent) {
    setObjectName(QStringLiteral("CZoomCustomDlg"));
    edit()->setObjectName(QStringLiteral("percent"));
}

int CZoomCustomDlg::percent() const {
    return std::clamp(number(), kMin, kMax);
}

} // namespace lanmira

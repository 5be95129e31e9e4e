#include "app/CSlideDlg.h"

#include <QSpinBox>

#include <algorithm>

namespace lanmira {
namespace {
constexpr char kDialog[] = "IDD_SLIDE";
constexpr int kLabel = 1056;
constexpr int kEdit = 1057;
} // namespace

const char* CSlideDlg::dialogName() {
    return kDialog;
}

std::vector<int> CSlideDlg::controlIds() {
    return {0, 1, 2, kLabel};
}

CSlideDlg::CSlideDlg(unsigned seconds, QWidget* parent)
    : NumberDialog({kDialog, kLabel, kEdit, kMin, kMin, kMax},
                   static_cast<int>(std::min<unsigned>(seconds, kMax)), parent) {
    setObjectName(QStringLiteral("CSlideDlg"));
    edit()->setObjectName(QStringLiteral("delay"));
}

unsigned CSlideDlg::seconds() const {
    return static_cast<unsigned>(number());
}

} // namespace lanmira

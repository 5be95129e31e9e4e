#pragma once

#include "platform/NumberDialog.h"

#include <vector>

namespace lanmira {

// "IDD_SLIDE": the slide show's delay in whole seconds, 1..3600.
class CSlideDlg final : public NumberDialog {
    Q_OBJECT
public:
    static constexpr int kMin = 1;
    static constexpr int kMax = 3600;

    CSlideDlg(unsigned seconds, QWidget* parent = nullptr);
    unsigned seconds() const;

    // The dialog name and control ids whose texts come from the catalogs.
    static const char* dialogName();
    static std::vector<int> controlIds();
};

} // namespace lanmira

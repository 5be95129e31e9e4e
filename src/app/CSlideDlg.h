#pragma once

#include <QDialog>

#include <vector>

class QSpinBox;

namespace lanmira {

// "IDD_SLIDE": the slide show's delay in whole seconds, 1..3600.
class CSlideDlg final : public QDialog {
    Q_OBJECT
public:
    static constexpr int kMin = 1;
    static constexpr int kMax = 3600;

    CSlideDlg(unsigned seconds, QWidget* parent = nullptr);
    unsigned seconds() const;

    void accept() override;

    // The dialog name and control ids whose texts come from the catalogs.
    static const char* dialogName();
    static std::vector<int> controlIds();

private:
    QSpinBox* m_edit; // control 1057 with its up-down control 1058
};

} // namespace lanmira

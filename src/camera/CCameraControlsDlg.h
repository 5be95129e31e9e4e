#pragma once

#include "dscap/dscap.h"

#include <QDialog>

#include <functional>
#include <vector>

class QFormLayout;

namespace lanmira {

// The camera's own controls that the panes do not cover (focus, sharpness, backlight...),
// one row each, sent to the camera as they change.
class CCameraControlsDlg : public QDialog {
public:
    CCameraControlsDlg(dscap_handle camera, const QString& title, QWidget* parent = nullptr);

    // The number of control rows shown.
    int rowCount() const { return static_cast<int>(m_rows.size()); }

private:
    struct Row {
        std::uint32_t id;
        std::int32_t def;
        std::function<void(std::int32_t)> show; // puts a value on the row's widget
    };
    void addRow(QFormLayout* form, const dscap_control& control);
    void restoreDefaults();

    dscap_handle m_camera;
    std::vector<Row> m_rows;
};

} // namespace lanmira

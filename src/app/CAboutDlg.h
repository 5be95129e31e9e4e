#pragma once

#include <QDialog>

#include <vector>

namespace lanmira {

// The About box: product name, version, build date, and the update text the profile gave.
class CAboutDlg final : public QDialog {
    Q_OBJECT
public:
    explicit CAboutDlg(QWidget* parent = nullptr);

    static QString buildDate();
    // The dialog name and control ids whose texts come from the catalogs.
    static const char* dialogName();
    static std::vector<int> controlIds();
};

} // namespace lanmira

#pragma once

#include <QDialog>

namespace lanmira {

// The About box: product name, version, build date, and the update text the profile gave.
class CAboutDlg final : public QDialog {
    Q_OBJECT
public:
    explicit CAboutDlg(QWidget* parent = nullptr);

    static QString buildDate();
};

} // namespace lanmira

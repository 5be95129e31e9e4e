#pragma once

#include <QString>

class QWidget;

namespace lanmira {

// The application's Open dialog: the image library's formats, and a preview of the selected
// file when the "Preview" setting is on.
class COpenFileDlg {
public:
    // The chosen path, or empty when cancelled.
    static QString run(QWidget* parent, bool preview);
};

} // namespace lanmira

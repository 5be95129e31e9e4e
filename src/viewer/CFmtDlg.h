#pragma once

#include "viewer/FormatListLogic.h"

#include <QDialog>

#include <vector>

namespace lanmira {

class CFmtListCtrl;

// "IDD_IMAGEFMT": which image formats the browser lists and which open with this program.
// The dialog edits its own copy of the words; the caller applies them after OK.
class CFmtDlg final : public QDialog {
    Q_OBJECT
public:
    CFmtDlg(const QString& appName, const FormatListLogic::Words& words, QWidget* parent = nullptr);

    const FormatListLogic::Words& words() const;
    CFmtListCtrl* list() const { return m_list; }

    static const char* dialogName();
    static std::vector<int> controlIds();

private:
    CFmtListCtrl* m_list;
};

} // namespace lanmira

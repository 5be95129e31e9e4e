#pragma once

#include "viewer/FormatListLogic.h"

#include <QTableView>

namespace lanmira {

class FmtListModel;
class FmtRowDelegate;

// The list of the file format dialog: one row per image format with its name, its
// extensions and three boxes (listed in the browser, opened with this program, kept).
// A press on a box toggles that bit of the row's format word and still selects the row;
// Space toggles the box of the current cell.
class CFmtListCtrl final : public QTableView {
    Q_OBJECT
public:
    CFmtListCtrl(const QString& appName, const FormatListLogic::Words& words,
                 QWidget* parent = nullptr);

    // The column titles: "ids_lanmira_fmtcolumn0".."4", the last one naming the program
    // when an app name is given.
    static QStringList columnTitles(const QString& appName);

    FmtListModel* fmtModel() const { return m_model; }
    const FormatListLogic::Words& words() const;
    void setDefaults();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    FmtListModel* m_model;
    FmtRowDelegate* m_delegate;
};

} // namespace lanmira

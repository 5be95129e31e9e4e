#pragma once

#include "viewer/FormatListLogic.h"

#include <QAbstractTableModel>
#include <QStringList>

#include <vector>

namespace lanmira {

// The file format list's rows and its own copy of the sixteen format words. Texts are made
// when the view asks for them; the three box columns report their bit as a check state,
// which is what assistive tools read.
class FmtListModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    FmtListModel(std::vector<FormatListLogic::Row> rows, const FormatListLogic::Words& words,
                 QStringList titles, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    std::uint32_t formatOfRow(int row) const;
    bool ticked(int row, int bit) const;
    // Toggles a bit of the word of the row's format and redraws the row.
    void toggle(int row, int bit);
    // Every word back to 5.
    void setDefaults();
    const FormatListLogic::Words& words() const { return m_logic.words(); }

private:
    std::vector<FormatListLogic::Row> m_rows;
    FormatListLogic m_logic;
    QStringList m_titles;
};

} // namespace lanmira

#include "viewer/FmtListModel.h"

namespace lanmira {

FmtListModel::FmtListModel(std::vector<FormatListLogic::Row> rows,
                           const FormatListLogic::Words& words, QStringList titles, QObject* parent)
    : QAbstractTableModel(parent), m_rows(std::move(rows)), m_logic(words),
      m_titles(std::move(titles)) {}

int FmtListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int FmtListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : FormatListLogic::ColumnCount;
}

std::uint32_t FmtListModel::formatOfRow(int row) const {
    return row >= 0 && row < rowCount() ? m_rows[static_cast<std::size_t>(row)].format : 0;
}

bool FmtListModel::ticked(int row, int bit) const {
    return row >= 0 && row < rowCount() && m_logic.ticked(formatOfRow(row), bit);
}

QVariant FmtListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const auto& row = m_rows[static_cast<std::size_t>(index.row())];
    const int column = index.column();
    if (column < FormatListLogic::Listed) {
        if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
            return {};
        return column == FormatListLogic::Name ? row.name : FormatListLogic::extensions(row.format);
    }
    const int bit = column - FormatListLogic::Listed;
    if (role == Qt::CheckStateRole)
        return ticked(index.row(), bit) ? Qt::Checked : Qt::Unchecked;
    if (role == Qt::AccessibleTextRole)
        return m_titles.value(column);
    return {};
}

QVariant FmtListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::DisplayRole)
        return m_titles.value(section);
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(Qt::Alignment(FormatListLogic::centred(section)
                                                     ? Qt::AlignCenter
                                                     : Qt::AlignLeft | Qt::AlignVCenter));
    return {};
}

void FmtListModel::toggle(int row, int bit) {
    if (row < 0 || row >= rowCount() || !m_logic.toggle(formatOfRow(row), bit))
        return;
    Q_EMIT dataChanged(index(row, 0), index(row, FormatListLogic::ColumnCount - 1));
}

void FmtListModel::setDefaults() {
    m_logic.setDefaults();
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, FormatListLogic::ColumnCount - 1));
}

} // namespace lanmira

#include "viewer/CFmtListCtrl.h"

#include "i18n/i18n.h"
#include "platform/TextFormat.h"
#include "viewer/FmtListModel.h"
#include "viewer/FmtRowDelegate.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>

#include <array>
#include <cstdio>

namespace lanmira {

QStringList CFmtListCtrl::columnTitles(const QString& appName) {
    QStringList titles;
    for (int c = 0; c < FormatListLogic::ColumnCount; ++c) {
        char name[32];
        std::snprintf(name, sizeof name, "ids_lanmira_fmtcolumn%d", c);
        titles << i18n_stringW(name);
    }
    // The same name is the viewer's "untitled" text in catalogs that take no argument: a
    // text without a place for the name would title the column wrongly.
    const QString named = i18n_stringW("ids_lanmira_savefile");
    if (!appName.isEmpty() && named.contains(QStringLiteral("%s")))
        titles[FormatListLogic::Kept] = formatText(named, {appName});
    return titles;
}

CFmtListCtrl::CFmtListCtrl(const QString& appName, const FormatListLogic::Words& words,
                           QWidget* parent)
    : QTableView(parent), m_model(new FmtListModel(FormatListLogic::describedRows(), words,
                                                   columnTitles(appName), this)),
      m_delegate(new FmtRowDelegate(this)) {
    setObjectName(QStringLiteral("CFmtListCtrl"));
    setModel(m_model);
    setItemDelegate(m_delegate);
    setShowGrid(true);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setWordWrap(false);
    setTabKeyNavigation(false);
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(FormatListLogic::kBoxSize + 6);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setStretchLastSection(false);
    for (int c = 0; c < FormatListLogic::ColumnCount; ++c)
        setColumnWidth(c, FormatListLogic::columnWidth(c));
}

const FormatListLogic::Words& CFmtListCtrl::words() const {
    return m_model->words();
}

void CFmtListCtrl::setDefaults() {
    m_model->setDefaults();
    viewport()->update();
}

void CFmtListCtrl::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        const QPoint at = event->position().toPoint();
        const QModelIndex hit = indexAt(at);
        if (hit.isValid()) {
            const int row = hit.row();
            const std::array<QRect, 3> cells = {
                visualRect(m_model->index(row, FormatListLogic::Listed)),
                visualRect(m_model->index(row, FormatListLogic::Associated)),
                visualRect(m_model->index(row, FormatListLogic::Kept))};
            const int bit = FormatListLogic::bitAt(at, cells);
            if (bit >= 0)
                m_model->toggle(row, bit);
        }
    }
    // Always passed on, so the row is also selected.
    QTableView::mousePressEvent(event);
}

void CFmtListCtrl::keyPressEvent(QKeyEvent* event) {
    const QModelIndex current = currentIndex();
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier &&
        current.isValid() && current.column() >= FormatListLogic::Listed) {
        m_model->toggle(current.row(), current.column() - FormatListLogic::Listed);
        return;
    }
    QTableView::keyPressEvent(event);
}

} // namespace lanmira

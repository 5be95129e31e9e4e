#include "camera/pane/CTaskPane.h"

#include "camera/pane/CTaskGroup.h"

#include <QScrollBar>
#include <QVBoxLayout>

namespace lanmira {

CTaskPane::CTaskPane(QWidget* parent) : QScrollArea(parent) {
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setFrameShape(QFrame::NoFrame);
    auto* content = new QWidget;
    content->setObjectName(QStringLiteral("taskPaneContent"));
    m_column = new QVBoxLayout(content);
    m_column->setContentsMargins(2, 2, 2, 2);
    m_column->setSpacing(4);
    m_column->addStretch(1);
    setWidget(content);
}

int CTaskPane::addGroup(const QString& caption, const QIcon& icon, QWidget* body) {
    const int index = groupCount();
    auto* g = new CTaskGroup(caption, icon, body, widget());
    g->setObjectName(QStringLiteral("group%1").arg(index));
    m_column->insertWidget(m_column->count() - 1, g);
    m_groups.push_back(g);
    connect(g, &CTaskGroup::toggled, this,
            [this, index](bool collapsed) { Q_EMIT groupToggled(index, collapsed); });
    return index;
}

} // namespace lanmira

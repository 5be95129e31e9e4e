#include "camera/pane/CTaskGroup.h"

#include <QToolButton>
#include <QVBoxLayout>

namespace lanmira {

CTaskGroup::CTaskGroup(const QString& caption, const QIcon& icon, QWidget* body, QWidget* parent)
    : QWidget(parent), m_caption(new QToolButton(this)), m_body(body) {
    m_caption->setText(caption);
    m_caption->setIcon(icon);
    m_caption->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_caption->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_caption->setCheckable(true);
    m_caption->setAutoRaise(true);
    m_caption->setFocusPolicy(Qt::StrongFocus);
    m_caption->setAccessibleName(caption);
    QFont bold = m_caption->font();
    bold.setBold(true);
    m_caption->setFont(bold);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 2);
    layout->setSpacing(0);
    layout->addWidget(m_caption);
    layout->addWidget(body);
    connect(m_caption, &QToolButton::clicked, this, [this] {
        setCollapsed(!m_collapsed);
        Q_EMIT toggled(m_collapsed);
    });
    showState();
}

void CTaskGroup::setCollapsed(bool collapsed) {
    m_collapsed = collapsed;
    showState();
}

void CTaskGroup::showState() {
    m_body->setVisible(!m_collapsed);
    m_caption->setChecked(!m_collapsed);
}

} // namespace lanmira

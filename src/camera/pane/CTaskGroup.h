#pragma once

#include <QIcon>
#include <QWidget>

class QToolButton;

namespace lanmira {

// One foldable group of a task pane: a caption button with an icon over a single body
// widget. The caption is a tool button, so the group folds from the keyboard too.
class CTaskGroup final : public QWidget {
    Q_OBJECT
public:
    CTaskGroup(const QString& caption, const QIcon& icon, QWidget* body, QWidget* parent = nullptr);

    bool collapsed() const { return m_collapsed; }
    void setCollapsed(bool collapsed);
    QWidget* body() const { return m_body; }
    QToolButton* captionButton() const { return m_caption; }

Q_SIGNALS:
    // The user folded or unfolded the group.
    void toggled(bool collapsed);

private:
    void showState();

    QToolButton* m_caption;
    QWidget* m_body;
    bool m_collapsed = false;
};

} // namespace lanmira

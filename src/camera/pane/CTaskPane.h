#pragma once

#include <QIcon>
#include <QScrollArea>

#include <vector>

class QVBoxLayout;

namespace lanmira {

class CTaskGroup;

// A column of foldable groups that scrolls when they do not fit and gives its groups the
// pane's full width, so the panels inside follow the dock as it is resized.
class CTaskPane final : public QScrollArea {
    Q_OBJECT
public:
    explicit CTaskPane(QWidget* parent = nullptr);

    // Adds a group at the bottom and returns its number.
    int addGroup(const QString& caption, const QIcon& icon, QWidget* body);
    int groupCount() const { return static_cast<int>(m_groups.size()); }
    CTaskGroup* group(int index) const { return m_groups.at(static_cast<std::size_t>(index)); }

Q_SIGNALS:
    void groupToggled(int index, bool collapsed);

private:
    QVBoxLayout* m_column;
    std::vector<CTaskGroup*> m_groups;
};

} // namespace lanmira

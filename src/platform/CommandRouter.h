#pragma once

#include "platform/CommandTarget.h"

#include <QObject>

#include <map>
#include <vector>

class QAction;
class QMenu;
class QTimer;
class QWidget;

namespace lanmira {

// Owns a window's QActions, one per command id, and routes them through the window's
// chain of targets. States are recomputed when a menu opens, after every command, on
// request and while the window is active, so menu items, buttons and shortcuts agree.
class CommandRouter final : public QObject {
    Q_OBJECT
public:
    explicit CommandRouter(QWidget* window);

    // In routing order, first asked first; the router does not own them.
    void setTargets(std::vector<CommandTarget*> targets);

    // The action of a command, made on first use and added to the window so that its
    // shortcut works wherever the focus is inside the window.
    QAction* action(int id);
    bool hasAction(int id) const { return m_actions.contains(id); }

    CommandState query(int id) const;
    // Runs the command if a target handles it and it is enabled now.
    bool dispatch(int id);
    void updateActions();
    void watchMenu(QMenu* menu);

private:
    QWidget* m_window;
    std::vector<CommandTarget*> m_targets;
    std::map<int, QAction*> m_actions;
    QTimer* m_idleUpdate;
};

} // namespace lanmira

#include "platform/CommandRouter.h"

#include <QAction>
#include <QMenu>
#include <QTimer>
#include <QWidget>

namespace lanmira {
namespace {
constexpr int kIdleUpdateMs = 250;
}

CommandRouter::CommandRouter(QWidget* window)
    : QObject(window), m_window(window), m_idleUpdate(new QTimer(this)) {
    // Toolbar buttons have no "about to show"; refresh them while the window is in use.
    m_idleUpdate->setInterval(kIdleUpdateMs);
    connect(m_idleUpdate, &QTimer::timeout, this, [this] {
        if (m_window->isVisible() && m_window->isActiveWindow())
            updateActions();
    });
    m_idleUpdate->start();
}

void CommandRouter::setTargets(std::vector<CommandTarget*> targets) {
    m_targets = std::move(targets);
    updateActions();
}

QAction* CommandRouter::action(int id) {
    if (const auto it = m_actions.find(id); it != m_actions.end())
        return it->second;
    auto* a = new QAction(m_window);
    a->setData(id);
    a->setShortcutContext(Qt::WindowShortcut);
    connect(a, &QAction::triggered, this, [this, id] { dispatch(id); });
    m_window->addAction(a);
    m_actions.emplace(id, a);
    const CommandState s = query(id);
    a->setEnabled(s.enabled);
    a->setCheckable(s.checkable);
    a->setChecked(s.checked);
    return a;
}

CommandState CommandRouter::query(int id) const {
    CommandState state;
    for (CommandTarget* t : m_targets) {
        if (t->onUpdateCommand(id, state))
            return state;
        state = {};
    }
    state.enabled = false;
    return state;
}

bool CommandRouter::dispatch(int id) {
    // A shortcut may fire before the periodic update caught a state change: ask again.
    if (!query(id).enabled) {
        updateActions();
        return false;
    }
    bool handled = false;
    for (CommandTarget* t : m_targets) {
        if (t->onCommand(id)) {
            handled = true;
            break;
        }
    }
    updateActions();
    return handled;
}

void CommandRouter::updateActions() {
    for (auto& [id, a] : m_actions) {
        const CommandState s = query(id);
        if (a->isEnabled() != s.enabled)
            a->setEnabled(s.enabled);
        if (a->isCheckable() != s.checkable)
            a->setCheckable(s.checkable);
        if (s.checkable && a->isChecked() != s.checked)
            a->setChecked(s.checked);
    }
}

void CommandRouter::watchMenu(QMenu* menu) {
    connect(menu, &QMenu::aboutToShow, this, &CommandRouter::updateActions);
}

} // namespace lanmira

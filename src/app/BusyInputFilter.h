#pragma once

#include <QObject>

class QWidget;

namespace lanmira {

// While the program is busy with a long operation that keeps the event loop running, the
// user's mouse and keys (except Escape, which may cancel it) and the window manager's close
// button are dropped; painting, timers and the program's own messages go on.
class BusyInputFilter final : public QObject {
    Q_OBJECT
public:
    explicit BusyInputFilter(QObject* parent = nullptr);

    void setBusy(bool busy) { m_busy = busy; }
    bool busy() const { return m_busy; }
    // Closes a window the program itself wants closed, busy or not. (A close request reaches
    // a top-level window through the window system either way, so the filter cannot tell
    // the two apart by the event.)
    bool closeWindow(QWidget* window);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool m_busy = false;
    bool m_programClose = false;
};

} // namespace lanmira

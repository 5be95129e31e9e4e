#pragma once

#include <QWidget>

class QToolButton;

namespace lanmira {

// A pair of up and down arrows with a position of its own, like a spin control without a
// buddy: it tells its owner of each step and leaves any edit beside it to the owner.
class CSpinButton final : public QWidget {
    Q_OBJECT
public:
    explicit CSpinButton(QWidget* parent = nullptr);

    void setRange(int minimum, int maximum);
    int position() const { return m_position; }
    void setPosition(int position);

Q_SIGNALS:
    // After the position moved one step (delta +1 or -1, also when it stood at a limit).
    void stepped(int delta);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void step(int delta);

    QToolButton* m_up;
    QToolButton* m_down;
    int m_min = 0;
    int m_max = 100;
    int m_position = 0;
};

} // namespace lanmira

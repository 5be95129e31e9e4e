#pragma once

#include <QPushButton>

namespace lanmira {

// Shows the exposure time in force as a flat, right-aligned label, and turns into a push
// button while the mouse is over it or it has the keyboard focus, so it is seen to open
// the time dialog.
class CExposureButton final : public QPushButton {
    Q_OBJECT
public:
    explicit CExposureButton(QWidget* parent = nullptr);

    bool showsAsButton() const { return m_hover || hasFocus(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    bool m_hover = false;
};

} // namespace lanmira

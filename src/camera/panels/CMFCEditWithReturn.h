#pragma once

#include <QLineEdit>
#include <QPointer>

namespace lanmira {

// A short number edit that posts a message to its owner when Return is pressed, so a typed
// level takes effect only once the user has finished typing it.
class CMFCEditWithReturn final : public QLineEdit {
    Q_OBJECT
public:
    explicit CMFCEditWithReturn(QWidget* parent = nullptr);

    void setReturnMessage(QObject* target, int message);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QPointer<QObject> m_target;
    int m_message = 0;
};

} // namespace lanmira

#include "camera/pane/CCameraBaseDlg.h"

#include "dscap/ICameraControl.h"
#include "i18n/i18n.h"
#include "platform/PostedMessage.h"

#include <QAbstractButton>
#include <QLabel>
#include <QResizeEvent>
#include <QSignalBlocker>
#include <QSlider>

#include <algorithm>

namespace lanmira {

CCameraBaseDlg::CCameraBaseDlg(QObject* owner, int templateWidth, int templateHeight,
                               QWidget* parent)
    : QWidget(parent), m_template{0, 0, templateWidth, templateHeight}, m_owner(owner) {
    setMinimumWidth(templateWidth);
    setFixedHeight(templateHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void CCameraBaseDlg::placeWidget(QWidget* widget, int id, const TemplateRect& rect, int anchor) {
    widget->setParent(this);
    widget->setGeometry(rect.left, rect.top, rect.width(), rect.height());
    widget->setObjectName(QStringLiteral("id%1").arg(id));
    m_layout.push_back({widget, id, anchor, rect});
}

QLabel* CCameraBaseDlg::label(int id, const TemplateRect& rect, int anchor, QWidget* buddy) {
    auto* l = place(new QLabel, id, rect, anchor);
    if (buddy)
        l->setBuddy(buddy);
    return l;
}

void CCameraBaseDlg::InitPanel(const char* dialogName) {
    for (const LayoutEntry& e : m_layout)
        if (std::find(m_textIds.begin(), m_textIds.end(), e.id) != m_textIds.end())
            e.widget->setProperty("i18nId", e.id);
    i18n_dialog(this, dialogName);
    // The catalog's texts are what screen readers announce for these controls.
    for (auto* button : findChildren<QAbstractButton*>())
        if (button->property("i18nId").isValid())
            button->setAccessibleName(button->text().remove(QLatin1Char('&')));
    m_width = m_template.width();
    m_initialised = true;
    layoutControls(width());
    UpdateControls();
}

void CCameraBaseDlg::SetCamera(dscap_handle handle, ICameraControl* control, int mode) {
    OnDetach();
    m_handle = handle;
    m_control = control;
    m_mode = mode;
    m_colour = true;
    m_flags = 0;
    m_state = control ? State::Attached : State::Detached;
    if (control) {
        control->SetCameraOption(0);
        if (control->IsColour() == 0)
            m_colour = false;
    }
    UpdateControls();
}

void CCameraBaseDlg::SetStateFlag(bool on, unsigned bits) {
    if (on)
        m_flags |= bits;
    else
        m_flags &= ~bits;
}

QRect CCameraBaseDlg::controlRect(int id) const {
    for (const LayoutEntry& e : m_layout)
        if (e.id == id)
            return e.widget->geometry();
    return {};
}

void CCameraBaseDlg::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (m_initialised && event->size().width() != m_width)
        layoutControls(event->size().width());
}

void CCameraBaseDlg::layoutControls(int width) {
    if (!m_initialised || width <= 0)
        return;
    m_width = width;
    // Every control moves before anything repaints, so the panel never shows a half-done
    // layout while the pane is dragged wider.
    setUpdatesEnabled(false);
    for (const LayoutEntry& e : m_layout) {
        if (e.anchor == kAnchorNone)
            continue;
        const TemplateRect r = anchoredRect(e.anchor, e.rect, m_template, width);
        e.widget->setGeometry(r.left, r.top, r.width(), r.height());
    }
    setUpdatesEnabled(true);
    update();
}

void CCameraBaseDlg::postToOwner(int message, quintptr wParam, qintptr lParam) {
    if (m_owner)
        postMessage(m_owner, message, wParam, lParam);
}

void setQuietly(QSlider* slider, int value) {
    const QSignalBlocker block(slider);
    slider->setValue(value);
}

void setRangeQuietly(QSlider* slider, int minimum, int maximum) {
    const QSignalBlocker block(slider);
    slider->setRange(minimum, maximum);
}

void checkOne(const std::vector<QAbstractButton*>& buttons, int index) {
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        QAbstractButton* b = buttons[i];
        const bool exclusive = b->autoExclusive();
        b->setAutoExclusive(false); // lets every button of the set be cleared
        b->setChecked(static_cast<int>(i) == index);
        b->setAutoExclusive(exclusive);
    }
}

} // namespace lanmira

#pragma once

#include "camera/pane/AnchorLayout.h"
#include "dscap/dscap.h"

#include <QWidget>

#include <vector>

class ICameraControl;
class QAbstractButton;
class QLabel;
class QSlider;

namespace lanmira {

// The base of every panel of the camera control pane: a frameless child laid out from a
// template of fixed rectangles, whose anchored controls follow the pane's width. A panel is
// detached (no camera: its camera controls disabled) or attached to a camera's control
// interface; the pane moves all panels between the two together.
class CCameraBaseDlg : public QWidget {
    Q_OBJECT
public:
    // State bits of SetStateFlag.
    static constexpr unsigned kRecording = 1;
    static constexpr unsigned kVideoSizeChanged = 2;
    static constexpr unsigned kCaptureBlocked = 8;

    enum class State { Detached, Attached };

    CCameraBaseDlg(QObject* owner, int templateWidth, int templateHeight,
                   QWidget* parent = nullptr);

    // Ranges and defaults, then InitPanel; panels without ranges are initialised by the pane
    // calling InitPanel directly.
    virtual void InitControls() {}
    // Localises the panel's texts, records the template and shows the camera's values.
    virtual void InitPanel(const char* dialogName);
    // Forgets what was registered with the previous camera.
    virtual void OnDetach() {}
    // Reads every value from the camera and enables the controls its abilities allow.
    virtual void UpdateControls() = 0;
    virtual void SetStateFlag(bool on, unsigned bits);

    // Detach, take the new camera (or none), ask its colour, then show its values.
    void SetCamera(dscap_handle handle, ICameraControl* control, int mode);

    State state() const { return m_state; }
    int templateHeight() const { return m_template.height(); }
    bool initialised() const { return m_initialised; }
    // Whether the attached camera delivers colour; true without a camera.
    bool colourCamera() const { return m_colour; }
    // The template rectangle a control of the layout list is now at, for tests.
    QRect controlRect(int id) const;

protected:
    ICameraControl* control() const { return m_control; }
    dscap_handle handle() const { return m_handle; }
    int mode() const { return m_mode; }
    bool colour() const { return m_colour; }
    bool attached() const { return m_state == State::Attached; }
    unsigned stateFlags() const { return m_flags; }
    QObject* owner() const { return m_owner; }

    // Puts a control at its template rectangle and into the layout list.
    template <class W> W* place(W* widget, int id, const TemplateRect& rect, int anchor = 0) {
        placeWidget(widget, id, rect, anchor);
        return widget;
    }
    QLabel* label(int id, const TemplateRect& rect, int anchor = 0, QWidget* buddy = nullptr);
    // The controls whose text comes from the dialog's catalog context, by id.
    void setTextIds(std::vector<int> ids) { m_textIds = std::move(ids); }
    // Posts one of the program's messages to the camera window.
    void postToOwner(int message, quintptr wParam = 0, qintptr lParam = 0);

    void resizeEvent(QResizeEvent* event) override;

private:
    struct LayoutEntry {
        QWidget* widget;
        int id;
        int anchor;
        TemplateRect rect;
    };
    void placeWidget(QWidget* widget, int id, const TemplateRect& rect, int anchor);
    void layoutControls(int width);

    bool m_initialised = false;
    TemplateRect m_template;
    int m_width = 0;
    std::vector<LayoutEntry> m_layout;
    std::vector<int> m_textIds;
    dscap_handle m_handle = nullptr;
    ICameraControl* m_control = nullptr;
    unsigned m_flags = 0;
    int m_mode = 0;
    bool m_colour = true;
    State m_state = State::Detached;
    QObject* m_owner;
};

// Sets a slider without the change reaching the camera: only the user's moves are written.
void setQuietly(QSlider* slider, int value);
void setRangeQuietly(QSlider* slider, int minimum, int maximum);
// Checks the button at `index` of an exclusive set, or none for -1.
void checkOne(const std::vector<QAbstractButton*>& buttons, int index);

} // namespace lanmira

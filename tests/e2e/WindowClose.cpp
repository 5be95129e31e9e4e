#include "WindowClose.h"

#include <X11/Xlib.h>

namespace lanmira::e2e {

bool askToClose(const QString& window) {
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return false;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window.toULong();
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    const Status sent = XSendEvent(display, window.toULong(), False, NoEventMask, &event);
    XCloseDisplay(display);
    return sent != 0;
}

} // namespace lanmira::e2e

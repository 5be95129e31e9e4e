#pragma once

#include <QString>

#include <functional>

namespace lanmira {

// The application-wide slot through which folder navigation hands a file to the viewer.
// The viewer fills it when it becomes the active view and empties it when it closes; with
// the slot empty, navigation only moves the selection. User-interface thread only.
class ViewerReceiver {
public:
    using Open = std::function<void(const QString& path, const QString& linkTarget)>;

    static void set(Open open);
    static void clear();
    static bool isSet();
    // False when the slot is empty.
    static bool deliver(const QString& path, const QString& linkTarget);
};

} // namespace lanmira

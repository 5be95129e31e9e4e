#include "viewer/ViewerReceiver.h"

#include <utility>

namespace lanmira {

namespace {

ViewerReceiver::Open& slot() {
    static ViewerReceiver::Open open;
    return open;
}

} // namespace

void ViewerReceiver::set(Open open) {
    slot() = std::move(open);
}

void ViewerReceiver::clear() {
    slot() = nullptr;
}

bool ViewerReceiver::isSet() {
    return static_cast<bool>(slot());
}

bool ViewerReceiver::deliver(const QString& path, const QString& linkTarget) {
    // A copy, because opening may end with the viewer withdrawing (or replacing) itself
    // while the call is still running.
    const Open open = slot();
    if (!open)
        return false;
    open(path, linkTarget);
    return true;
}

} // namespace lanmira

#include "platform/UnixSignalBridge.h"

#include <sys/socket.h>

#include <QApplication>
#include <QDialog>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace lanmira {
namespace {

int g_fds[2] = {-1, -1};

extern "C" void onSignal(int signo) {
    const int saved = errno;
    const unsigned char b = static_cast<unsigned char>(signo);
    // Only async-signal-safe calls here: the GUI thread does the rest.
    [[maybe_unused]] const ssize_t n = ::write(g_fds[0], &b, 1);
    errno = saved;
}

} // namespace

UnixSignalBridge::UnixSignalBridge(QObject* parent) : QObject(parent) {
    if (g_fds[0] < 0) {
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, g_fds) != 0)
            return;
    }
    m_notifier = new QSocketNotifier(g_fds[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &UnixSignalBridge::drain);

    struct sigaction sa = {};
    sa.sa_handler = onSignal;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_RESTART;
    for (int s : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(s, &sa, nullptr);
}

UnixSignalBridge::~UnixSignalBridge() {
    struct sigaction sa = {};
    sa.sa_handler = SIG_DFL;
    sigemptyset(&sa.sa_mask);
    for (int s : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(s, &sa, nullptr);
}

void UnixSignalBridge::drain() {
    unsigned char b = 0;
    while (::read(g_fds[1], &b, 1) == 1) {
        // A modal dialog runs an event loop of its own, and the windows under it will not
        // close while it is open: every one is dismissed first, as Cancel would, and the
        // request follows once control is back in an event loop.
        endModalDialogs();
        const int signalNumber = b;
        QMetaObject::invokeMethod(
            this, [this, signalNumber] { Q_EMIT terminationRequested(signalNumber); },
            Qt::QueuedConnection);
    }
}

void UnixSignalBridge::endModalDialogs() {
    while (QWidget* modal = QApplication::activeModalWidget()) {
        if (auto* dialog = qobject_cast<QDialog*>(modal))
            dialog->reject();
        else
            modal->close();
        if (QApplication::activeModalWidget() == modal)
            return; // it would not go; the exit request still follows
    }
}

} // namespace lanmira

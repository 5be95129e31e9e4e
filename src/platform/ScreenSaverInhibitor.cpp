#include "platform/ScreenSaverInhibitor.h"

#include <QCoreApplication>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QFileInfo>
#include <QVariantMap>

#include <utility>

namespace lanmira {
namespace {

// A desktop that hangs on the call must not keep us from trying the next service for long.
constexpr int kCallTimeoutMs = 5000;
// The portal's and the session manager's flags: "suspend" and "idle".
constexpr uint kInhibitSuspendAndIdle = 4 | 8;

ScreenSaverInhibitor::Backend nextBackend(ScreenSaverInhibitor::Backend b) {
    using B = ScreenSaverInhibitor::Backend;
    switch (b) {
    case B::None:
        return B::ScreenSaver;
    case B::ScreenSaver:
        return B::Portal;
    case B::Portal:
        return B::GnomeSession;
    case B::GnomeSession:
        return B::None;
    }
    return B::None;
}

} // namespace

ScreenSaverInhibitor::ScreenSaverInhibitor(QString applicationName, QObject* parent)
    : QObject(parent), m_applicationName(std::move(applicationName)) {}

ScreenSaverInhibitor::~ScreenSaverInhibitor() {
    switch (m_state) {
    case State::Held:
        // Nobody is left to hear the answer; the service drops it.
        m_bus->send(releaseMessage(m_backend, m_grant));
        break;
    case State::Requesting: {
        // The grant may still come; whoever receives it must give it back, or the screen
        // stays awake until the program ends. The application outlives us, so the call is
        // handed to it.
        QDBusPendingCallWatcher* call = std::exchange(m_pending, nullptr);
        disconnect(call, nullptr, this, nullptr);
        if (QCoreApplication* app = QCoreApplication::instance()) {
            call->setParent(app);
            connect(call, &QDBusPendingCallWatcher::finished, call,
                    [bus = *m_bus, backend = m_backend](QDBusPendingCallWatcher* w) mutable {
                        if (!w->isError()) {
                            if (auto grant = grantFrom(backend, w->reply()))
                                bus.send(releaseMessage(backend, *grant));
                        }
                        w->deleteLater();
                    });
        }
        break;
    }
    case State::Idle:
    case State::Releasing:
    case State::Unavailable:
        break;
    }
}

namespace {

// The session bus a desktop session offers: its address in the environment, or the user
// bus at its usual place.
bool sessionBusAdvertised() {
    if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return true;
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    return !runtime.isEmpty() && QFileInfo::exists(QString::fromLocal8Bit(runtime) + u"/bus");
}

} // namespace

void ScreenSaverInhibitor::setInhibited(bool on, const QString& reason) {
    if (on == m_wanted)
        return;
    m_wanted = on;
    if (on)
        m_reason = reason;
    switch (m_state) {
    case State::Idle:
    case State::Unavailable:
        if (on)
            start();
        else
            setState(State::Idle, Backend::None);
        break;
    case State::Held:
        if (!on)
            release();
        break;
    case State::Requesting:
    case State::Releasing:
        // The reply handler looks at m_wanted and catches up.
        break;
    }
}

void ScreenSaverInhibitor::setState(State state, Backend backend) {
    const bool changed = state != m_state || backend != m_backend;
    m_state = state;
    m_backend = backend;
    if (changed)
        Q_EMIT stateChanged(state);
}

void ScreenSaverInhibitor::start() {
    if (!m_bus && !sessionBusAdvertised()) {
        // Asking for the bus would start D-Bus's own thread, or even launch a bus, for
        // nothing: without an address there is no desktop to ask.
        setState(State::Unavailable, Backend::None);
        return;
    }
    if (!m_bus)
        m_bus = QDBusConnection::sessionBus();
    if (!m_bus->isConnected()) {
        setState(State::Unavailable, Backend::None);
        return;
    }
    request(nextBackend(Backend::None));
}

QDBusMessage ScreenSaverInhibitor::inhibitMessage(Backend backend, const QString& application,
                                                  const QString& reason) {
    QDBusMessage m;
    switch (backend) {
    case Backend::ScreenSaver:
        m = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.ScreenSaver"),
                                           QStringLiteral("/org/freedesktop/ScreenSaver"),
                                           QStringLiteral("org.freedesktop.ScreenSaver"),
                                           QStringLiteral("Inhibit"));
        m << application << reason;
        break;
    case Backend::Portal:
        m = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"),
                                           QStringLiteral("/org/freedesktop/portal/desktop"),
                                           QStringLiteral("org.freedesktop.portal.Inhibit"),
                                           QStringLiteral("Inhibit"));
        // No parent window: the inhibition is for the program, not one window.
        m << QString() << kInhibitSuspendAndIdle << QVariantMap{{QStringLiteral("reason"), reason}};
        break;
    case Backend::GnomeSession:
        m = QDBusMessage::createMethodCall(
            QStringLiteral("org.gnome.SessionManager"), QStringLiteral("/org/gnome/SessionManager"),
            QStringLiteral("org.gnome.SessionManager"), QStringLiteral("Inhibit"));
        m << application << uint(0) << reason << kInhibitSuspendAndIdle;
        break;
    case Backend::None:
        break;
    }
    return m;
}

std::optional<ScreenSaverInhibitor::Grant>
ScreenSaverInhibitor::grantFrom(Backend backend, const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    const QVariant first = reply.arguments().constFirst();
    Grant g;
    if (backend == Backend::Portal) {
        if (reply.signature() != QLatin1String("o"))
            return std::nullopt;
        g.handle = first.value<QDBusObjectPath>().path();
    } else {
        if (reply.signature() != QLatin1String("u"))
            return std::nullopt;
        g.cookie = first.toUInt();
    }
    return g;
}

QDBusMessage ScreenSaverInhibitor::releaseMessage(Backend backend, const Grant& grant) {
    QDBusMessage m;
    switch (backend) {
    case Backend::ScreenSaver:
        m = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.ScreenSaver"),
                                           QStringLiteral("/org/freedesktop/ScreenSaver"),
                                           QStringLiteral("org.freedesktop.ScreenSaver"),
                                           QStringLiteral("UnInhibit"));
        m << grant.cookie;
        break;
    case Backend::Portal:
        m = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.portal.Desktop"), grant.handle,
            QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Close"));
        break;
    case Backend::GnomeSession:
        m = QDBusMessage::createMethodCall(
            QStringLiteral("org.gnome.SessionManager"), QStringLiteral("/org/gnome/SessionManager"),
            QStringLiteral("org.gnome.SessionManager"), QStringLiteral("Uninhibit"));
        m << grant.cookie;
        break;
    case Backend::None:
        break;
    }
    return m;
}

void ScreenSaverInhibitor::request(Backend backend) {
    setState(State::Requesting, backend);
    send(inhibitMessage(backend, m_applicationName, m_reason),
         &ScreenSaverInhibitor::onRequestFinished);
}

void ScreenSaverInhibitor::send(const QDBusMessage& message,
                                void (ScreenSaverInhibitor::*finished)(QDBusPendingCallWatcher*)) {
    m_pending = new QDBusPendingCallWatcher(m_bus->asyncCall(message, kCallTimeoutMs), this);
    connect(m_pending, &QDBusPendingCallWatcher::finished, this, finished);
}

bool ScreenSaverInhibitor::isAwaited(QDBusPendingCallWatcher* call, State state) {
    call->deleteLater();
    // A reply to a call given up on (the state moved on) is dropped.
    if (m_state != state || call != m_pending)
        return false;
    m_pending = nullptr;
    return true;
}

void ScreenSaverInhibitor::onRequestFinished(QDBusPendingCallWatcher* call) {
    if (!isAwaited(call, State::Requesting))
        return;

    const std::optional<Grant> grant =
        call->isError() ? std::nullopt : grantFrom(m_backend, call->reply());
    if (!grant) {
        // Service absent or not speaking this interface: try the next one.
        const Backend next = nextBackend(m_backend);
        if (!m_wanted)
            setState(State::Idle, Backend::None);
        else if (next == Backend::None)
            setState(State::Unavailable, Backend::None);
        else
            request(next);
        return;
    }
    m_grant = *grant;
    if (m_wanted)
        setState(State::Held, m_backend);
    else
        release();
}

void ScreenSaverInhibitor::release() {
    setState(State::Releasing, m_backend);
    send(releaseMessage(m_backend, m_grant), &ScreenSaverInhibitor::onReleaseFinished);
}

void ScreenSaverInhibitor::onReleaseFinished(QDBusPendingCallWatcher* call) {
    if (!isAwaited(call, State::Releasing))
        return;
    // A failed release leaves nothing we could do better: the service frees what we hold
    // when our connection closes.
    m_grant = {};
    setState(State::Idle, Backend::None);
    if (m_wanted)
        start();
}

} // namespace lanmira

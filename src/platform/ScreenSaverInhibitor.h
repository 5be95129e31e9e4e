#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <optional>

class QDBusPendingCallWatcher;

namespace lanmira {

// Keeps the screen saver and idle suspend away while a live picture is shown. Asks the
// desktop over the session bus, trying the screen-saver service, then the desktop portal,
// then the GNOME session manager. Every call is asynchronous: the caller never waits on the
// bus, and a request still in flight when inhibition is switched off (or the object goes)
// is released as soon as its reply arrives.
class ScreenSaverInhibitor final : public QObject {
    Q_OBJECT
public:
    enum class State {
        Idle,        // nothing held, nothing in flight
        Requesting,  // an Inhibit call to backend() is in flight
        Held,        // backend() holds the inhibition
        Releasing,   // the release call to backend() is in flight
        Unavailable, // no service answered (or no session bus); retried on the next request
    };
    Q_ENUM(State)
    enum class Backend { None, ScreenSaver, Portal, GnomeSession };
    Q_ENUM(Backend)

    explicit ScreenSaverInhibitor(QString applicationName, QObject* parent = nullptr);
    ~ScreenSaverInhibitor() override;

    // Asking for the state already asked for does nothing; the reason is only read when a
    // new request goes out.
    void setInhibited(bool on, const QString& reason);
    bool inhibited() const { return m_wanted; }
    State state() const { return m_state; }
    // The service being asked, holding, or being released; None when Idle or Unavailable.
    Backend backend() const { return m_backend; }

Q_SIGNALS:
    void stateChanged(lanmira::ScreenSaverInhibitor::State state);

private:
    // What a service hands out for an inhibition: a cookie, or for the portal the path of
    // the request object to close.
    struct Grant {
        uint cookie = 0;
        QString handle;
    };

    static QDBusMessage inhibitMessage(Backend backend, const QString& application,
                                       const QString& reason);
    static std::optional<Grant> grantFrom(Backend backend, const QDBusMessage& reply);
    static QDBusMessage releaseMessage(Backend backend, const Grant& grant);

    void setState(State state, Backend backend);
    void start();
    void request(Backend backend);
    void onRequestFinished(QDBusPendingCallWatcher* call);
    void release();
    void onReleaseFinished(QDBusPendingCallWatcher* call);
    void send(const QDBusMessage& message,
              void (ScreenSaverInhibitor::*finished)(QDBusPendingCallWatcher*));
    // Takes the finished call; false when it is not the one this state waits for.
    bool isAwaited(QDBusPendingCallWatcher* call, State state);

    QString m_applicationName;
    QString m_reason;
    std::optional<QDBusConnection> m_bus; // opened on the first request
    bool m_wanted = false;
    State m_state = State::Idle;
    Backend m_backend = Backend::None;
    Grant m_grant;
    QDBusPendingCallWatcher* m_pending = nullptr; // the one call in flight, owned by this
};

} // namespace lanmira

#include "platform/ScreenSaverInhibitor.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

using namespace lanmira;
using State = ScreenSaverInhibitor::State;
using Backend = ScreenSaverInhibitor::Backend;

namespace {

const QString kFakeConnection = QStringLiteral("fake-desktop");
const QString kScreenSaver = QStringLiteral("org.freedesktop.ScreenSaver");
const QString kPortal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kGnome = QStringLiteral("org.gnome.SessionManager");

// What a fake service saw, and the replies it holds back to open a race on purpose.
struct Ledger {
    int inhibits = 0;
    QList<uint> released;
    QString application;
    QString reason;
    uint flags = 0;
    uint nextCookie = 41;
    bool holdReplies = false;
    QList<QDBusMessage> heldReplies;

    template <class T> T answer(QDBusContext& call, T value) {
        ++inhibits;
        if (holdReplies) {
            call.setDelayedReply(true);
            heldReplies << call.message().createReply(QVariant::fromValue(value));
        }
        return value;
    }
    void sendHeldReplies() {
        QDBusConnection bus(kFakeConnection);
        for (const QDBusMessage& m : std::as_const(heldReplies))
            bus.send(m);
        heldReplies.clear();
    }
};

} // namespace

class FakeScreenSaver final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")
public:
    Ledger ledger;
public Q_SLOTS:
    uint Inhibit(const QString& application, const QString& reason) {
        ledger.application = application;
        ledger.reason = reason;
        return ledger.answer(*this, ledger.nextCookie++);
    }
    void UnInhibit(uint cookie) { ledger.released << cookie; }
};

class FakeGnomeSession final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.SessionManager")
public:
    Ledger ledger;
public Q_SLOTS:
    uint Inhibit(const QString& appId, uint, const QString& reason, uint flags) {
        ledger.application = appId;
        ledger.reason = reason;
        ledger.flags = flags;
        return ledger.answer(*this, ledger.nextCookie++);
    }
    void Uninhibit(uint cookie) { ledger.released << cookie; }
};

// The request object the portal hands out; closing it ends the inhibition.
class FakePortalRequest final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Request")
public:
    FakePortalRequest(Ledger& ledger, uint id, QObject* parent)
        : QObject(parent), m_ledger(ledger), m_id(id) {}
public Q_SLOTS:
    void Close() { m_ledger.released << m_id; }

private:
    Ledger& m_ledger;
    uint m_id;
};

class FakePortal final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Inhibit")
public:
    Ledger ledger;
public Q_SLOTS:
    QDBusObjectPath Inhibit(const QString&, uint flags, const QVariantMap& options) {
        ledger.reason = options.value(QStringLiteral("reason")).toString();
        ledger.flags = flags;
        const uint id = ledger.nextCookie++;
        const QString path = QStringLiteral("/org/freedesktop/portal/desktop/request/t%1").arg(id);
        QDBusConnection(kFakeConnection)
            .registerObject(path, new FakePortalRequest(ledger, id, this),
                            QDBusConnection::ExportAllSlots);
        return ledger.answer(*this, QDBusObjectPath(path));
    }
};

// The fakes live on their own connection to the bus dbus-run-session gives the test, so
// calls go through the daemon exactly as they would to a real desktop.
class ScreenSaverInhibitorTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
            GTEST_SKIP() << "no session bus; run the test through dbus-run-session";
        bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, kFakeConnection);
        if (!bus.isConnected())
            GTEST_SKIP() << "cannot connect to the session bus";
        for (const QString& name : {kScreenSaver, kPortal, kGnome}) {
            if (bus.interface()->isServiceRegistered(name))
                GTEST_SKIP() << name.toStdString()
                             << " is already on this bus; run the test through dbus-run-session";
        }
    }
    void TearDown() override {
        for (const QString& name : {kScreenSaver, kPortal, kGnome})
            bus.unregisterService(name);
        for (const char* path : {"/org/freedesktop/ScreenSaver", "/org/freedesktop/portal/desktop",
                                 "/org/gnome/SessionManager"})
            bus.unregisterObject(QString::fromLatin1(path), QDBusConnection::UnregisterTree);
    }

    template <class Fake> std::unique_ptr<Fake> offer(const QString& service, const char* path) {
        auto fake = std::make_unique<Fake>();
        EXPECT_TRUE(bus.registerObject(QString::fromLatin1(path), fake.get(),
                                       QDBusConnection::ExportAllSlots));
        EXPECT_TRUE(bus.registerService(service));
        return fake;
    }
    std::unique_ptr<FakeScreenSaver> offerScreenSaver() {
        return offer<FakeScreenSaver>(kScreenSaver, "/org/freedesktop/ScreenSaver");
    }

    static bool settlesIn(const ScreenSaverInhibitor& inh, State state) {
        return QTest::qWaitFor([&] { return inh.state() == state; }, 5000);
    }

    QDBusConnection bus{QString()};
};

TEST_F(ScreenSaverInhibitorTest, HoldsUntilSwitchedOffAndGivesTheCookieBack) {
    auto fake = offerScreenSaver();
    ScreenSaverInhibitor inh(QStringLiteral("lanmira"));
    inh.setInhibited(true, QStringLiteral("Live picture"));
    EXPECT_EQ(inh.state(), State::Requesting); // never waits on the bus
    ASSERT_TRUE(settlesIn(inh, State::Held));
    EXPECT_EQ(inh.backend(), Backend::ScreenSaver);
    EXPECT_EQ(fake->ledger.application, QStringLiteral("lanmira"));
    EXPECT_EQ(fake->ledger.reason, QStringLiteral("Live picture"));

    inh.setInhibited(true, QStringLiteral("again"));
    inh.setInhibited(false, {});
    EXPECT_FALSE(inh.inhibited());
    ASSERT_TRUE(settlesIn(inh, State::Idle));
    EXPECT_EQ(fake->ledger.inhibits, 1);
    EXPECT_EQ(fake->ledger.released, QList<uint>{41});

    // On again while the release is still on its way: asked for anew once it is done.
    inh.setInhibited(true, QStringLiteral("Live picture"));
    ASSERT_TRUE(settlesIn(inh, State::Held));
    inh.setInhibited(false, {});
    EXPECT_EQ(inh.state(), State::Releasing);
    inh.setInhibited(true, QStringLiteral("Live picture"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return fake->ledger.inhibits == 3; }, 5000));
    ASSERT_TRUE(settlesIn(inh, State::Held));
    EXPECT_EQ(fake->ledger.released, (QList<uint>{41, 42}));
}

TEST_F(ScreenSaverInhibitorTest, DestructionReleasesWhatIsHeld) {
    auto fake = offerScreenSaver();
    {
        ScreenSaverInhibitor inh(QStringLiteral("lanmira"));
        inh.setInhibited(true, QStringLiteral("Live picture"));
        ASSERT_TRUE(settlesIn(inh, State::Held));
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return fake->ledger.released == QList<uint>{41}; }, 5000));
}

TEST_F(ScreenSaverInhibitorTest, ACookieArrivingAfterSwitchingOffIsReleased) {
    auto fake = offerScreenSaver();
    fake->ledger.holdReplies = true;
    ScreenSaverInhibitor inh(QStringLiteral("lanmira"));
    inh.setInhibited(true, QStringLiteral("Live picture"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return fake->ledger.inhibits == 1; }, 5000));
    inh.setInhibited(false, {});
    EXPECT_EQ(inh.state(), State::Requesting);
    fake->ledger.sendHeldReplies();
    ASSERT_TRUE(settlesIn(inh, State::Idle));
    EXPECT_EQ(fake->ledger.released, QList<uint>{41});

    // Off and on again while waiting: one request, kept.
    inh.setInhibited(true, QStringLiteral("Live picture"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return fake->ledger.inhibits == 2; }, 5000));
    inh.setInhibited(false, {});
    inh.setInhibited(true, QStringLiteral("Live picture"));
    fake->ledger.sendHeldReplies();
    ASSERT_TRUE(settlesIn(inh, State::Held));
    EXPECT_EQ(fake->ledger.inhibits, 2);
    EXPECT_EQ(fake->ledger.released.size(), 1);
}

TEST_F(ScreenSaverInhibitorTest, DestructionWithARequestInFlightStillReleasesLater) {
    auto fake = offerScreenSaver();
    fake->ledger.holdReplies = true;
    {
        ScreenSaverInhibitor inh(QStringLiteral("lanmira"));
        inh.setInhibited(true, QStringLiteral("Live picture"));
        ASSERT_TRUE(QTest::qWaitFor([&] { return fake->ledger.inhibits == 1; }, 5000));
    }
    fake->ledger.sendHeldReplies();
    EXPECT_TRUE(QTest::qWaitFor([&] { return fake->ledger.released == QList<uint>{41}; }, 5000));
}

TEST_F(ScreenSaverInhibitorTest, FallsBackToThePortal) {
    auto portal = offer<FakePortal>(kPortal, "/org/freedesktop/portal/desktop");
    ScreenSaverInhibitor inh(QStringLiteral("lanmira"));
    inh.setInhibited(true, QStringLiteral("Live picture"));
    ASSERT_TRUE(settlesIn(inh, State::Held));
    EXPECT_EQ(inh.backend(), Backend::Portal);
    EXPECT_EQ(portal->ledger.reason, QStringLiteral("Live picture"));
    EXPECT_EQ(portal->ledger.flags, 4u | 8u);
    inh.setInhibited(false, {});
    ASSERT_TRUE(settlesIn(inh, State::Idle));
    EXPECT_EQ(portal->ledger.released, QList<uint>{41}); // the request it handed out, closed
}

TEST_F(ScreenSaverInhibitorTest, FallsBackToTheGnomeSessionManager) {
    auto gnome = offer<FakeGnomeSession>(kGnome, "/org/gnome/SessionManager");
    ScreenSaverInhibitor inh(QStringLiteral("lanmira"));
    inh.setInhibited(true, QStringLiteral("Recording"));
    ASSERT_TRUE(settlesIn(inh, State::Held));
    EXPECT_EQ(inh.backend(), Backend::GnomeSession);
    EXPECT_EQ(gnome->ledger.application, QStringLiteral("lanmira"));
    EXPECT_EQ(gnome->ledger.flags, 4u | 8u);
    inh.setInhibited(false, {});
    ASSERT_TRUE(settlesIn(inh, State::Idle));
    EXPECT_EQ(gnome->ledger.released, QList<uint>{41});
}

TEST_F(ScreenSaverInhibitorTest, NoServiceIsUnavailableUntilAskedAgain) {
    ScreenSaverInhibitor inh(QStringLiteral("lanmira"));
    inh.setInhibited(true, QStringLiteral("Live picture"));
    ASSERT_TRUE(settlesIn(inh, State::Unavailable));
    EXPECT_TRUE(inh.inhibited());
    EXPECT_EQ(inh.backend(), Backend::None);

    // A service that turns up later is used on the next request, not before.
    auto fake = offerScreenSaver();
    QTest::qWait(50);
    EXPECT_EQ(fake->ledger.inhibits, 0);
    inh.setInhibited(false, {});
    EXPECT_EQ(inh.state(), State::Idle);
    inh.setInhibited(true, QStringLiteral("Live picture"));
    ASSERT_TRUE(settlesIn(inh, State::Held));
}

#include "ScreenSaverInhibitorTest.moc"

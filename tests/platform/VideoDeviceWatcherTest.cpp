#include "platform/VideoDeviceWatcher.h"

#include <sys/socket.h>

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <ctime>
#include <unistd.h>

using namespace lanmira;
using Event = std::pair<QString, QString>;

namespace {

// Notices as "action node" datagrams on a socket, the way the kernel hands them to udev's
// monitor: one per read, readable while any wait.
class SocketSource final : public DeviceEventSource {
public:
    SocketSource(int fd, int& receives) : m_fd(fd), m_receives(receives) {}
    ~SocketSource() override { ::close(m_fd); }
    int fd() const override { return m_fd; }
    bool failed() const override { return m_failed; }
    std::optional<DeviceEvent> receive() override {
        ++m_receives;
        char buf[256];
        const ssize_t n = ::recv(m_fd, buf, sizeof buf, MSG_DONTWAIT);
        if (n <= 0) {
            m_failed = n == 0 || errno != EAGAIN;
            return std::nullopt;
        }
        const QStringList parts = QString::fromUtf8(buf, n).split(QLatin1Char(' '));
        return DeviceEvent{parts.value(0), parts.value(1)};
    }

private:
    int m_fd;
    int& m_receives;
    bool m_failed = false;
};

class VideoDeviceWatcherTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, fds), 0);
        watcher =
            std::make_unique<VideoDeviceWatcher>(std::make_unique<SocketSource>(fds[1], receives));
        spy = std::make_unique<QSignalSpy>(watcher.get(), &VideoDeviceWatcher::devicesChanged);
    }
    void TearDown() override {
        if (fds[0] >= 0)
            ::close(fds[0]);
    }
    void send(const char* notice) {
        ASSERT_EQ(::send(fds[0], notice, strlen(notice), 0), ssize_t(strlen(notice)));
    }
    QList<Event> seen() const {
        QList<Event> out;
        for (const QList<QVariant>& args : *spy)
            out.append({args.at(0).toString(), args.at(1).toString()});
        return out;
    }

    int fds[2] = {-1, -1};
    int receives = 0;
    std::unique_ptr<VideoDeviceWatcher> watcher;
    std::unique_ptr<QSignalSpy> spy;
};

double threadCpuMs() {
    timespec t{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) / 1e6;
}

Event ev(const char* action, const char* node) {
    return {QString::fromLatin1(action), QString::fromLatin1(node)};
}

} // namespace

TEST_F(VideoDeviceWatcherTest, ReportsAddRemoveAndChangeInOrderThroughTheEventLoop) {
    EXPECT_EQ(watcher->state(), VideoDeviceWatcher::State::Listening);
    send("add /dev/video0");
    send("bind /dev/video0"); // driver housekeeping, not a device change
    send("change /dev/video0");
    send("add "); // no node: nothing to open
    send("remove /dev/video0");
    EXPECT_EQ(spy->count(), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return spy->count() >= 3; }, 5000));
    QTest::qWait(20);
    EXPECT_EQ(seen(), (QList<Event>{ev("add", "/dev/video0"), ev("change", "/dev/video0"),
                                    ev("remove", "/dev/video0")}));
}

TEST_F(VideoDeviceWatcherTest, ALongBurstArrivesWhole) {
    for (int i = 0; i < 150; ++i)
        send(QStringLiteral("add /dev/video%1").arg(i).toUtf8().constData());
    ASSERT_TRUE(QTest::qWaitFor([&] { return spy->count() == 150; }, 5000));
    EXPECT_EQ(seen().constLast(), ev("add", "/dev/video149"));
    EXPECT_EQ(seen().at(77), ev("add", "/dev/video77"));
}

TEST_F(VideoDeviceWatcherTest, AClosedSourceStopsWithoutSpinning) {
    send("add /dev/video0");
    ::close(std::exchange(fds[0], -1));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return watcher->state() == VideoDeviceWatcher::State::Stopped; }, 5000));
    // A closed socket stays readable: a watcher still listening would spin the event loop.
    const int afterStop = receives;
    const double cpuBefore = threadCpuMs();
    QTest::qWait(200);
    EXPECT_LT(threadCpuMs() - cpuBefore, 50.0);
    EXPECT_EQ(receives, afterStop);
    EXPECT_EQ(seen(), QList<Event>{ev("add", "/dev/video0")});
}

TEST_F(VideoDeviceWatcherTest, AReceiverMayDeleteTheWatcherMidBurst) {
    QObject::connect(watcher.get(), &VideoDeviceWatcher::devicesChanged, watcher.get(),
                     [&] { watcher.reset(); });
    send("add /dev/video0");
    send("add /dev/video1");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !watcher; }, 5000));
    QTest::qWait(20);
}

TEST(VideoDeviceWatcher, WithoutASourceItStops) {
    int receives = 0;
    VideoDeviceWatcher none(std::unique_ptr<DeviceEventSource>{});
    EXPECT_EQ(none.state(), VideoDeviceWatcher::State::Stopped);
    VideoDeviceWatcher noFd(std::make_unique<SocketSource>(-1, receives));
    EXPECT_EQ(noFd.state(), VideoDeviceWatcher::State::Stopped);
    VideoDeviceWatcher noFolder(QStringLiteral("/nonexistent/lanmira-dev"));
    EXPECT_EQ(noFolder.state(), VideoDeviceWatcher::State::Stopped);

    std::unique_ptr<VideoDeviceWatcher> real(VideoDeviceWatcher::create(nullptr));
    EXPECT_NE(real->state(), VideoDeviceWatcher::State::Stopped);
}

TEST(VideoDeviceWatcher, FolderFallbackReportsVideoNodesComingAndGoing) {
    QTemporaryDir dev;
    ASSERT_TRUE(dev.isValid());
    const auto touch = [&](const char* name) {
        QFile f(QDir(dev.path()).filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    };
    touch("video0");
    VideoDeviceWatcher watcher(dev.path());
    ASSERT_EQ(watcher.state(), VideoDeviceWatcher::State::WatchingFolder);
    QSignalSpy spy(&watcher, &VideoDeviceWatcher::devicesChanged);

    touch("video1");
    touch("video-notes"); // not a device node name
    touch("tty0");
    ASSERT_TRUE(spy.wait(5000));
    ASSERT_EQ(spy.count(), 1);
    EXPECT_EQ(spy.at(0).at(0).toString(), QStringLiteral("add"));
    EXPECT_EQ(spy.at(0).at(1).toString(), QDir(dev.path()).filePath(QStringLiteral("video1")));

    ASSERT_TRUE(QFile::remove(QDir(dev.path()).filePath(QStringLiteral("video0"))));
    ASSERT_TRUE(QTest::qWaitFor([&] { return spy.count() == 2; }, 5000));
    EXPECT_EQ(spy.at(1).at(0).toString(), QStringLiteral("remove"));
    EXPECT_EQ(spy.at(1).at(1).toString(), QDir(dev.path()).filePath(QStringLiteral("video0")));
}

// Starts the real program under the X server the test runs in (CTest wraps it in
// xvfb-run) and checks what a user would see: windows, exit codes, messages, settings files.
#include "LanmiraRun.h"

#include <QDir>
#include <QFile>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>

using lanmira::e2e::LanmiraRun;

namespace {

const QString kMainWindow = QStringLiteral("^Lanmira$");
constexpr int kStartMs = 30000;

QString readFile(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(f.readAll());
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
}

// Opens the File menu with the keyboard and chooses "E&xit".
void exitThroughMenu(const QString& window) {
    LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
    LanmiraRun::xdotool(
        {QStringLiteral("key"), QStringLiteral("--window"), window, QStringLiteral("alt+f")});
    QThread::msleep(400);
    LanmiraRun::xdotool({QStringLiteral("key"), QStringLiteral("x")});
}

} // namespace

TEST(StartupE2E, VersionAndHelpNeedNoDisplay) {
    LanmiraRun run;
    run.setEnv(QStringLiteral("DISPLAY"), QString());
    QString out;
    EXPECT_EQ(run.runToEnd({QStringLiteral("--version")}, 10000, &out), 0);
    EXPECT_EQ(out.trimmed(), QStringLiteral("Lanmira 1.1.4004"));
    EXPECT_EQ(run.runToEnd({QStringLiteral("--help")}, 10000, &out), 0);
    EXPECT_TRUE(out.contains(QStringLiteral("--version")));
    QString err;
    EXPECT_EQ(run.runToEnd({QStringLiteral("--bogus")}, 10000, nullptr, &err), 2);
    EXPECT_TRUE(err.contains(QStringLiteral("--bogus")));
}

TEST(StartupE2E, SecondCopyExitsSilentlyAndExitWritesClampedSettings) {
    LanmiraRun run;
    // A hand-edited settings file: slide 0 must come back as 1000, the junk must go.
    const QString conf = run.configHome() + QStringLiteral("/Vornalt/Lanmira/Lanmira.conf");
    writeFile(conf, "\x01garbage\n[options]\nslide=0\n[titleext\nPrompt=yes\n");

    run.start();
    QString window;
    ASSERT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs, &window));

    QString out, err;
    EXPECT_EQ(run.runToEnd({}, 10000, &out, &err), 0);
    EXPECT_TRUE(out.isEmpty());
    EXPECT_TRUE(err.isEmpty()) << err.toStdString();
    EXPECT_EQ(LanmiraRun::findWindows(kMainWindow).size(), 1);

    exitThroughMenu(window);
    ASSERT_TRUE(run.waitForExit(15000));
    EXPECT_EQ(run.process().exitCode(), 0);

    const QString written = readFile(conf);
    EXPECT_TRUE(written.contains(QStringLiteral("slide=1000"))) << written.toStdString();
    EXPECT_TRUE(written.contains(QStringLiteral("title=Lanmira")));
    EXPECT_TRUE(written.contains(QStringLiteral("ext=jpg")));
    EXPECT_FALSE(written.contains(QStringLiteral("garbage")));
}

TEST(StartupE2E, TerminationSignalsCloseLikeExit) {
    for (int signo : {SIGTERM, SIGINT}) {
        SCOPED_TRACE(signo);
        LanmiraRun run;
        const QString conf = run.configHome() + QStringLiteral("/Vornalt/Lanmira/Lanmira.conf");
        writeFile(conf, "[options]\nslide=5000000\n");
        run.start();
        ASSERT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs));
        ::kill(static_cast<pid_t>(run.process().processId()), signo);
        ASSERT_TRUE(run.waitForExit(15000));
        EXPECT_EQ(run.process().exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(run.process().exitCode(), 0);
        EXPECT_TRUE(readFile(conf).contains(QStringLiteral("slide=3600000")));
    }
}

TEST(StartupE2E, LockOfAKilledCopyDoesNotBlockTheNextStart) {
    LanmiraRun run;
    run.start();
    ASSERT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs));
    run.process().kill();
    ASSERT_TRUE(run.waitForExit(10000));
    ASSERT_TRUE(LanmiraRun::findWindows(kMainWindow).isEmpty());

    run.start();
    EXPECT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs));
    ::kill(static_cast<pid_t>(run.process().processId()), SIGTERM);
    EXPECT_TRUE(run.waitForExit(15000));
}

TEST(StartupE2E, ProfileInParentFolderNamesOtherCompanyAndApp) {
    LanmiraRun run;
    ASSERT_TRUE(LanmiraRun::writeProfile(
        QStringLiteral("<lanmira><oem company=\"Acme Optics\" app=\"ScopeView\"/></lanmira>"),
        run.profileInParent()));
    run.start();
    ASSERT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs));
    ::kill(static_cast<pid_t>(run.process().processId()), SIGTERM);
    ASSERT_TRUE(run.waitForExit(15000));
    EXPECT_TRUE(
        QFile::exists(run.configHome() + QStringLiteral("/Acme Optics/ScopeView/ScopeView.conf")));
    EXPECT_FALSE(QFile::exists(run.configHome() + QStringLiteral("/Vornalt")));
}

// Each profile fault shows its own text in a message box and on stderr, then the program
// ends with status 0 once the box is dismissed.
TEST(StartupE2E, EveryProfileFaultShowsItsOwnMessage) {
    struct Case {
        const char* name;
        std::function<void(LanmiraRun&)> prepare;
        QString message;
    };
    const std::vector<Case> cases = {
        {"missing", [](LanmiraRun& r) { QFile::remove(r.profileInShare()); },
         QStringLiteral("The exml file is missing.")},
        {"empty", [](LanmiraRun& r) { writeFile(r.profileInParent(), {}); },
         QStringLiteral("The exml file is corrupted.")},
        {"not whole blocks",
         [](LanmiraRun& r) { writeFile(r.profileInParent(), QByteArray(200, 'x')); },
         QStringLiteral("The exml file is corrupted.")},
        {"garbage block",
         [](LanmiraRun& r) { writeFile(r.profileInParent(), QByteArray(256, '\x7f')); },
         QStringLiteral("The exml file is corrupted.")},
        {"too large",
         [](LanmiraRun& r) { writeFile(r.profileInParent(), QByteArray(1048576 + 128, '\0')); },
         QStringLiteral("The exml file is corrupted.")},
        {"not xml",
         [](LanmiraRun& r) {
             ASSERT_TRUE(
                 LanmiraRun::writeProfile(QStringLiteral("<lanmira><oem"), r.profileInParent()));
         },
         QStringLiteral("Failed to parse the exml file, loadXML error.")},
        {"wrong root",
         [](LanmiraRun& r) {
             ASSERT_TRUE(LanmiraRun::writeProfile(
                 QStringLiteral("<Lanmira><oem app=\"x\"/></Lanmira>"), r.profileInParent()));
         },
         QStringLiteral("Bad syntax in the exml file .")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        LanmiraRun run;
        c.prepare(run);
        run.start();
        QString box;
        ASSERT_TRUE(LanmiraRun::waitForWindow(QStringLiteral("^Lanmira$"), kStartMs, &box))
            << "state " << run.process().state() << " exit " << run.process().exitCode() << " "
            << run.process().readAllStandardError().toStdString() << " windows "
            << LanmiraRun::findWindows(QStringLiteral(".")).join(u',').toStdString();
        LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), box});
        LanmiraRun::xdotool(
            {QStringLiteral("key"), QStringLiteral("--window"), box, QStringLiteral("Return")});
        ASSERT_TRUE(run.waitForExit(15000));
        EXPECT_EQ(run.process().exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(run.process().exitCode(), 0);
        const QString err = QString::fromUtf8(run.process().readAllStandardError());
        EXPECT_TRUE(err.contains(c.message)) << err.toStdString();
        EXPECT_FALSE(QFile::exists(run.configHome() + QStringLiteral("/Vornalt")));
    }
}

TEST(StartupE2E, GermanLocaleLocalisesTheAboutBox) {
    LanmiraRun run;
    run.setEnv(QStringLiteral("LANG"), QStringLiteral("de_DE.UTF-8"));
    run.start();
    QString window;
    ASSERT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs, &window));
    LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
    LanmiraRun::xdotool(
        {QStringLiteral("key"), QStringLiteral("--window"), window, QStringLiteral("alt+h")});
    QThread::msleep(400);
    LanmiraRun::xdotool({QStringLiteral("key"), QStringLiteral("b")});
    // xdotool matches bytes or characters depending on its locale: match the ASCII part; the
    // English title "About Lanmira" would not match.
    EXPECT_TRUE(LanmiraRun::waitForWindow(QStringLiteral("ber Lanmira$"), 10000));
    EXPECT_TRUE(LanmiraRun::findWindows(QStringLiteral("^About Lanmira$")).isEmpty());
    ::kill(static_cast<pid_t>(run.process().processId()), SIGTERM);
    EXPECT_TRUE(run.waitForExit(15000));
}

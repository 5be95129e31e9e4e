// Starts the real program under the X server the test runs in (CTest wraps it in
// xvfb-run) and checks what a user would see: windows, exit codes, messages, settings files.
#include "LanmiraRun.h"

#include <QDir>
#include <QFile>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>

using lanmira::e2e::kMainWindow;
using lanmira::e2e::kStartMs;
using lanmira::e2e::LanmiraRun;

namespace {

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

// Opens the File menu with the keyboard and chooses "E&xit"; keys sent before the window
// has the focus are lost, so it tries again until the program has ended.
bool exitThroughMenu(LanmiraRun& run, const QString& window) {
    for (int attempt = 0; attempt < 6 && !run.waitForExit(0); ++attempt) {
        LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
        LanmiraRun::xdotool(
            {QStringLiteral("key"), QStringLiteral("--window"), window, QStringLiteral("alt+f")});
        QThread::msleep(400);
        LanmiraRun::xdotool({QStringLiteral("key"), QStringLiteral("x")});
        run.waitForExit(2000);
    }
    return run.waitForExit(0);
}

// Opens Help and chooses "&About..." ("Ü&ber..." in German: the same keys), until a window
// whose name matches `title` shows.
bool openAboutBox(const QString& window, const QString& title) {
    for (int attempt = 0; attempt < 6; ++attempt) {
        LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
        LanmiraRun::xdotool(
            {QStringLiteral("key"), QStringLiteral("--window"), window, QStringLiteral("alt+h")});
        QThread::msleep(400);
        LanmiraRun::xdotool({QStringLiteral("key"), QStringLiteral("b")});
        if (LanmiraRun::waitForWindow(title, 2000))
            return true;
        LanmiraRun::xdotool({QStringLiteral("key"), QStringLiteral("Escape")});
    }
    return false;
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
    ASSERT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs, &window)) << run.diagnose();

    QString out, err;
    EXPECT_EQ(run.runToEnd({}, 10000, &out, &err), 0);
    EXPECT_TRUE(out.isEmpty());
    EXPECT_TRUE(err.isEmpty()) << err.toStdString();
    EXPECT_EQ(LanmiraRun::findWindows(kMainWindow).size(), 1);

    ASSERT_TRUE(exitThroughMenu(run, window)) << run.diagnose();
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
        ASSERT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs)) << run.diagnose();
        run.signal(signo);
        ASSERT_TRUE(run.waitForExit(15000));
        EXPECT_EQ(run.process().exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(run.process().exitCode(), 0);
        EXPECT_TRUE(readFile(conf).contains(QStringLiteral("slide=3600000")));
    }
}

TEST(StartupE2E, LockOfAKilledCopyDoesNotBlockTheNextStart) {
    LanmiraRun run;
    run.start();
    ASSERT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs)) << run.diagnose();
    run.process().kill();
    ASSERT_TRUE(run.waitForExit(10000));
    ASSERT_TRUE(LanmiraRun::findWindows(kMainWindow).isEmpty());

    run.start();
    EXPECT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs)) << run.diagnose();
    run.signal(SIGTERM);
    EXPECT_TRUE(run.waitForExit(15000));
}

TEST(StartupE2E, ProfileInParentFolderNamesOtherCompanyAndApp) {
    LanmiraRun run;
    ASSERT_TRUE(LanmiraRun::writeProfile(
        QStringLiteral("<lanmira><oem company=\"Acme Optics\" app=\"ScopeView\"/></lanmira>"),
        run.profileInParent()));
    run.start();
    ASSERT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs)) << run.diagnose();
    run.signal(SIGTERM);
    ASSERT_TRUE(run.waitForExit(15000));
    EXPECT_TRUE(
        QFile::exists(run.configHome() + QStringLiteral("/Acme Optics/ScopeView/ScopeView.conf")));
    EXPECT_FALSE(QFile::exists(run.configHome() + QStringLiteral("/Vornalt/Lanmira/Lanmira.conf")));
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
        ASSERT_TRUE(run.waitForOwnWindow(QStringLiteral("^Lanmira$"), kStartMs, &box))
            << run.diagnose();
        // A key sent before the box has the focus is lost; press again, as a user would, but
        // only while the box is still this program's (ids are reused once a program ends).
        for (int attempt = 0; attempt < 10 && run.ownWindowShown(box); ++attempt) {
            LanmiraRun::xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), box});
            LanmiraRun::xdotool(
                {QStringLiteral("key"), QStringLiteral("--window"), box, QStringLiteral("Return")});
            run.waitForExit(1500);
        }
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
    ASSERT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs, &window)) << run.diagnose();
    // xdotool matches bytes or characters depending on its locale: match the ASCII part; the
    // English title "About Lanmira" would not match.
    EXPECT_TRUE(openAboutBox(window, QStringLiteral("ber Lanmira$")));
    EXPECT_TRUE(LanmiraRun::findWindows(QStringLiteral("^About Lanmira$")).isEmpty());
    run.signal(SIGTERM);
    EXPECT_TRUE(run.waitForExit(15000));
}

TEST(StartupE2E, InstalledProgramRunsFromItsFhsPlaces) {
    LanmiraRun run;
    const QString prefix = run.scratch() + QStringLiteral("/usr");
    QProcess install;
    install.start(QStringLiteral("cmake"),
                  {QStringLiteral("--install"), QStringLiteral(LANMIRA_BUILD_DIR),
                   QStringLiteral("--prefix"), prefix});
    ASSERT_TRUE(install.waitForFinished(60000));
    ASSERT_EQ(install.exitCode(), 0) << install.readAllStandardError().toStdString();
    for (const char* file :
         {"bin/lanmira", "share/lanmira/lanmira.exml", "share/lanmira/i18n/lanmira_en.qm",
          "share/lanmira/i18n/lanmira_de.qm", "share/applications/org.vornalt.Lanmira.desktop",
          "share/metainfo/org.vornalt.Lanmira.metainfo.xml",
          "share/icons/hicolor/256x256/apps/org.vornalt.Lanmira.png",
          "share/icons/hicolor/scalable/apps/org.vornalt.Lanmira.svg"})
        EXPECT_TRUE(QFile::exists(prefix + u'/' + QString::fromLatin1(file))) << file;

    run.setProgram(prefix + QStringLiteral("/bin/lanmira"));
    run.setEnv(QStringLiteral("LANG"), QStringLiteral("de_DE.UTF-8"));
    run.start();
    QString window;
    ASSERT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs, &window)) << run.diagnose();
    // The installed catalogs are found: the About box comes up in German.
    EXPECT_TRUE(openAboutBox(window, QStringLiteral("ber Lanmira$")));
    run.signal(SIGTERM);
    ASSERT_TRUE(run.waitForExit(15000));
    EXPECT_EQ(run.process().exitCode(), 0);
    EXPECT_TRUE(QFile::exists(run.configHome() + QStringLiteral("/Vornalt/Lanmira/Lanmira.conf")));
}

// The end of a desktop session can take the X server away under the program; Qt then ends
// the process through exit(), and the settings must still be written.
TEST(StartupE2E, LosingTheDisplayStillWritesTheSettings) {
    QProcess xvfb;
    xvfb.start(QStringLiteral("Xvfb"),
               {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                QStringLiteral("0"), QStringLiteral("800x600x24"), QStringLiteral("-nolisten"),
                QStringLiteral("tcp")});
    ASSERT_TRUE(xvfb.waitForReadyRead(20000));
    const QString display = u':' + QString::fromUtf8(xvfb.readLine()).trimmed();

    LanmiraRun run;
    run.setEnv(QStringLiteral("DISPLAY"), display);
    run.setEnv(QStringLiteral("XAUTHORITY"), QString());
    const QString conf = run.configHome() + QStringLiteral("/Vornalt/Lanmira/Lanmira.conf");
    writeFile(conf, "[options]\nslide=0\n");
    run.start();
    ASSERT_TRUE(LanmiraRun::waitForWindow(kMainWindow, kStartMs, nullptr, display))
        << run.diagnose();
    xvfb.terminate();
    ASSERT_TRUE(xvfb.waitForFinished(10000));
    ASSERT_TRUE(run.waitForExit(15000)) << run.diagnose();
    EXPECT_TRUE(readFile(conf).contains(QStringLiteral("slide=1000")))
        << readFile(conf).toStdString();
}

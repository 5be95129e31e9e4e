#include "acquire/PackedDib.h"
#include "app/BusyInputFilter.h"
#include "app/CPellanoApp.h"
#include "app/CommandLine.h"
#include "app/SingleInstance.h"

#include <QApplication>
#include <QIcon>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

bool isSet(const char* name) {
    const char* v = std::getenv(name);
    return v && *v;
}

bool hasDisplay(int argc, char** argv) {
    if (isSet("QT_QPA_PLATFORM") || isSet("DISPLAY") || isSet("WAYLAND_DISPLAY"))
        return true;
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "-platform") == 0 || std::strcmp(argv[i], "--platform") == 0)
            return true;
    return false;
}

} // namespace

int main(int argc, char** argv) {
    using lanmira::CommandLine;

    // The command line is answered without a display and without the instance lock.
    QStringList rawArgs;
    for (int i = 1; i < argc; ++i)
        rawArgs << QString::fromLocal8Bit(argv[i]);
    const CommandLine cl = CommandLine::parse(rawArgs);
    switch (cl.action) {
    case CommandLine::Action::PrintVersion:
        std::printf("%s\n", CommandLine::versionText().toUtf8().constData());
        return 0;
    case CommandLine::Action::PrintHelp:
        std::printf("%s", CommandLine::helpText().toUtf8().constData());
        return 0;
    case CommandLine::Action::Error:
        std::fprintf(stderr, "lanmira: %s\n\n%s", cl.error.toLocal8Bit().constData(),
                     CommandLine::helpText().toLocal8Bit().constData());
        return 2;
    case CommandLine::Action::Run:
        break;
    }

    // A second copy ends at once and silently while the first runs.
    lanmira::SingleInstance instance;
    if (!instance.acquire())
        return 0;

    lanmira::PackedDib::retainLargeBlocks();
    std::setlocale(LC_ALL, "");
    std::srand(static_cast<unsigned>(std::time(nullptr)));

    if (!hasDisplay(argc, argv)) {
        std::fprintf(stderr, "lanmira: no display found. Start it from a desktop session, or "
                             "under a virtual display with: xvfb-run -a lanmira\n");
        return 1;
    }

    QApplication qapp(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setDesktopFileName(QStringLiteral("org.vornalt.Lanmira"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("org.vornalt.Lanmira"),
                                                 QIcon(QStringLiteral(":/icons/lanmira.png"))));

    lanmira::CPellanoApp app({.path = cl.path, .executablePath = {}, .reportFailure = {}});
    qapp.installEventFilter(app.busyFilter());
    if (!app.initInstance())
        return app.exitInstance(0);
    const int code = QApplication::exec();
    return app.exitInstance(code);
}

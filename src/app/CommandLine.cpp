#include "app/CommandLine.h"

#include "app/ProductVersion.h"

#include <array>

namespace lanmira {
namespace {

// QApplication's own options; they are left to it, with the value of those that take one.
bool isQtOption(QStringView name, bool& takesValue) {
    static constexpr std::array<const char16_t*, 17> withValue = {u"platform",
                                                                  u"platformpluginpath",
                                                                  u"platformtheme",
                                                                  u"plugin",
                                                                  u"style",
                                                                  u"stylesheet",
                                                                  u"session",
                                                                  u"display",
                                                                  u"geometry",
                                                                  u"title",
                                                                  u"name",
                                                                  u"visual",
                                                                  u"ncols",
                                                                  u"cmap",
                                                                  u"qwindowgeometry",
                                                                  u"qwindowtitle",
                                                                  u"qwindowicon"};
    static constexpr std::array<const char16_t*, 6> flags = {
        u"reverse", u"widgetcount", u"nograb", u"dograb", u"sync", u"qmljsdebugger"};
    const QStringView bare = name.left(name.indexOf(u'=')); // "-style=fusion" carries its value
    for (const char16_t* o : withValue)
        if (bare == QStringView(o)) {
            takesValue = name.indexOf(u'=') < 0;
            return true;
        }
    for (const char16_t* o : flags)
        if (bare == QStringView(o)) {
            takesValue = false;
            return true;
        }
    return false;
}

} // namespace

CommandLine CommandLine::parse(const QStringList& args) {
    CommandLine cl;
    bool optionsEnded = false;
    bool skipValue = false;
    for (const QString& a : args) {
        if (skipValue) {
            skipValue = false;
            continue;
        }
        if (!optionsEnded && a == u"--") {
            optionsEnded = true;
            continue;
        }
        if (!optionsEnded && a.startsWith(u'-') && a.size() > 1) {
            if (a == u"--version") {
                cl.action = Action::PrintVersion;
                return cl;
            }
            if (a == u"--help" || a == u"-h") {
                cl.action = Action::PrintHelp;
                return cl;
            }
            const QStringView name = QStringView(a).mid(a.startsWith(u"--") ? 2 : 1);
            if (isQtOption(name, skipValue))
                continue;
            cl.action = Action::Error;
            cl.error = QStringLiteral("unknown option '%1'").arg(a);
            return cl;
        }
        if (!cl.path.isEmpty()) {
            cl.action = Action::Error;
            cl.error = QStringLiteral("only one file or folder may be given");
            return cl;
        }
        cl.path = a;
    }
    return cl;
}

QString CommandLine::versionText() {
    return QStringLiteral(LANMIRA_PRODUCT_NAME " " LANMIRA_VERSION_TEXT);
}

QString CommandLine::helpText() {
    return QStringLiteral("Usage: lanmira [OPTION]... [FILE | FOLDER]\n"
                          "Browse, view and capture microscope and inspection camera images.\n"
                          "\n"
                          "  FILE         open this image in the viewer\n"
                          "  FOLDER       show this folder in the browser\n"
                          "  -h, --help   show this help and exit\n"
                          "  --version    show the version and exit\n"
                          "\n"
                          "Qt's own options, such as -platform NAME, are accepted too.\n"
                          "Only one copy runs per user session; starting another does nothing.\n");
}

} // namespace lanmira

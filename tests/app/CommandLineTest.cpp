#include "app/CommandLine.h"

#include <gtest/gtest.h>

using lanmira::CommandLine;
using Action = CommandLine::Action;

TEST(CommandLine, ParsesOptionsPathsAndQtsOwnOptions) {
    struct Row {
        QStringList args;
        Action action;
        QString path;
    };
    const std::vector<Row> rows = {
        {{}, Action::Run, {}},
        {{QStringLiteral("/data/slides")}, Action::Run, QStringLiteral("/data/slides")},
        {{QStringLiteral("--version")}, Action::PrintVersion, {}},
        {{QStringLiteral("a.png"), QStringLiteral("--help")}, Action::PrintHelp, {}},
        {{QStringLiteral("-h")}, Action::PrintHelp, {}},
        {{QStringLiteral("--frobnicate")}, Action::Error, {}},
        {{QStringLiteral("a.png"), QStringLiteral("b.png")}, Action::Error, {}},
        // Qt takes these itself; their values are not our path.
        {{QStringLiteral("-platform"), QStringLiteral("offscreen"), QStringLiteral("x.tif")},
         Action::Run,
         QStringLiteral("x.tif")},
        {{QStringLiteral("--style=fusion"), QStringLiteral("-reverse")}, Action::Run, {}},
        // After "--" a name that starts with a dash is a file.
        {{QStringLiteral("--"), QStringLiteral("-odd.jpg")},
         Action::Run,
         QStringLiteral("-odd.jpg")},
        {{QStringLiteral("-")}, Action::Run, QStringLiteral("-")},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.args.join(u' ').toStdString());
        const CommandLine cl = CommandLine::parse(r.args);
        EXPECT_EQ(cl.action, r.action);
        if (r.action == Action::Run) {
            EXPECT_EQ(cl.path, r.path);
        }
        if (r.action == Action::Error) {
            EXPECT_FALSE(cl.error.isEmpty());
        }
    }
}

TEST(CommandLine, VersionTextIsExact) {
    EXPECT_EQ(CommandLine::versionText(), QStringLiteral("Lanmira 1.1.4004"));
    EXPECT_TRUE(CommandLine::helpText().contains(QStringLiteral("--version")));
}

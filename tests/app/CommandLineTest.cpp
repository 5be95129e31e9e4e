#include "app/CommandLine.h"

#include <gtest/gtest.h>

using lanmira::CommandLine;
using Action = CommandLine::Action;
using namespace Qt::StringLiterals;

TEST(CommandLine, ParsesOptionsPathsAndQtsOwnOptions) {
    struct Row {
        QStringList args;
        Action action;
        QString path;
    };
    const std::vector<Row> rows = {
        {{}, Action::Run, {}},
        {{u"/data/slides"_s}, Action::Run, u"/data/slides"_s},
        {{u"--version"_s}, Action::PrintVersion, {}},
        {{u"a.png"_s, u"--help"_s}, Action::PrintHelp, {}},
        {{u"-h"_s}, Action::PrintHelp, {}},
        {{u"--frobnicate"_s}, Action::Error, {}},
        {{u"a.png"_s, u"b.png"_s}, Action::Error, {}},
        // Qt takes these itself; their values are not our path.
        {{u"-platform"_s, u"offscreen"_s, u"x.tif"_s}, Action::Run, u"x.tif"_s},
        {{u"--style=fusion"_s, u"-reverse"_s}, Action::Run, {}},
        // After "--" a name that starts with a dash is a file.
        {{u"--"_s, u"-odd.jpg"_s}, Action::Run, u"-odd.jpg"_s},
        {{u"-"_s}, Action::Run, u"-"_s},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.args.join(u' ').toStdString());
        const CommandLine cl = CommandLine::parse(r.args);
        EXPECT_EQ(cl.action, r.action);
        if (r.action == Action::Run) {
            EXPECT_EQ(cl.path, r.path);
        }
        EXPECT_EQ(cl.error.isEmpty(), r.action != Action::Error);
    }
}

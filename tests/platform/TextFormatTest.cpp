#include "platform/TextFormat.h"

#include <gtest/gtest.h>

using lanmira::formatText;
using namespace Qt::StringLiterals;

TEST(TextFormat, FormatsLikePrintfWithTypedArguments) {
    struct Row {
        QString format;
        std::vector<lanmira::FormatArg> args;
        QString expected;
    };
    const std::vector<Row> rows = {
        {u"%s%04d.%s"_s, {u"Lanmira"_s, 2, "jpg"}, u"Lanmira0002.jpg"_s},
        {u"%s%04d.%s"_s, {u"Lanmira"_s, 12345, "jpg"}, u"Lanmira12345.jpg"_s},
        {u"%d bpp  %d x %d"_s, {24, 640, 480}, u"24 bpp  640 x 480"_s},
        {u"%.3fms"_s, {12.5}, u"12.500ms"_s},
        {u"%s [%%.3f, %%.3f] ms"_s, {"Range"}, u"Range [%.3f, %.3f] ms"_s},
        {u"%u"_s, {-1}, u"4294967295"_s},
        {u"%5d|%-5d|"_s, {42, 42}, u"   42|42   |"_s},
        // A translation whose conversions do not fit its arguments stays readable.
        {u"%d files in %s"_s, {"x", 3}, u"x files in 3"_s},
        {u"%s and %s"_s, {"one"}, u"one and %s"_s},
        {u"100%"_s, {}, u"100%"_s},
        {u"Über %s"_s, {"Lanmira"}, u"Über Lanmira"_s},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.format.toStdString());
        EXPECT_EQ(formatText(r.format, r.args), r.expected);
    }
}

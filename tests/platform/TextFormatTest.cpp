#include "platform/TextFormat.h"

#include <gtest/gtest.h>

using lanmira::formatText;

TEST(TextFormat, FormatsLikePrintfWithTypedArguments) {
    struct Row {
        QString format;
        std::vector<lanmira::FormatArg> args;
        QString expected;
    };
    const QString s = QStringLiteral("Lanmira");
    const std::vector<Row> rows = {
        {QStringLiteral("%s%04d.%s"), {s, 2, "jpg"}, QStringLiteral("Lanmira0002.jpg")},
        {QStringLiteral("%s%04d.%s"), {s, 12345, "jpg"}, QStringLiteral("Lanmira12345.jpg")},
        {QStringLiteral("%d bpp  %d x %d"), {24, 640, 480}, QStringLiteral("24 bpp  640 x 480")},
        {QStringLiteral("%.2f"), {1.0}, QStringLiteral("1.00")},
        {QStringLiteral("%.3fms"), {12.5}, QStringLiteral("12.500ms")},
        {QStringLiteral("%s [%%.3f, %%.3f] ms"),
         {"Range"},
         QStringLiteral("Range [%.3f, %.3f] ms")},
        {QStringLiteral("%u"), {-1}, QStringLiteral("4294967295")},
        {QStringLiteral("%d/%d"), {3, 10}, QStringLiteral("3/10")},
        {QStringLiteral("%5d|%-5d|"), {42, 42}, QStringLiteral("   42|42   |")},
        // A translation whose conversions do not fit its arguments stays readable.
        {QStringLiteral("%d files in %s"), {"x", 3}, QStringLiteral("x files in 3")},
        {QStringLiteral("%s and %s"), {"one"}, QStringLiteral("one and %s")},
        {QStringLiteral("100%"), {}, QStringLiteral("100%")},
        {QStringLiteral("Über %s"), {"Lanmira"}, QStringLiteral("Über Lanmira")},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.format.toStdString());
        EXPECT_EQ(formatText(r.format, r.args), r.expected);
    }
}

#include "platform/MenuBuilder.h"

#include <gtest/gtest.h>

using lanmira::MenuBuilder;

TEST(MenuBuilder, SplitsLabelAndShortcutsAsTheCatalogsWriteThem) {
    struct Row {
        QString text;
        QString label;
        QList<QKeySequence> keys;
    };
    const std::vector<Row> rows = {
        {QStringLiteral("E&xit"), QStringLiteral("E&xit"), {}},
        {QStringLiteral("&Refresh\tF5"), QStringLiteral("&Refresh"), {QKeySequence(Qt::Key_F5)}},
        {QStringLiteral("&Next\tCtrl+PageDown"),
         QStringLiteral("&Next"),
         {QKeySequence(Qt::CTRL | Qt::Key_PageDown)}},
        {QStringLiteral("&Open...\tInsert"),
         QStringLiteral("&Open..."),
         {QKeySequence(Qt::Key_Insert)}},
        {QStringLiteral("&Slide Show\tPause"),
         QStringLiteral("&Slide Show"),
         {QKeySequence(Qt::Key_Pause)}},
        {QStringLiteral("&Best Fit\tNumPad*"),
         QStringLiteral("&Best Fit"),
         {QKeySequence(Qt::KeypadModifier | Qt::Key_Asterisk)}},
        {QStringLiteral("&Lock\tCtrl+NumPad/"),
         QStringLiteral("&Lock"),
         {QKeySequence(QKeyCombination(Qt::ControlModifier | Qt::KeypadModifier, Qt::Key_Slash))}},
        {QStringLiteral("Auto &Enlarge to Fit\tCtrl+NumPad+"),
         QStringLiteral("Auto &Enlarge to Fit"),
         {QKeySequence(QKeyCombination(Qt::ControlModifier | Qt::KeypadModifier, Qt::Key_Plus))}},
        {QStringLiteral("&Delete\t[Shift+]Delete"),
         QStringLiteral("&Delete"),
         {QKeySequence(Qt::Key_Delete), QKeySequence(Qt::SHIFT | Qt::Key_Delete)}},
        {QStringLiteral("&View Properties...\tShift+V"),
         QStringLiteral("&View Properties..."),
         {QKeySequence(Qt::SHIFT | Qt::Key_V)}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text.toStdString());
        const auto t = MenuBuilder::parse(r.text);
        EXPECT_EQ(t.label, r.label);
        EXPECT_EQ(t.shortcuts, r.keys);
    }
}

#include "platform/MenuBuilder.h"

#include <gtest/gtest.h>

using lanmira::MenuBuilder;
using namespace Qt::StringLiterals;

TEST(MenuBuilder, SplitsLabelAndShortcutsAsTheCatalogsWriteThem) {
    const auto keypad = [](Qt::Key key) {
        return QKeySequence(QKeyCombination(Qt::ControlModifier | Qt::KeypadModifier, key));
    };
    const std::vector<std::pair<QString, QList<QKeySequence>>> rows = {
        {u"E&xit"_s, {}},
        {u"&Refresh\tF5"_s, {Qt::Key_F5}},
        {u"&Next\tCtrl+PageDown"_s, {Qt::CTRL | Qt::Key_PageDown}},
        {u"&Open...\tInsert"_s, {Qt::Key_Insert}},
        {u"&Slide Show\tPause"_s, {Qt::Key_Pause}},
        {u"&Best Fit\tNumPad*"_s, {Qt::KeypadModifier | Qt::Key_Asterisk}},
        {u"&Lock\tCtrl+NumPad/"_s, {keypad(Qt::Key_Slash)}},
        {u"Auto &Enlarge to Fit\tCtrl+NumPad+"_s, {keypad(Qt::Key_Plus)}},
        {u"&Delete\t[Shift+]Delete"_s, {Qt::Key_Delete, Qt::SHIFT | Qt::Key_Delete}},
        {u"&View Properties...\tShift+V"_s, {Qt::SHIFT | Qt::Key_V}},
    };
    for (const auto& [text, keys] : rows) {
        SCOPED_TRACE(text.toStdString());
        const auto t = MenuBuilder::parse(text);
        EXPECT_EQ(t.label, text.section(u'\t', 0, 0));
        EXPECT_EQ(t.shortcuts, keys);
    }
}

#include "viewer/ImageNavigator.h"

#include "browser/BrowserList.h"
#include "viewer/ViewerReceiver.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <set>

using namespace lanmira;
using namespace Qt::StringLiterals;
using Step = ImageNavigator::Step;

namespace {

class ImageNavigatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (QChar c : u"abcde"_s)
            m_list.items().push_back(std::make_unique<BrowserItem>(u"/pictures/"_s + c, 2, c));
        ViewerReceiver::set([this](const QString& path, const QString& link) {
            // Opening decodes a file: the list must not be locked meanwhile.
            const bool free = m_list.lock().try_lock();
            if (free)
                m_list.lock().unlock();
            EXPECT_TRUE(free);
            m_opened << path.right(1) + link;
        });
    }
    void TearDown() override { ViewerReceiver::clear(); }

    void select(const std::set<int>& which) {
        for (std::size_t i = 0; i < m_list.items().size(); ++i)
            m_list.items()[i]->setSelected(which.count(static_cast<int>(i)) != 0);
    }
    std::set<int> selection() const {
        std::set<int> out;
        for (std::size_t i = 0; i < m_list.items().size(); ++i)
            if (m_list.items()[i]->selected())
                out.insert(static_cast<int>(i));
        return out;
    }

    BrowserList m_list;
    ImageNavigator m_nav{m_list};
    QStringList m_opened;
};

TEST_F(ImageNavigatorTest, StepsStopAtTheEndsWithoutWrapping) {
    const struct {
        Step step;
        int from, to; // to -1: nothing happens
    } cases[] = {
        {Step::First, 3, 0}, {Step::First, 0, -1}, {Step::Previous, 3, 2}, {Step::Previous, 0, -1},
        {Step::Next, 3, 4},  {Step::Next, 4, -1},  {Step::Last, 1, 4},     {Step::Last, 4, -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "step " << int(c.step) << " from " << c.from);
        select({c.from});
        m_opened.clear();
        EXPECT_EQ(m_nav.canStep(c.step), c.to >= 0);
        m_nav.step(c.step);
        EXPECT_EQ(selection(), std::set{c.to >= 0 ? c.to : c.from});
        const QString name(QChar(u'a' + c.to));
        EXPECT_EQ(m_opened, c.to >= 0 ? QStringList{name + name} : QStringList{});
    }
}

TEST_F(ImageNavigatorTest, WithoutAReceiverAStepOnlyDropsTheSelection) {
    ViewerReceiver::clear();
    select({2});
    m_nav.step(Step::Next);
    EXPECT_TRUE(selection().empty());
    select({2});
    EXPECT_FALSE(m_nav.openSelected());
    m_nav.showPosition(1);
    EXPECT_TRUE(selection().empty());
}

TEST_F(ImageNavigatorTest, TwoSelectedDisableTheCommandsButAStepMovesFromTheFirst) {
    select({1, 3});
    for (Step s : {Step::First, Step::Previous, Step::Next, Step::Last})
        EXPECT_FALSE(m_nav.canStep(s));
    EXPECT_FALSE(m_nav.openSelected());
    m_nav.step(Step::Next);
    EXPECT_EQ(selection(), (std::set{2, 3}));
    EXPECT_EQ(m_opened, QStringList{u"cc"_s});
    select({});
    m_nav.step(Step::Next);
    EXPECT_TRUE(m_opened.size() == 1 && selection().empty());
}

TEST_F(ImageNavigatorTest, ShowPositionAndSelectShownFile) {
    // After a delete: the first selected item gives way to the clamped position.
    for (const auto& [position, shown] : {std::pair(2, 2), std::pair(9, 4), std::pair(-3, 0)}) {
        select({0, 1});
        m_nav.showPosition(position);
        EXPECT_EQ(selection(), (std::set{1, shown}));
    }
    EXPECT_EQ(m_opened, (QStringList{u"cc"_s, u"ee"_s, u"aa"_s}));

    EXPECT_TRUE(m_nav.selectShownFile(u"/PICTURES/C"_s));
    EXPECT_EQ(selection(), std::set{2});
    EXPECT_FALSE(m_nav.selectShownFile(u"/pictures/z"_s) || m_nav.selectShownFile({}));
    EXPECT_EQ(selection(), std::set{2});
    EXPECT_TRUE(m_nav.openSelected());
    EXPECT_EQ(m_opened.last(), u"cc"_s);
}

} // namespace

#include "browser/grid/GridSelection.h"

#include "browser/BrowserList.h"
#include "browser/grid/GridLayout.h"
#include "imagelib/imagelib.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

namespace lanmira {
namespace {

using State = GridSelection::State;

// Six large cells in three columns of 106 × 126.
class GridSelectionTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (int k = 0; k < 6; ++k)
            m_list.items().push_back(
                std::make_unique<BrowserItem>(u"/pics/%1.jpg"_s.arg(k), IMAGELIB_FMT_JPEG));
        GridLayout::Input in;
        in.itemCount = 6;
        in.client = {330, 400};
        GridLayout::layOut(m_list, in);
    }

    static QPoint centre(int k) { return {106 * (k % 3) + 53, 126 * (k / 3) + 63}; }
    QString marks() const {
        QString out;
        for (const auto& item : m_list.items())
            out += item->selected() ? u'x' : u'.';
        return out;
    }

    BrowserList m_list;
    GridSelection m_selection{m_list};
    std::vector<int> m_changed;
    GridSelection::CellChanged m_record = [this](int k) { m_changed.push_back(k); };
};

TEST_F(GridSelectionTest, PressesOnPicturesSelectAndBecomeADragOnlyOutsideTheSquare) {
    EXPECT_TRUE(m_selection.press(centre(0), {10, 10}, false, m_record));
    EXPECT_EQ(m_selection.state(), State::PressedOnItem);
    EXPECT_FALSE(m_selection.leavesDragSquare({18, 2})) << "8 pixels away stays a click";
    EXPECT_TRUE(m_selection.leavesDragSquare({10, 19}));
    EXPECT_EQ(m_selection.state(), State::Idle);
    EXPECT_FALSE(m_selection.leavesDragSquare({100, 100})) << "only once per press";

    EXPECT_TRUE(m_selection.press(centre(4), {}, true, m_record));
    EXPECT_EQ(marks(), u"x...x."_s) << "Ctrl adds";
    // Pressing on a selected picture keeps the whole selection, so it can be dragged.
    EXPECT_FALSE(m_selection.press(centre(0), {}, false, m_record));
    EXPECT_EQ(marks(), u"x...x."_s);
    EXPECT_TRUE(m_selection.press(centre(2), {}, false, m_record));
    EXPECT_EQ(marks(), u"..x..."_s);
    EXPECT_EQ(m_changed, (std::vector<int>{0, 4, 0, 4, 2}));
    EXPECT_EQ(m_selection.onlySelected(), m_list.items()[2].get());
    m_list.items()[5]->setSelected(true);
    EXPECT_EQ(m_selection.onlySelected(), nullptr);
}

TEST_F(GridSelectionTest, BandBetweenPicturesAndItsEnd) {
    EXPECT_FALSE(m_selection.press({2, 2}, {2, 2}, false, m_record)) << "the inset is no hit";
    EXPECT_TRUE(m_selection.banding());
    EXPECT_FALSE(m_selection.moveBand({2, 2}, false, m_record)) << "no size, no selection";
    EXPECT_FALSE(m_selection.moveBand({2, 200}, false, m_record)) << "no width, no selection";
    EXPECT_TRUE(m_selection.moveBand({150, 200}, false, m_record));
    EXPECT_EQ(marks(), u"xx.xx."_s);
    EXPECT_EQ(m_selection.bandRect(), QRect(2, 2, 148, 198));
    EXPECT_TRUE(m_selection.moveBand({50, 50}, false, m_record));
    EXPECT_EQ(marks(), u"x....."_s) << "what the band leaves is deselected";
    EXPECT_TRUE(m_selection.release()) << "the band is to be erased";
    EXPECT_FALSE(m_selection.release());
    EXPECT_FALSE(m_selection.moveBand({300, 300}, false, m_record)) << "no band after release";
}

TEST_F(GridSelectionTest, ReleaseDuringADragWaitsForItsEndAndMenuPressSelectsOnlyTheUnselected) {
    m_selection.beginDrag();
    EXPECT_FALSE(m_selection.release());
    EXPECT_TRUE(m_selection.dragging());
    m_selection.endDrag();
    EXPECT_EQ(m_selection.state(), State::Idle);

    m_list.items()[1]->setSelected(true);
    m_list.items()[3]->setSelected(true);
    EXPECT_FALSE(m_selection.pressForMenu(centre(3), m_record));
    EXPECT_EQ(marks(), u".x.x.."_s);
    EXPECT_TRUE(m_selection.pressForMenu(centre(5), m_record));
    EXPECT_EQ(marks(), u".....x"_s);
    EXPECT_FALSE(m_selection.pressForMenu({2, 2}, m_record));
}

} // namespace
} // namespace lanmira

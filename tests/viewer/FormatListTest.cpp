#include "i18n/i18n.h"
#include "viewer/CFmtDlg.h"
#include "viewer/CFmtListCtrl.h"
#include "viewer/FmtListModel.h"
#include "viewer/FormatListLogic.h"

#include <QHeaderView>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

using namespace lanmira;
using namespace Qt::StringLiterals;

namespace {

FormatListLogic::Words allFive() {
    FormatListLogic::Words words;
    words.fill(5);
    return words;
}

TEST(FormatListLogic, ExtensionWalkStopsAtTheFirstRowOfFormatZero) {
    const ImageLibExtFmt table[] = {{"jpg", 2},    {"png", 3}, {"jpeg", 2},
                                    {"hidden", 0}, {"jpe", 2}, {nullptr, 0}};
    EXPECT_EQ(FormatListLogic::extensions(2, table), u"*.jpg; *.jpeg"_s);
    EXPECT_EQ(FormatListLogic::extensions(3, table), u"*.png"_s);
    EXPECT_EQ(FormatListLogic::extensions(9, table), QString());

    const ImageLibExtFmt zeroFirst[] = {{"none", 0}, {"jpg", 2}, {nullptr, 0}};
    EXPECT_EQ(FormatListLogic::extensions(2, zeroFirst), QString());

    // The library's own table, in its own order.
    EXPECT_EQ(FormatListLogic::extensions(IMAGELIB_FMT_JPEG), u"*.jpg; *.jpeg; *.jpe; *.jfif"_s);
}

// A library whose descriptions skip numbers and carry their own format numbers.
const ImageLibFmtInfo* sparseInfo(int format) {
    static const ImageLibFmtInfo kTiff{4, "TIFF"};
    static const ImageLibFmtInfo kPng{3, "PNG"};
    static const ImageLibFmtInfo kOdd{12, "Odd"}; // asked as 9, numbered 12
    switch (format) {
    case 3:
        return &kPng;
    case 4:
        return &kTiff;
    case 9:
        return &kOdd;
    default:
        return nullptr;
    }
}

TEST(FormatListLogic, RowsComeFromDescriptionsAndTogglesFindWordsByNumber) {
    const auto rows = FormatListLogic::describedRows(&sparseInfo);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].name, u"PNG"_s);
    EXPECT_EQ(rows[2].format, 12u);

    FmtListModel model(rows, allFive(), {});
    model.toggle(2, 1); // row 2 is format 12, not format 2
    EXPECT_EQ(model.words()[12], 7u);
    EXPECT_EQ(model.words()[2], 5u);
    model.toggle(0, 0);
    model.toggle(0, 2);
    EXPECT_EQ(model.words()[3], 0u);
    model.setDefaults();
    EXPECT_EQ(model.words(), allFive());
    EXPECT_EQ(model.data(model.index(1, FormatListLogic::Associated), Qt::CheckStateRole),
              Qt::Unchecked);
}

TEST(FormatListLogic, BoxesAreCentredAndHitInColumnOrder) {
    // Right and bottom edges exclusive; odd sizes round down.
    EXPECT_EQ(FormatListLogic::boxRect(QRect(390, 20, 48, 22)), QRect(406, 23, 16, 16));
    EXPECT_EQ(FormatListLogic::boxRect(QRect(0, 0, 17, 17)), QRect(0, 0, 16, 16));

    const std::array<QRect, 3> cells = {QRect(390, 20, 48, 22), QRect(438, 20, 40, 22),
                                        QRect(478, 20, 116, 22)};
    EXPECT_EQ(FormatListLogic::bitAt({406, 23}, cells), 0);
    EXPECT_EQ(FormatListLogic::bitAt({421, 38}, cells), 0);
    EXPECT_EQ(FormatListLogic::bitAt({422, 30}, cells), -1); // right of the box, same cell
    EXPECT_EQ(FormatListLogic::bitAt({450, 30}, cells), 1);
    EXPECT_EQ(FormatListLogic::bitAt({536, 31}, cells), 2);
    EXPECT_EQ(FormatListLogic::bitAt({480, 30}, cells), -1);
}

class FormatListWidget : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(i18n_init(QString::fromUtf8(LANMIRA_BUILD_DIR "/share/lanmira/i18n"), 0));
    }
    static void TearDownTestSuite() { i18n_reset(); }

    static QPoint centreOfBox(CFmtListCtrl& list, int row, int column) {
        return FormatListLogic::boxRect(list.visualRect(list.model()->index(row, column))).center();
    }
};

TEST_F(FormatListWidget, PressesOnBoxesToggleTheirBitAndSelectTheRow) {
    CFmtDlg dialog(u"Lanmira"_s, allFive());
    dialog.resize(800, 500);
    dialog.show();
    CFmtListCtrl* list = dialog.list();
    // A first start: every format listed, none opened by us, every third box ticked.
    ASSERT_EQ(list->model()->rowCount(), static_cast<int>(FormatListLogic::describedRows().size()));
    for (int r = 0; r < list->model()->rowCount(); ++r)
        EXPECT_TRUE(list->fmtModel()->ticked(r, 0) && !list->fmtModel()->ticked(r, 1) &&
                    list->fmtModel()->ticked(r, 2));
    for (int c = 0; c < FormatListLogic::ColumnCount; ++c)
        EXPECT_FALSE(list->model()->headerData(c, Qt::Horizontal).toString().startsWith(u"ids_"_s));
    QWidget* viewport = list->viewport();
    const int png = [&] {
        for (int r = 0; r < list->model()->rowCount(); ++r)
            if (list->fmtModel()->formatOfRow(r) == IMAGELIB_FMT_PNG)
                return r;
        return -1;
    }();
    ASSERT_GE(png, 0);

    QTest::mouseClick(viewport, Qt::LeftButton, {},
                      centreOfBox(*list, png, FormatListLogic::Associated));
    EXPECT_EQ(dialog.words()[IMAGELIB_FMT_PNG], 7u);
    EXPECT_EQ(list->selectionModel()->selectedRows().value(0).row(), png);

    QTest::mouseClick(viewport, Qt::LeftButton, {},
                      centreOfBox(*list, png, FormatListLogic::Listed));
    QTest::mouseClick(viewport, Qt::LeftButton, {}, centreOfBox(*list, png, FormatListLogic::Kept));
    EXPECT_EQ(dialog.words()[IMAGELIB_FMT_PNG], 2u);
    // The right button never toggles.
    QTest::mouseClick(viewport, Qt::RightButton, {},
                      centreOfBox(*list, png, FormatListLogic::Kept));
    EXPECT_EQ(dialog.words()[IMAGELIB_FMT_PNG], 2u);

    // A press in the row away from the boxes only selects it.
    const int other = png == 0 ? 1 : 0;
    const QRect nameCell = list->visualRect(list->model()->index(other, FormatListLogic::Name));
    QTest::mouseClick(viewport, Qt::LeftButton, {}, nameCell.center());
    const QRect keptCell = list->visualRect(list->model()->index(other, FormatListLogic::Kept));
    QTest::mouseClick(viewport, Qt::LeftButton, {}, keptCell.topLeft() + QPoint(2, 2));
    EXPECT_EQ(dialog.words()[list->fmtModel()->formatOfRow(other)], 5u);
    EXPECT_EQ(list->selectionModel()->selectedRows().value(0).row(), other);

    // The keyboard reaches the boxes too: Space toggles the current cell's bit.
    list->setCurrentIndex(list->model()->index(png, FormatListLogic::Associated));
    QTest::keyClick(list, Qt::Key_Space);
    EXPECT_EQ(dialog.words()[IMAGELIB_FMT_PNG], 0u);

    dialog.findChild<QPushButton*>(u"default"_s)->click();
    EXPECT_EQ(dialog.words(), allFive());
}

} // namespace

#include "i18n/i18n.h"
#include "imagelib/imagelib.h"
#include "imagelib/iopt.h"
#include "viewer/SaveSetupLogic.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace lanmira;
using namespace Qt::StringLiterals;

namespace {

bool sameOptions(IoptOptions a, IoptOptions b) {
    return a.value1 == b.value1 && a.value2 == b.value2;
}

// The option defaults live in a scratch settings folder, so a test can change them.
class SaveSetup : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_config.isValid());
        iopt_init(m_config.path().toUtf8().constData(), "Acme", "Lanmira");
        i18n_init(QString::fromUtf8(LANMIRA_BUILD_DIR "/share/lanmira/i18n"), 0);
    }
    void TearDown() override {
        iopt_fini();
        i18n_reset();
    }

    const QStringList m_formats = {u"bmp"_s, u"jpg"_s, u"png"_s, u"tif"_s, u"gif"_s};

private:
    QTemporaryDir m_config;
};

TEST_F(SaveSetup, SelectionAndFormatNumberRules) {
    struct Case {
        QString current;
        int index;
        int format;
    };
    const Case cases[] = {
        {u"png"_s, 2, IMAGELIB_FMT_PNG},
        {u"PNG"_s, 2, IMAGELIB_FMT_PNG},  // case does not matter
        {u"webp"_s, 0, IMAGELIB_FMT_BMP}, // not in the list: its first entry
        {u""_s, 0, IMAGELIB_FMT_BMP},
    };
    for (const Case& c : cases) {
        const SaveSetupLogic logic(m_formats, c.current);
        EXPECT_EQ(logic.selectedIndex(), c.index) << c.current.toStdString();
        EXPECT_EQ(logic.extension(), m_formats[c.index]);
        EXPECT_EQ(logic.format(), c.format) << c.current.toStdString();
        EXPECT_TRUE(sameOptions(logic.options(), iopt_get_default(c.format)));
    }
    EXPECT_EQ(SaveSetupLogic::formatOf(u"JPEG"_s), static_cast<int>(IMAGELIB_FMT_JPEG));
    EXPECT_EQ(SaveSetupLogic::formatOf(u"xyz"_s), 0);
    EXPECT_EQ(SaveSetupLogic::formatOf(u""_s), 0);

    // A list the format table does not know: format 0, with format 0's defaults.
    SaveSetupLogic unknown({u"xyz"_s}, u"xyz"_s);
    EXPECT_EQ(unknown.format(), 0);
    EXPECT_FALSE(unknown.hasOptionDialog());
    EXPECT_TRUE(sameOptions(unknown.options(), iopt_get_default(0)));
    // No list at all: nothing selected, no format.
    const SaveSetupLogic none({}, u"jpg"_s);
    EXPECT_EQ(none.selectedIndex(), -1);
    EXPECT_EQ(none.format(), 0);

    // An over-long extension is cut to 256 characters.
    unknown.select(QString(300, u'x'));
    EXPECT_EQ(unknown.extension().size(), SaveSetupLogic::kMaxExtension);
}

TEST_F(SaveSetup, EveryChangeFetchesTheFormatsDefaults) {
    iopt_set_default(IMAGELIB_FMT_JPEG, {77, IOPT_JPEG_PROGRESSIVE});
    SaveSetupLogic logic(m_formats, u"png"_s);
    logic.setOptions({3, 0});
    logic.select(u"jpg"_s);
    EXPECT_TRUE(sameOptions(logic.options(), {77, IOPT_JPEG_PROGRESSIVE}));
    logic.select(u"png"_s);
    EXPECT_TRUE(sameOptions(logic.options(), iopt_get_default(IMAGELIB_FMT_PNG)));
}

} // namespace

#include "imagelib/imagelib.h"
#include "imagelib/iopt.h"
#include "platform/CImageOptionsDlg.h"

#include <QCheckBox>
#include <QComboBox>
#include <QSlider>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>

using namespace lanmira;

TEST(ImageOptions, ChoicesPersistPerFormatBelowTheSettingsRoot) {
    QTemporaryDir home;
    const std::string dir = home.path().toStdString();
    iopt_init(dir.c_str(), "Acme", "Scope");
    EXPECT_EQ(iopt_get_default(IMAGELIB_FMT_JPEG).value1, 90u);
    EXPECT_EQ(iopt_get_default(IMAGELIB_FMT_BMP).value1, 0u);
    iopt_set_default(IMAGELIB_FMT_JPEG, {60, IOPT_JPEG_PROGRESSIVE});
    iopt_set_default(IMAGELIB_FMT_BMP, {5, 5}); // no options: not stored
    iopt_fini();

    iopt_init(dir.c_str(), "Acme", "Scope");
    const IoptOptions jpeg = iopt_get_default(IMAGELIB_FMT_JPEG);
    EXPECT_EQ(jpeg.value1, 60u);
    EXPECT_EQ(jpeg.value2, IOPT_JPEG_PROGRESSIVE);
    EXPECT_EQ(iopt_get_default(IMAGELIB_FMT_BMP).value1, 0u);
    EXPECT_TRUE(std::filesystem::exists(dir + "/Acme/Scope/iopt.conf"));
    iopt_fini();
}

TEST(ImageOptions, DialogShowsAndReturnsEachFormatsValues) {
    CImageOptionsDlg jpeg(IMAGELIB_FMT_JPEG, {75, IOPT_JPEG_PROGRESSIVE});
    auto* quality = jpeg.findChild<QSlider*>();
    auto* progressive = jpeg.findChild<QCheckBox*>();
    ASSERT_TRUE(quality && progressive);
    EXPECT_EQ(quality->value(), 75);
    EXPECT_TRUE(progressive->isChecked());
    quality->setValue(40);
    progressive->setChecked(false);
    EXPECT_EQ(jpeg.options().value1, 40u);
    EXPECT_EQ(jpeg.options().value2, 0u);

    // PNG keeps level + 1 so that 0 can stand for the default level 6.
    CImageOptionsDlg png(IMAGELIB_FMT_PNG, {0, 0});
    EXPECT_EQ(png.findChild<QSlider*>()->value(), 6);
    png.findChild<QSlider*>()->setValue(0);
    EXPECT_EQ(png.options().value1, 1u);

    CImageOptionsDlg tiff(IMAGELIB_FMT_TIFF, {8, 0});
    EXPECT_EQ(tiff.findChild<QComboBox*>()->currentData().toUInt(), 8u);
    CImageOptionsDlg unknownTiff(IMAGELIB_FMT_TIFF, {12345, 0});
    EXPECT_EQ(unknownTiff.options().value1, 5u); // falls back to LZW
}

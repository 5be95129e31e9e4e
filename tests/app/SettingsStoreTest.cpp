#include "app/SettingsStore.h"

#include "app/SettingClamp.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using lanmira::SettingsStore;
using namespace Qt::StringLiterals;
namespace fs = std::filesystem;

namespace {

fs::path pathOf(const QTemporaryDir& dir) {
    return fs::path(dir.path().toStdString());
}

TEST(SettingsStore, ReadsDefaultsAndWritesNothingUntilTheKeyIsSet) {
    QTemporaryDir dir;
    SettingsStore store(pathOf(dir));
    store.setProfileName(u"Lanmira"_s);
    store.writeInt(u"options"_s, u"slide"_s, 5000);
    store.writeString(u"titleext"_s, u"ext"_s, u"png"_s);
    EXPECT_EQ(store.readInt(u"options"_s, u"slide"_s, 2000), 2000);
    EXPECT_EQ(store.readString(u"titleext"_s, u"ext"_s, u"jpg"_s), u"jpg"_s);
    EXPECT_TRUE(store.file().empty());
    EXPECT_TRUE(fs::is_empty(pathOf(dir)));
}

TEST(SettingsStore, KeepsValuesUnderCompanyAndAppWithoutRegardToCase) {
    QTemporaryDir dir;
    SettingsStore store(pathOf(dir));
    store.setRegistryKey(u"Vornalt\\Lanmira"_s);
    store.setProfileName(u"Lanmira"_s);
    EXPECT_EQ(store.file(), pathOf(dir) / "Vornalt/Lanmira/Lanmira.conf");

    store.writeInt(u"Options"_s, u"SLIDE"_s, 0);
    store.writeString(u"titleext"_s, u"title"_s, u"Probe Ä 日本"_s);
    store.writeString(u"titleext"_s, u"ext"_s, QString());
    EXPECT_EQ(store.readInt(u"options"_s, u"slide"_s, 2000), 0) << "the store does not clamp";
    EXPECT_EQ(store.readString(u"TITLEEXT"_s, u"Title"_s, u"Lanmira"_s), u"Probe Ä 日本"_s);
    EXPECT_EQ(store.readString(u"titleext"_s, u"ext"_s, u"jpg"_s), QString());
    EXPECT_EQ(store.readInt(u"Auto"_s, u"Slot"_s, 6), 6);
}

TEST(SettingsStore, DifferentCompaniesOrAppsKeepSeparateSettings) {
    QTemporaryDir dir;
    SettingsStore first(pathOf(dir));
    first.setRegistryKey(u"Vornalt\\Lanmira"_s);
    SettingsStore second(pathOf(dir));
    second.setRegistryKey(u"Other\\Scope"_s);
    second.setProfileName(u"Scope"_s);
    ASSERT_NE(first.file(), second.file());
    EXPECT_EQ(first.file(), pathOf(dir) / "Vornalt/Lanmira/Lanmira.conf")
        << "the profile name defaults to the app";

    first.writeInt(u"options"_s, u"slide"_s, 1500);
    second.writeInt(u"options"_s, u"slide"_s, 2500);
    EXPECT_EQ(first.readInt(u"options"_s, u"slide"_s, 0), 1500);
    EXPECT_EQ(second.readInt(u"options"_s, u"slide"_s, 0), 2500);
}

TEST(SettingClamp, ComparesWithoutSign) {
    const std::pair<int32_t, uint32_t> cases[] = {
        {0, 1000}, {500, 1000}, {2000, 2000}, {5'000'000, 3'600'000}, {-5, 3'600'000}};
    for (const auto& [stored, used] : cases)
        EXPECT_EQ(lanmira::clampUnsigned(stored, 1000, 3'600'000), used) << stored;
}

} // namespace

#include "app/SettingsStore.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using lanmira::SettingsStore;
using namespace Qt::StringLiterals;
namespace fs = std::filesystem;

namespace {

fs::path pathOf(const QTemporaryDir& dir) {
    return fs::path(dir.path().toStdString());
}

TEST(SettingsStore, CompaniesAndAppsKeepSeparateSettings) {
    QTemporaryDir dir;
    SettingsStore unset(pathOf(dir));
    unset.setProfileName(u"Lanmira"_s);
    unset.writeInt(u"options"_s, u"slide"_s, 5000);
    EXPECT_EQ(unset.readInt(u"options"_s, u"slide"_s, 2000), 2000);
    EXPECT_TRUE(fs::is_empty(pathOf(dir))) << "nothing is written until the key is set";

    SettingsStore first(pathOf(dir));
    first.setRegistryKey(u"Vornalt\\Lanmira"_s);
    SettingsStore second(pathOf(dir));
    second.setRegistryKey(u"Other\\Scope"_s);
    second.setProfileName(u"Probe"_s);
    EXPECT_EQ(first.file(), pathOf(dir) / "Vornalt/Lanmira/Lanmira.conf")
        << "the profile name defaults to the app";
    EXPECT_EQ(second.file(), pathOf(dir) / "Other/Scope/Probe.conf");

    first.writeInt(u"options"_s, u"slide"_s, 1500);
    second.writeString(u"options"_s, u"slide"_s, u"Probe Ä 日本"_s);
    EXPECT_EQ(first.readInt(u"options"_s, u"slide"_s, 0), 1500);
    EXPECT_EQ(second.readString(u"options"_s, u"slide"_s, QString()), u"Probe Ä 日本"_s);
}

} // namespace

#include "browser/BrowserList.h"
#include "browser/filetypes/DesktopEntryWriter.h"
#include "browser/filetypes/FormatWordsApplier.h"
#include "browser/filetypes/MimeAppsList.h"
#include "imagelib/imagelib.h"
#include "settings/RegistryKey.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>

using namespace lanmira;
using namespace Qt::StringLiterals;

namespace {

constexpr std::string_view kDefaults = MimeAppsList::kDefaultApplications;

// Files another program (or the user) wrote, each with our key absent at first.
struct ForeignList {
    const char* what;
    std::string text;
};

// Control bytes, invalid UTF-8, a NUL, lines that are neither groups nor pairs.
constexpr char kGarbage[] = "\x01\xff\xfe garbage [ no group\n=no key\n[Default Applications]\n"
                            "  spaced key  =  spaced value  \nnot a pair\n\0nul\n";

std::vector<ForeignList> foreignLists() {
    std::string huge = "[Default Applications]\n";
    for (int i = 0; i < 20000; ++i)
        huge +=
            "application/x-test-" + std::to_string(i) + "=app" + std::to_string(i) + ".desktop\n";
    return {
        {"empty", ""},
        {"comments and blank lines",
         "# written by hand\n\n[Default Applications]\n# keep me\ntext/plain=gedit.desktop\n\n"},
        {"CRLF line ends", "[Default Applications]\r\ntext/plain=a.desktop\r\n\r\n[Added "
                           "Associations]\r\nimage/png=b.desktop;c.desktop;\r\n"},
        {"duplicate groups", "[Default Applications]\ntext/plain=a.desktop\n[Added Associations]\n"
                             "image/png=x.desktop;\n[Default Applications]\ntext/html=b.desktop\n"},
        {"no final line end", "[Default Applications]\ntext/plain=a.desktop"},
        {"garbage", std::string(kGarbage, sizeof kGarbage - 1)},
        {"no default group", "[Added Associations]\nimage/png=x.desktop;\n"},
        {"huge", huge},
    };
}

// Read and written back, a file is unchanged; setting our key and removing it again gives
// it back exactly, and nothing but our key differs in between.
TEST(MimeAppsList, ForeignContentSurvivesByteForByte) {
    for (const ForeignList& f : foreignLists()) {
        MimeAppsList list = MimeAppsList::parse(f.text);
        EXPECT_EQ(list.text(), f.text) << f.what;
        const auto addedPlainBefore = list.value("Added Associations", "image/png");
        EXPECT_TRUE(list.setValue(kDefaults, "image/png", "Lanmira.1.desktop")) << f.what;
        EXPECT_EQ(list.value(kDefaults, "image/png"), "Lanmira.1.desktop") << f.what;
        EXPECT_EQ(list.value("Added Associations", "image/png"), addedPlainBefore) << f.what;
        EXPECT_FALSE(list.setValue(kDefaults, "image/png", "Lanmira.1.desktop")) << f.what;

        const std::string with = list.text();
        if (f.text.find("\r\n") != std::string::npos) {
            EXPECT_NE(with.find("image/png=Lanmira.1.desktop\r\n"), std::string::npos) << f.what;
        }

        EXPECT_TRUE(list.remove(kDefaults, "image/png")) << f.what;
        EXPECT_FALSE(list.remove(kDefaults, "image/png")) << f.what;
        // Only a group that did not exist before stays behind, empty.
        std::string expected = f.text;
        if (f.text.find("[Default Applications]") == std::string::npos)
            expected += (f.text.empty() ? "" : "\n") + std::string("[Default Applications]\n");
        EXPECT_EQ(list.text(), expected) << f.what;
    }
}

TEST(MimeAppsList, DuplicatesAndPlacement) {
    // The later occurrence wins when reading; a change reaches every occurrence.
    MimeAppsList dup = MimeAppsList::parse("[Default Applications]\nimage/png=a.desktop\n"
                                           "[Default Applications]\nimage/png=b.desktop\n");
    EXPECT_EQ(dup.value(kDefaults, "image/png"), "b.desktop");
    dup.setValue(kDefaults, "image/png", "c.desktop");
    EXPECT_EQ(dup.text(), "[Default Applications]\nimage/png=c.desktop\n"
                          "[Default Applications]\nimage/png=c.desktop\n");
    EXPECT_TRUE(dup.remove(kDefaults, "image/png"));
    EXPECT_EQ(dup.text(), "[Default Applications]\n[Default Applications]\n");

    // A new key joins the group's entries, before the blank line that ends the group.
    MimeAppsList gap = MimeAppsList::parse("[Default Applications]\ntext/plain=a.desktop\n\n"
                                           "[Added Associations]\ntext/plain=a.desktop;\n");
    gap.setValue(kDefaults, "image/gif", "Lanmira.1.desktop");
    EXPECT_EQ(gap.text(), "[Default Applications]\ntext/plain=a.desktop\n"
                          "image/gif=Lanmira.1.desktop\n\n"
                          "[Added Associations]\ntext/plain=a.desktop;\n");
    EXPECT_EQ(gap.value("Added Associations", "image/gif"), std::nullopt);
}

// A scratch desktop: config home, data home and a program path.
class Desktop {
public:
    Desktop() {
        FormatWordsApplier::Environment env;
        env.configHome = configHome();
        env.dataHome = m_dir.path() + u"/data"_s;
        env.programPath = u"/opt/My Programs/lanmira"_s;
        // A fixed map, so the test does not depend on the installed MIME database.
        env.mimeTypesOf = [](const QString& ext) -> QStringList {
            if (ext == u"png"_s)
                return {u"image/png"_s};
            if (ext == u"jpg"_s || ext == u"jpeg"_s || ext == u"jpe"_s)
                return {u"image/jpeg"_s};
            return {};
        };
        m_env = env;
    }

    std::filesystem::path configHome() const {
        return QString(m_dir.path() + u"/config"_s).toStdString();
    }
    QString listPath() const { return m_dir.path() + u"/config/mimeapps.list"_s; }
    QString entryPath() const { return m_dir.path() + u"/data/applications/Lanmira.1.desktop"_s; }

    std::string list() const {
        QFile f(listPath());
        return f.open(QIODevice::ReadOnly) ? f.readAll().toStdString() : std::string();
    }
    void writeList(const std::string& text) const {
        QDir().mkpath(m_dir.path() + u"/config"_s);
        QFile f(listPath());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(text.data(), static_cast<qint64>(text.size()));
    }
    std::optional<std::string> defaultOf(const char* type) const {
        return MimeAppsList::parse(list()).value(kDefaults, type);
    }
    std::string saved(const char* name) const {
        return settings::RegistryKey("Software\\Vornalt\\Lanmira\\Shell", configHome())
            .readString("", name, "<none>");
    }

    // The words as OK applies them, and the files once they are written.
    bool apply(BrowserList& words, std::uint32_t png, std::uint32_t jpeg) const {
        FormatWordsApplier::Words next = words.formatFilter;
        next[IMAGELIB_FMT_PNG] = png;
        next[IMAGELIB_FMT_JPEG] = jpeg;
        const bool changed = FormatWordsApplier(u"Acme"_s, u"Lanmira"_s, m_env).apply(words, next);
        FormatWordsApplier::waitForWrites();
        return changed;
    }

    FormatWordsApplier::Environment m_env;

private:
    QTemporaryDir m_dir;
};

TEST(FormatWordsApplier, TakeOverAndGiveBackRestoreThePreviousDefaults) {
    Desktop desktop;
    const std::string foreign = "# mine\n[Default Applications]\r\nimage/png=other.desktop\r\n"
                                "text/plain=gedit.desktop\r\n[Added Associations]\r\n"
                                "image/png=other.desktop;viewer.desktop;\r\n";
    desktop.writeList(foreign);
    BrowserList words;

    EXPECT_TRUE(desktop.apply(words, 7, 7));
    EXPECT_EQ(words.formatFilter[IMAGELIB_FMT_PNG], 7u);
    EXPECT_EQ(desktop.defaultOf("image/png"), "Lanmira.1.desktop");
    EXPECT_EQ(desktop.defaultOf("image/jpeg"), "Lanmira.1.desktop");
    EXPECT_EQ(desktop.saved(".png"), "other.desktop");
    // jpeg had no default: nothing to remember for any of its extensions.
    EXPECT_EQ(desktop.saved(".jpg"), "<none>");
    // The words are stored.
    EXPECT_EQ(settings::RegistryKey("Software\\Vornalt\\Lanmira\\Shell", desktop.configHome())
                  .readInt("", "if03", 0),
              7);

    // The entry the defaults name exists and starts this program.
    QFile entry(desktop.entryPath());
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(entry.readAll());
    EXPECT_TRUE(text.contains(u"Exec=\"/opt/My Programs/lanmira\" %f\n"_s)) << text.toStdString();
    // It declares just the types it is the default for, in the table's order.
    EXPECT_TRUE(text.contains(u"MimeType=image/jpeg;image/png;\n"_s)) << text.toStdString();

    EXPECT_TRUE(desktop.apply(words, 5, 5));
    EXPECT_EQ(desktop.list(), foreign);
    EXPECT_EQ(desktop.defaultOf("image/png"), "other.desktop");
    EXPECT_EQ(desktop.defaultOf("image/jpeg"), std::nullopt);
    // With no type left, the desktop's fallback does not land on us either.
    entry.close();
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    EXPECT_TRUE(entry.readAll().contains("\nMimeType=\n"));
}

TEST(FormatWordsApplier, SameWordsTwiceWriteNothing) {
    Desktop desktop;
    BrowserList words;
    EXPECT_FALSE(desktop.apply(words, 5, 5));
    EXPECT_FALSE(QFileInfo::exists(desktop.listPath()));
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(desktop.configHome().string())));

    ASSERT_TRUE(desktop.apply(words, 7, 5));
    ASSERT_TRUE(QFileInfo::exists(desktop.listPath()));
    QFile::remove(desktop.listPath());
    QFile::remove(desktop.entryPath());
    EXPECT_FALSE(desktop.apply(words, 7, 5));
    EXPECT_FALSE(QFileInfo::exists(desktop.listPath()));
    EXPECT_FALSE(QFileInfo::exists(desktop.entryPath()));

    // Only bit 0 or bit 2 changing stores the words but leaves the associations alone.
    EXPECT_TRUE(desktop.apply(words, 6, 1));
    EXPECT_FALSE(QFileInfo::exists(desktop.listPath()));
}

TEST(FormatWordsApplier, OurOwnDefaultIsNeverRememberedOrGivenBack) {
    Desktop desktop;
    // Left from an earlier run that lost its words: the type is ours, an older default saved.
    settings::RegistryKey("Software\\Vornalt\\Lanmira\\Shell", desktop.configHome())
        .writeString("", ".png", "older.desktop");
    desktop.writeList("[Default Applications]\nimage/png=lanmira.1.DESKTOP;other.desktop;\n");
    BrowserList words;

    desktop.apply(words, 7, 5);
    EXPECT_EQ(desktop.saved(".png"), "older.desktop");
    desktop.apply(words, 5, 5);
    EXPECT_EQ(desktop.defaultOf("image/png"), "older.desktop");

    // A saved value naming us (or absurdly long) is not given back: the type loses its
    // default instead of keeping ours.
    for (const std::string& bad : {std::string("Lanmira.1.desktop"), std::string(300, 'x')}) {
        desktop.writeList("[Default Applications]\nimage/png=Lanmira.1.desktop\n");
        settings::RegistryKey("Software\\Vornalt\\Lanmira\\Shell", desktop.configHome())
            .writeString("", ".png", bad);
        BrowserList ours;
        ours.formatFilter[IMAGELIB_FMT_PNG] = 7;
        desktop.apply(ours, 5, 5);
        EXPECT_EQ(desktop.defaultOf("image/png"), std::nullopt) << bad.size();
        EXPECT_EQ(desktop.list(), "[Default Applications]\n") << bad.size();
    }
}

TEST(FormatWordsApplier, GiveBackWithNothingSavedLeavesNoDefaultOfOurs) {
    Desktop desktop;
    BrowserList words;
    desktop.apply(words, 7, 7);
    // Someone else took jpeg meanwhile: giving back leaves their choice.
    MimeAppsList list = MimeAppsList::parse(desktop.list());
    list.setValue(kDefaults, "image/jpeg", "theirs.desktop");
    desktop.writeList(list.text());

    desktop.apply(words, 5, 5);
    EXPECT_EQ(desktop.defaultOf("image/png"), std::nullopt);
    EXPECT_EQ(desktop.defaultOf("image/jpeg"), "theirs.desktop");
    EXPECT_EQ(desktop.list().find("Lanmira"), std::string::npos);
}

TEST(FormatWordsApplier, ExtensionsSharingATypeShareItsPreviousDefault) {
    Desktop desktop;
    desktop.writeList("[Default Applications]\nimage/jpeg=other.desktop\n");
    BrowserList words;
    desktop.apply(words, 5, 7);
    for (const char* ext : {".jpg", ".jpeg", ".jpe"})
        EXPECT_EQ(desktop.saved(ext), "other.desktop") << ext;

    // Only the last extension still knows the previous default: it is given back anyway.
    settings::RegistryKey shell("Software\\Vornalt\\Lanmira\\Shell", desktop.configHome());
    shell.remove("", ".jpg");
    shell.remove("", ".jpeg");
    desktop.apply(words, 5, 5);
    EXPECT_EQ(desktop.defaultOf("image/jpeg"), "other.desktop");
}

TEST(FormatWordsApplier, FailuresLeaveFilesWhole) {
    // The config home is a file: nothing can be written there, and nothing breaks.
    Desktop blocked;
    QDir().mkpath(QFileInfo(QString::fromStdString(blocked.configHome().string())).path());
    {
        QFile f(QString::fromStdString(blocked.configHome().string()));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("not a folder");
    }
    BrowserList words;
    // The browser still uses them in this session.
    EXPECT_TRUE(blocked.apply(words, 7, 5));
    EXPECT_EQ(words.formatFilter[IMAGELIB_FMT_PNG], 7u);

    // Without the desktop entry there is nothing to associate with: no take-over.
    Desktop noEntry;
    noEntry.m_env.dataHome = QString::fromStdString(blocked.configHome().string());
    noEntry.writeList("[Default Applications]\nimage/png=other.desktop\n");
    BrowserList fresh;
    noEntry.apply(fresh, 7, 5);
    EXPECT_EQ(noEntry.defaultOf("image/png"), "other.desktop");
}

TEST(DesktopEntryWriter, ExecArgumentsAreQuotedAndEscaped) {
    const std::pair<QString, QString> cases[] = {
        {u"/usr/bin/lanmira"_s, u"/usr/bin/lanmira"_s},
        {u"/opt/a b/lanmira"_s, u"\"/opt/a b/lanmira\""_s},
        // Inside quotes " ` $ \ take a backslash, which the string escape doubles.
        {u"/x/$HOME\"q`\\"_s, u"\"/x/\\\\$HOME\\\\\"q\\\\`\\\\\\\\\""_s},
        {u"/x/100%"_s, u"/x/100%%"_s},
    };
    for (const auto& [in, out] : cases)
        EXPECT_EQ(DesktopEntryWriter::execArgument(in), out) << in.toStdString();
}

} // namespace

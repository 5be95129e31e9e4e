#include "i18n/i18n.h"

#include <sys/wait.h>

#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <initializer_list>
#include <spawn.h>
#include <thread>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// Sets the locale variables for one test; nothing in this process needs the old ones back.
class ScopedLocale {
public:
    explicit ScopedLocale(std::initializer_list<std::pair<const char*, const char*>> values) {
        clear();
        for (const auto& [name, value] : values)
            qputenv(name, value);
    }
    ~ScopedLocale() {
        clear();
        i18n_reset();
    }

private:
    static void clear() {
        for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"})
            qunsetenv(name);
    }
};

QString buildCatalogs() {
    return QString::fromUtf8(LANMIRA_BUILD_DIR) + u"/share/lanmira/i18n"_s;
}

// posix_spawn rather than QProcess: QProcess's way of forking leaves ThreadSanitizer
// reporting races in the threaded tests that follow.
bool run(const QStringList& command) {
    std::vector<QByteArray> args;
    for (const QString& a : command)
        args.push_back(QFile::encodeName(a));
    std::vector<char*> argv;
    for (QByteArray& a : args)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_t pid = 0;
    int status = 0;
    return posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ) == 0 &&
           waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Writes `<dir>/lanmira_<language>.qm` from a .ts body made of <context> elements.
bool compileCatalog(const QString& lrelease, const QDir& dir, const char* language,
                    const QByteArray& contexts) {
    const QString base = dir.filePath(u"lanmira_"_s + QString::fromLatin1(language));
    QFile ts(base + u".ts"_s);
    if (!ts.open(QIODevice::WriteOnly))
        return false;
    ts.write("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<TS version=\"2.1\">" + contexts +
             "</TS>\n");
    ts.close();
    return run({lrelease, u"-silent"_s, ts.fileName(), u"-qm"_s, base + u".qm"_s});
}

class Control : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString text MEMBER text_)
public:
    using QObject::QObject;
    QString text_;
};

class Group : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString title MEMBER title_)
public:
    using QObject::QObject;
    QString title_;
};

// Like a progress bar: it computes its text itself, so only the title may change.
class Gauge : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString text READ text)
    Q_PROPERTY(QString title MEMBER title_)
public:
    using QObject::QObject;
    QString text() const { return u"42%"_s; }
    QString title_;
};

class Window : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString windowTitle MEMBER windowTitle_)
public:
    using QObject::QObject;
    QString windowTitle_;
};

struct LocaleRow {
    const char* variable;
    const char* value;
    const char* language;
    const char* caption; // IDD_ABOUTBOX's
    const char* fileMenu;
};

class I18nLocales : public ::testing::TestWithParam<LocaleRow> {};

TEST_P(I18nLocales, PickTheCatalogAndItsTexts) {
    const LocaleRow& row = GetParam();
    ScopedLocale locale({{row.variable, row.value}});
    ASSERT_TRUE(i18n_init(buildCatalogs(), 0));
    EXPECT_EQ(i18n_language(), QString::fromUtf8(row.language));
    EXPECT_EQ(i18n_dialogText("IDD_ABOUTBOX", 0), QString::fromUtf8(row.caption));
    EXPECT_EQ(i18n_menuText("IDR_BROWSER", "file"), QString::fromUtf8(row.fileMenu));
}

INSTANTIATE_TEST_SUITE_P(
    Table, I18nLocales,
    ::testing::Values(LocaleRow{"LANG", "C", "en", "About Lanmira", "&File"},
                      LocaleRow{"LANG", "de_DE.UTF-8", "de", "Über Lanmira", "&Datei"},
                      LocaleRow{"LANGUAGE", "fr:de_AT", "de", "Über Lanmira", "&Datei"},
                      LocaleRow{"LANG", "fr_FR.UTF-8", "en", "About Lanmira", "&File"}));

TEST(I18n, MissingNamesComeBackAsTheNameAndNeverLeakFromAnotherContext) {
    ScopedLocale locale({{"LANG", "de_DE"}});
    ASSERT_TRUE(i18n_init(buildCatalogs(), 0));
    EXPECT_EQ(i18n_stringW("ids_lanmira_viewer_title"), u"Lanmira-Bildbetrachter"_s);
    EXPECT_EQ(i18n_stringW("ids_lanmira_nosuchtext"), u"ids_lanmira_nosuchtext"_s);
    EXPECT_EQ(i18n_menuText("IDR_BROWSER", "nosuchkey"), u"nosuchkey"_s);
    // 1002 and "file" exist, but only in other contexts.
    EXPECT_EQ(i18n_dialogText("IDD_SLIDE", 1002), u"1002"_s);
    EXPECT_EQ(i18n_menuText("IDR_ZOOM", "file"), u"file"_s);
    EXPECT_EQ(i18n_stringW("IDR_BROWSER"), u"IDR_BROWSER"_s);
    EXPECT_TRUE(i18n_hasEnglish("IDD_ABOUTBOX", "1004"));
    EXPECT_FALSE(i18n_hasEnglish("strings", "ids_lanmira_nosuchtext"));
}

TEST(I18n, WithoutEnglishEveryLookupGivesTheName) {
    ScopedLocale locale({{"LANG", "de_DE"}});
    QTemporaryDir empty;
    ASSERT_TRUE(i18n_init(buildCatalogs(), 0));
    EXPECT_FALSE(i18n_init(empty.path(), 0));
    EXPECT_EQ(i18n_language(), QString());
    EXPECT_EQ(i18n_stringW("ids_lanmira_appname"), u"ids_lanmira_appname"_s);
    EXPECT_EQ(i18n_dialogText("IDD_ABOUTBOX", 0), u"0"_s);
}

TEST(I18n, RelativeFolderIsTakenFromTheProgramFolder) {
    // Test executables live in <build>/tests and the program in <build>/bin, so both reach
    // the catalogs the same way, with or without an application object.
    ScopedLocale locale({{"LANG", "de_DE"}});
    ASSERT_TRUE(i18n_init(u"../share/lanmira/i18n"_s, 0));
    EXPECT_EQ(i18n_language(), u"de"_s);
}

TEST(I18n, FallsBackFromTheUserLanguageToEnglishToTheName) {
    const QString lrelease = QLibraryInfo::path(QLibraryInfo::BinariesPath) + u"/lrelease"_s;
    if (!QFile::exists(lrelease))
        GTEST_SKIP() << "no lrelease at " << lrelease.toStdString();
    QTemporaryDir dir;
    const QDir folder(dir.path());
    ASSERT_TRUE(compileCatalog(lrelease, folder, "en",
                               "<context><name>strings</name>"
                               "<message><source>ids_t_both</source>"
                               "<translation>Both</translation></message>"
                               "<message><source>ids_t_english</source>"
                               "<translation>English only</translation></message>"
                               "</context><context><name>IDR_T</name>"
                               "<message><source>32772</source>"
                               "<translation>&amp;Refresh&#9;F5</translation></message>"
                               "</context>"));
    ASSERT_TRUE(compileCatalog(lrelease, folder, "de",
                               "<context><name>strings</name>"
                               "<message><source>ids_t_both</source>"
                               "<translation>Beide</translation></message>"
                               "<message><source>ids_t_english</source>"
                               "<translation type=\"unfinished\"></translation></message>"
                               "</context>"));

    ScopedLocale locale({{"LANGUAGE", "de"}});
    ASSERT_TRUE(i18n_init(dir.path(), 0));
    EXPECT_EQ(i18n_stringW("ids_t_both"), u"Beide"_s);
    EXPECT_EQ(i18n_stringW("ids_t_english"), u"English only"_s);
    EXPECT_EQ(i18n_stringW("ids_t_nowhere"), u"ids_t_nowhere"_s);
    EXPECT_EQ(i18n_menuText("IDR_T", "32772"), u"&Refresh\tF5"_s);
}

TEST(I18n, LocalisesADialogTree) {
    ScopedLocale locale({{"LANG", "de_DE"}});
    ASSERT_TRUE(i18n_init(buildCatalogs(), 0));

    Window dialog;
    auto* version = new Control(&dialog);
    version->setProperty("i18nId", 1002);
    auto* box = new Group(&dialog);
    box->setProperty("i18nId", 1004);
    auto* nested = new Control(box);
    nested->setProperty("i18nId", 1);
    auto* gauge = new Gauge(&dialog);
    gauge->setProperty("i18nId", 1003);
    auto* unnamed = new Control(&dialog);
    unnamed->text_ = u"as built"_s;
    auto* missing = new Control(&dialog);
    missing->setProperty("i18nId", 4711);
    auto* plain = new QObject(&dialog);
    plain->setProperty("i18nId", 1001);

    EXPECT_EQ(i18n_dialog(&dialog, "IDD_ABOUTBOX"), 6);
    EXPECT_EQ(dialog.windowTitle_, u"Über Lanmira"_s);
    EXPECT_EQ(version->text_, u"Version %s"_s);
    EXPECT_EQ(box->title_, u"Copyright © Vornalt. Alle Rechte vorbehalten."_s);
    EXPECT_EQ(nested->text_, u"OK"_s);
    EXPECT_EQ(gauge->title_, u"Erstellt am %s"_s);
    EXPECT_EQ(unnamed->text_, u"as built"_s);
    EXPECT_EQ(missing->text_, u"4711"_s);
    EXPECT_FALSE(plain->property("text").isValid()) << "no property may be invented";

    // A dialog without a caption in the catalog keeps its own.
    Window other;
    other.windowTitle_ = u"kept"_s;
    EXPECT_EQ(i18n_dialog(&other, "IDD_NOSUCHDIALOG"), 0);
    EXPECT_EQ(other.windowTitle_, u"kept"_s);
}

TEST(I18n, LocalisesAMenuTreeIncludingItsRoot) {
    ScopedLocale locale({{"LANG", "de_DE"}});
    ASSERT_TRUE(i18n_init(buildCatalogs(), 0));

    Group file;
    file.setProperty("i18nKey", QByteArray("file"));
    auto* exit = new Control(&file);
    exit->setProperty("i18nKey", QByteArray("57665"));
    auto* help = new Group(&file);
    help->setProperty("i18nKey", u"help"_s);
    auto* about = new Control(help);
    about->setProperty("i18nKey", QByteArray("57664"));
    auto* separator = new Control(help);

    EXPECT_EQ(i18n_menu(&file, "IDR_VIEWER"), 4);
    EXPECT_EQ(file.title_, u"&Datei"_s);
    EXPECT_EQ(exit->text_, u"&Beenden"_s);
    EXPECT_EQ(help->title_, u"&Hilfe"_s);
    EXPECT_EQ(about->text_, u"Ü&ber..."_s);
    EXPECT_TRUE(separator->text_.isEmpty());
}

TEST(I18n, LookupsRaceSafelyWithReloading) {
    ScopedLocale locale({{"LANG", "de_DE"}});
    std::atomic<bool> stop{false};
    std::atomic<int> unexpected{0};
    std::vector<std::thread> readers;
    for (int t = 0; t < 3; ++t) {
        readers.emplace_back([&] {
            while (!stop.load()) {
                const QString s = i18n_dialogText("IDD_ABOUTBOX", 0);
                if (s != u"Über Lanmira"_s && s != u"0"_s)
                    ++unexpected;
            }
        });
    }
    for (int i = 0; i < 50; ++i) {
        i18n_init(buildCatalogs(), 0);
        i18n_reset();
    }
    stop = true;
    for (std::thread& t : readers)
        t.join();
    EXPECT_EQ(unexpected.load(), 0);
}

} // namespace

#include "I18nTest.moc"

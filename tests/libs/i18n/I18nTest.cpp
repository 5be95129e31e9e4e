#include "i18n/i18n.h"

#include <sys/wait.h>

#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <spawn.h>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

// Each test sets one locale variable and leaves no catalog loaded behind it.
class I18n : public ::testing::Test {
protected:
    static void setLocale(const char* name, const char* value) {
        for (const char* variable : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"})
            qunsetenv(variable);
        qputenv(name, value);
    }
    void TearDown() override { i18n_reset(); }
};

const QString kBuiltCatalogs = QString::fromUtf8(LANMIRA_BUILD_DIR) + u"/share/lanmira/i18n"_s;

// Writes <dir>/lanmira_<language>.qm from the body of a .ts file. posix_spawn rather than
// QProcess: QProcess's way of forking leaves ThreadSanitizer reporting races in later tests.
bool compileCatalog(const QString& lrelease, const QDir& dir, const char* language,
                    const char* body) {
    const QByteArray base =
        QFile::encodeName(dir.filePath(u"lanmira_"_s + QString::fromLatin1(language)));
    QFile ts(QFile::decodeName(base + ".ts"));
    if (!ts.open(QIODevice::WriteOnly) ||
        ts.write(QByteArray("<?xml version=\"1.0\"?><TS version=\"2.1\">") + body + "</TS>") < 0)
        return false;
    ts.close();
    QByteArray args[] = {QFile::encodeName(lrelease), "-silent", base + ".ts", "-qm", base + ".qm"};
    char* argv[] = {args[0].data(), args[1].data(), args[2].data(),
                    args[3].data(), args[4].data(), nullptr};
    pid_t pid = 0;
    int status = 0;
    return posix_spawn(&pid, argv[0], nullptr, nullptr, argv, environ) == 0 &&
           waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class Control : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString text MEMBER text_)
    Q_PROPERTY(QString windowTitle MEMBER title_)
public:
    using QObject::QObject;
    QString text_, title_;
};

// Like a progress bar or a popup menu: its text is its own, so only the title may change.
class Titled : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString text READ text)
    Q_PROPERTY(QString title MEMBER title_)
public:
    using QObject::QObject;
    QString text() const { return u"42%"_s; }
    QString title_;
};

TEST_F(I18n, LooksUpEnglishAndGermanInTheBuiltCatalogs) {
    // Relative to the program folder, not the working folder: test executables live in
    // <build>/tests and the program in <build>/bin, so both reach the same catalogs.
    const QString folder = u"../share/lanmira/i18n"_s;
    setLocale("LANG", "C");
    ASSERT_TRUE(i18n_init(folder, 0));
    EXPECT_EQ(i18n_language(), u"en"_s);
    EXPECT_EQ(i18n_dialogText("IDD_ABOUTBOX", 0), u"About Lanmira"_s);
    setLocale("LANGUAGE", "fr:de_AT");
    ASSERT_TRUE(i18n_init(folder, 0));
    EXPECT_EQ(i18n_language(), u"de"_s);
    EXPECT_EQ(i18n_dialogText("IDD_ABOUTBOX", 0), u"Über Lanmira"_s);
}

TEST_F(I18n, FallsBackFromTheUserLanguageToEnglishToTheName) {
    const QString lrelease = QLibraryInfo::path(QLibraryInfo::BinariesPath) + u"/lrelease"_s;
    if (!QFile::exists(lrelease))
        GTEST_SKIP() << "no lrelease at " << lrelease.toStdString();
    QTemporaryDir dir;
    ASSERT_TRUE(compileCatalog(lrelease, QDir(dir.path()), "en", R"(
<context><name>strings</name>
<message><source>ids_t_both</source><translation>Both</translation></message>
<message><source>ids_t_english</source><translation>English only</translation></message>
</context><context><name>IDR_T</name>
<message><source>32772</source><translation>&amp;Refresh&#9;F5</translation></message>
</context>)"));
    ASSERT_TRUE(compileCatalog(lrelease, QDir(dir.path()), "de", R"(
<context><name>strings</name>
<message><source>ids_t_both</source><translation>Beide</translation></message>
<message><source>ids_t_english</source><translation type="unfinished"></translation></message>
</context>)"));

    setLocale("LANGUAGE", "de");
    ASSERT_TRUE(i18n_init(dir.path(), 0));
    EXPECT_EQ(i18n_stringW("ids_t_both"), u"Beide"_s);
    EXPECT_EQ(i18n_stringW("ids_t_english"), u"English only"_s);
    EXPECT_EQ(i18n_stringW("ids_t_nowhere"), u"ids_t_nowhere"_s);
    EXPECT_EQ(i18n_menuText("IDR_T", "32772"), u"&Refresh\tF5"_s);
    EXPECT_EQ(i18n_menuText("IDR_OTHER", "32772"), u"32772"_s) << "contexts must not mix";

    // A failed reload replaces what was loaded rather than keeping it.
    ASSERT_TRUE(QDir(dir.path()).mkdir(u"empty"_s));
    EXPECT_FALSE(i18n_init(dir.filePath(u"empty"_s), 0));
    EXPECT_EQ(i18n_language(), QString());
    EXPECT_EQ(i18n_stringW("ids_t_both"), u"ids_t_both"_s);
}

TEST_F(I18n, LocalisesDialogAndMenuTreesByProperty) {
    setLocale("LANG", "de_DE");
    ASSERT_TRUE(i18n_init(kBuiltCatalogs, 0));

    Control dialog;
    auto* version = new Control(&dialog);
    version->setProperty("i18nId", 1002);
    auto* gauge = new Titled(&dialog);
    gauge->setProperty("i18nId", 1003);
    auto* missing = new Control(gauge);
    missing->setProperty("i18nId", 4711);
    auto* plain = new QObject(&dialog);
    plain->setProperty("i18nId", 1001);
    EXPECT_EQ(i18n_dialog(&dialog, "IDD_ABOUTBOX"), 4);
    EXPECT_EQ(dialog.title_, u"Über Lanmira"_s);
    EXPECT_EQ(version->text_, u"Version %s"_s);
    EXPECT_EQ(gauge->title_, u"Erstellt am %s"_s);
    EXPECT_EQ(missing->text_, u"4711"_s);
    EXPECT_FALSE(plain->property("text").isValid()) << "no property may be invented";

    Control other; // no caption in the catalog: it keeps its own
    other.title_ = u"kept"_s;
    EXPECT_EQ(i18n_dialog(&other, "IDD_NOSUCHDIALOG"), 0);
    EXPECT_EQ(other.title_, u"kept"_s);

    Titled file;
    file.setProperty("i18nKey", QByteArray("file"));
    auto* exit = new Control(&file);
    exit->setProperty("i18nKey", u"57665"_s);
    auto* separator = new Control(&file);
    EXPECT_EQ(i18n_menu(&file, "IDR_VIEWER"), 2);
    EXPECT_EQ(file.title_, u"&Datei"_s);
    EXPECT_EQ(exit->text_, u"&Beenden"_s);
    EXPECT_TRUE(separator->text_.isEmpty());
}

TEST_F(I18n, LookupsRaceSafelyWithReloading) {
    setLocale("LANG", "de_DE");
    std::atomic<bool> stop{false};
    std::atomic<int> unexpected{0};
    std::thread reader([&] {
        while (!stop.load()) {
            const QString s = i18n_dialogText("IDD_ABOUTBOX", 0);
            unexpected += s != u"Über Lanmira"_s && s != u"0"_s;
        }
    });
    for (int i = 0; i < 50; ++i) {
        i18n_init(kBuiltCatalogs, 0);
        i18n_reset();
    }
    stop = true;
    reader.join();
    EXPECT_EQ(unexpected.load(), 0);
}

} // namespace

#include "I18nTest.moc"

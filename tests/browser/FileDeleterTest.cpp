#include "browser/FileDeleter.h"

#include "i18n/i18n.h"
#include "platform/TextFormat.h"

#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

using lanmira::FileDeleter;
using lanmira::formatText;
using namespace Qt::StringLiterals;

namespace {

// GLib reads XDG_DATA_HOME once per process, so one trash serves every test. Files and
// trash share one temporary folder, hence one volume: GIO uses that trash.
class FileDeleterTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_root = std::make_unique<QTemporaryDir>();
        qputenv("XDG_DATA_HOME", QFile::encodeName(s_root->path() + u"/data"_s));
    }
    static void TearDownTestSuite() { s_root.reset(); }

    void SetUp() override {
        ASSERT_TRUE(s_root->isValid());
        m_files =
            s_root->path() + u'/' +
            QString::fromUtf8(::testing::UnitTest::GetInstance()->current_test_info()->name());
        ASSERT_TRUE(QDir().mkpath(m_files));
        FileDeleter::setQuestionHandler([this](const QString& text, int buttons) {
            m_asked.push_back({text, buttons});
            return m_answers.empty() ? int(QMessageBox::No) : m_answers.takeFirst();
        });
    }
    void TearDown() override { FileDeleter::setQuestionHandler({}); }

    QString file(const QString& name) const {
        const QString path = m_files + u'/' + name;
        QFile out(path);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        return path;
    }
    static QString trashed(const QString& name) {
        return s_root->path() + u"/data/Trash/files/"_s + name;
    }

    static inline std::unique_ptr<QTemporaryDir> s_root;
    QString m_files;
    std::vector<std::pair<QString, int>> m_asked;
    QList<int> m_answers;
};

TEST_F(FileDeleterTest, OneQuestionThenNothingOrTrashOrDeleteForGood) {
    const QString a = file(u"a.jpg"_s), b = file(u"b.jpg"_s), c = file(u"c.jpg"_s);
    const auto question = [](const char* id, const lanmira::FormatArg& arg, int buttons) {
        return std::vector{std::pair(formatText(i18n_stringW(id), {arg}), buttons)};
    };
    const int yesNo = QMessageBox::Yes | QMessageBox::No;
    EXPECT_FALSE(FileDeleter::deletePaths(nullptr, {a}, false)) << "declined";
    EXPECT_EQ(m_asked, question("ids_lanmira_delete_confirm", u"a.jpg"_s, yesNo));
    EXPECT_TRUE(QFile::exists(a));

    m_asked.clear();
    m_answers = {QMessageBox::Yes};
    EXPECT_TRUE(FileDeleter::deletePaths(nullptr, {a, b}, false));
    EXPECT_EQ(m_asked, question("ids_lanmira_delete_confirm_many", 2, yesNo));
    EXPECT_FALSE(QFile::exists(a) || QFile::exists(b));
    EXPECT_TRUE(QFile::exists(trashed(u"a.jpg"_s)) && QFile::exists(trashed(u"b.jpg"_s)));

    m_asked.clear();
    m_answers = {QMessageBox::Yes};
    EXPECT_TRUE(FileDeleter::deletePaths(nullptr, {c}, true));
    EXPECT_EQ(m_asked, question("ids_lanmira_delete_forever", u"c.jpg"_s, yesNo));
    EXPECT_FALSE(QFile::exists(c) || QFile::exists(trashed(u"c.jpg"_s)));
}

TEST_F(FileDeleterTest, AFailureIsShownAndTheRestGoesOn) {
    const QString missing = m_files + u"/missing.jpg"_s;
    const QString d = file(u"d.jpg"_s);
    m_answers = {QMessageBox::Yes, QMessageBox::Ok};
    EXPECT_TRUE(FileDeleter::deletePaths(nullptr, {missing, d}, true));
    ASSERT_EQ(m_asked.size(), 2u);
    EXPECT_EQ(m_asked[1].second, int(QMessageBox::Ok));
    EXPECT_FALSE(QFile::exists(d));
    // Nothing deleted at all: false, so the caller leaves the list alone.
    m_answers = {QMessageBox::Yes, QMessageBox::Ok};
    EXPECT_FALSE(FileDeleter::deletePaths(nullptr, {missing}, false));
    EXPECT_EQ(FileDeleter::deleteForGood(m_files), FileDeleter::Outcome::Failed)
        << "a folder is never deleted";
    EXPECT_TRUE(QDir(m_files).exists());
}

} // namespace

// The file commands as the browser runs them: the clipboard, the transfer on its worker
// with questions asked on the user-interface thread, links, and the TIFF tool.
#include "browser/fileops/FileOperations.h"

#include "browser/fileops/CTransferDlg.h"
#include "browser/fileops/FileOpQuestions.h"
#include "i18n/i18n.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QWidget>

#include <gtest/gtest.h>

using namespace lanmira;
using namespace Qt::StringLiterals;

namespace {

class FileOperationsTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(i18n_init(QString::fromUtf8(LANMIRA_BUILD_DIR "/share/lanmira/i18n"), 0));
        ASSERT_TRUE(m_dir.isValid());
        QDir().mkpath(folderA());
        QDir().mkpath(folderB());
        for (const QString& n : {u"1.jpg"_s, u"2.jpg"_s, u"3.jpg"_s})
            write(folderA() + n, n.toUtf8());
        FileOpQuestions::setHandler(
            [this](FileOpQuestions::Kind kind, const QString& text, bool* all) {
                m_asked.append({kind, text});
                if (all)
                    *all = m_applyToAll;
                return m_answers.isEmpty() ? FileOpQuestions::Cancel : m_answers.takeFirst();
            });
        QApplication::clipboard()->clear();
    }
    void TearDown() override { FileOpQuestions::setHandler({}); }

    QString folderA() const { return m_dir.path() + u"/a/"_s; }
    QString folderB() const { return m_dir.path() + u"/b/"_s; }
    static void write(const QString& path, const QByteArray& bytes) {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }
    static QByteArray read(const QString& path) {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    QStringList inA(const QStringList& names) const {
        QStringList out;
        for (const QString& n : names)
            out.append(folderA() + n);
        return out;
    }
    // Runs the event loop until the operation has ended.
    bool waitDone(QSignalSpy& spy, int count = 1) {
        QElapsedTimer t;
        t.start();
        while (spy.count() < count && t.elapsed() < 10000)
            spy.wait(100);
        return spy.count() >= count;
    }

    QTemporaryDir m_dir;
    QWidget m_owner;
    FileOperations m_ops{&m_owner};
    struct Asked {
        FileOpQuestions::Kind kind;
        QString text;
    };
    QList<Asked> m_asked;
    QList<FileOpQuestions::Answer> m_answers;
    bool m_applyToAll = false;
};

TEST_F(FileOperationsTest, CutPastesOnceAndCopyAloneOffersPasteShortcut) {
    EXPECT_FALSE(m_ops.canPaste(folderB()));
    EXPECT_FALSE(m_ops.canPasteShortcut(folderB()));

    m_ops.putOnClipboard(inA({u"1.jpg"_s}), effect::kCopyAndLink);
    EXPECT_TRUE(m_ops.canPaste(folderB()));
    EXPECT_TRUE(m_ops.canPasteShortcut(folderB()));
    EXPECT_FALSE(m_ops.canPaste(QString())); // no folder shown

    m_ops.putOnClipboard(inA({u"1.jpg"_s, u"2.jpg"_s}), effect::kCut);
    EXPECT_TRUE(m_ops.canPaste(folderB()));
    EXPECT_FALSE(m_ops.canPasteShortcut(folderB()));

    QSignalSpy done(&m_ops, &FileOperations::operationDone);
    m_ops.paste(folderB());
    EXPECT_FALSE(m_ops.canPaste(folderB())); // one at a time
    ASSERT_TRUE(waitDone(done));
    EXPECT_EQ(read(folderB() + u"1.jpg"_s), "1.jpg");
    EXPECT_EQ(read(folderB() + u"2.jpg"_s), "2.jpg");
    EXPECT_FALSE(QFile::exists(folderA() + u"1.jpg"_s));
    EXPECT_TRUE(m_asked.isEmpty());

    // The second paste finds nothing.
    EXPECT_FALSE(m_ops.canPaste(folderA()));
    m_ops.paste(folderA());
    QApplication::processEvents();
    EXPECT_EQ(done.count(), 1);
    EXPECT_TRUE(QFile::exists(folderB() + u"1.jpg"_s));
}

TEST_F(FileOperationsTest, AFileManagersCutIsAMoveAndOddEntriesAreReportedOnce) {
    auto data = std::make_unique<QMimeData>();
    data->setData(u"x-special/gnome-copied-files"_s,
                  "cut\nfile://" + QFile::encodeName(folderA()) + "3.jpg\nhttp://example.org/x\n" +
                      "file://" + QFile::encodeName(folderA()) + "missing.jpg");
    QApplication::clipboard()->setMimeData(data.release());
    QSignalSpy done(&m_ops, &FileOperations::operationDone);
    m_answers = {FileOpQuestions::Ok, FileOpQuestions::Ok};
    m_ops.paste(folderB());
    ASSERT_TRUE(waitDone(done));
    EXPECT_EQ(read(folderB() + u"3.jpg"_s), "3.jpg");
    EXPECT_FALSE(QFile::exists(folderA() + u"3.jpg"_s));
    // One report of what failed, one of what was no file; neither empties the clipboard.
    ASSERT_EQ(m_asked.size(), 2);
    EXPECT_TRUE(m_asked[0].text.contains(u"missing.jpg"_s));
    EXPECT_TRUE(m_asked[1].text.contains(u"http://example.org/x"_s));
    EXPECT_TRUE(m_ops.canPaste(folderB()));
}

TEST_F(FileOperationsTest, ConflictsAreAskedOnTheUserInterfaceThread) {
    write(folderB() + u"1.jpg"_s, "old1");
    write(folderB() + u"2.jpg"_s, "old2");
    m_ops.putOnClipboard(inA({u"1.jpg"_s, u"2.jpg"_s, u"3.jpg"_s}), effect::kCopyAndLink);
    m_answers = {FileOpQuestions::Replace, FileOpQuestions::Skip};
    QSignalSpy done(&m_ops, &FileOperations::operationDone);
    m_ops.paste(folderB());
    ASSERT_TRUE(waitDone(done));
    ASSERT_EQ(m_asked.size(), 2);
    EXPECT_EQ(m_asked[0].kind, FileOpQuestions::Kind::Conflict);
    EXPECT_TRUE(m_asked[0].text.contains(folderB() + u"1.jpg"_s));
    EXPECT_EQ(read(folderB() + u"1.jpg"_s), "1.jpg");
    EXPECT_EQ(read(folderB() + u"2.jpg"_s), "old2");
    EXPECT_EQ(read(folderB() + u"3.jpg"_s), "3.jpg");
    // A copy leaves the clipboard as it was.
    EXPECT_TRUE(m_ops.canPasteShortcut(folderB()));
}

TEST_F(FileOperationsTest, PasteShortcutAsksAboutAnExistingName) {
    write(folderB() + u"2.jpg"_s, "mine");
    m_ops.putOnClipboard(inA({u"1.jpg"_s, u"2.jpg"_s}), effect::kCopyAndLink);
    m_answers = {FileOpQuestions::No};
    m_ops.pasteShortcut(folderB());
    EXPECT_EQ(QFileInfo(folderB() + u"1.jpg"_s).symLinkTarget(), folderA() + u"1.jpg"_s);
    EXPECT_EQ(read(folderB() + u"2.jpg"_s), "mine");
    ASSERT_EQ(m_asked.size(), 1);
    EXPECT_EQ(m_asked[0].kind, FileOpQuestions::Kind::Replace);
    EXPECT_TRUE(m_asked[0].text.contains(u"2.jpg"_s));

    // A drop with the link effect does the same.
    DropRequest drop;
    drop.folder = folderB();
    drop.files.paths = {QFile::encodeName(folderA() + u"3.jpg"_s)};
    drop.effect = effect::kLink;
    m_ops.drop(drop);
    EXPECT_TRUE(QFileInfo(folderB() + u"3.jpg"_s).isSymLink());
}

TEST_F(FileOperationsTest, TheToolsFilterNamesTiff) {
    const QString filter = FileOperations::tiffFilter();
    EXPECT_TRUE(filter.contains(u"*.tif"_s)) << filter.toStdString();
    EXPECT_TRUE(filter.endsWith(u')')) << filter.toStdString();
}

} // namespace

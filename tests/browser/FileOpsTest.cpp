// The file operations' engines: the clipboard formats both ways, the drop table, the
// transfer with its conflicts, cancels, faults and a kill in the middle, links, and joining
// pictures into one TIFF.
#include "browser/fileops/DropRules.h"
#include "browser/fileops/FileListData.h"
#include "browser/fileops/LinkMaker.h"
#include "browser/fileops/TiffJoiner.h"
#include "browser/fileops/TransferEngine.h"
#include "i18n/i18n.h"
#include "imagelib/imagelib.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMimeData>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <signal.h>
#include <thread>
#include <unistd.h>

using namespace lanmira;
using namespace Qt::StringLiterals;

namespace {

QByteArray bytesOf(int size, char seed) {
    QByteArray b(size, '\0');
    for (int i = 0; i < size; ++i)
        b[i] = static_cast<char>(seed + i * 7);
    return b;
}

void writeFile(const QByteArray& path, const QByteArray& content) {
    QFile f(QFile::decodeName(path));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly)) << path.constData();
    f.write(content);
}

QByteArray readFile(const QByteArray& path) {
    QFile f(QFile::decodeName(path));
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Names under a folder that the engine writes while working.
QStringList partials(const QString& folder) {
    QStringList found;
    for (QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System,
                         QDirIterator::Subdirectories);
         it.hasNext();) {
        const QString p = it.next();
        if (p.endsWith(QString::fromLatin1(TransferEngine::kTempSuffix)))
            found.append(p);
    }
    return found;
}

// ---- Clipboard formats

TEST(FileListData, EncodesWhatFileManagersRead) {
    const auto copy =
        FileListData::encode(QList<QByteArray>{"/tmp/a b.jpg", "/tmp/ü.png"}, effect::kCopyAndLink);
    EXPECT_EQ(copy->data(u"x-special/gnome-copied-files"_s),
              "copy\nfile:///tmp/a%20b.jpg\nfile:///tmp/%C3%BC.png"); // no trailing newline
    EXPECT_EQ(copy->data(u"text/uri-list"_s),
              "file:///tmp/a%20b.jpg\r\nfile:///tmp/%C3%BC.png\r\n");
    EXPECT_EQ(copy->data(u"application/x-lanmira-dropeffect"_s), QByteArray("\x05\0\0\0", 4));
    EXPECT_FALSE(copy->hasFormat(u"application/x-kde-cutselection"_s));

    const auto cut = FileListData::encode(QList<QByteArray>{"/x/1.bmp"}, effect::kCut);
    EXPECT_EQ(cut->data(u"x-special/gnome-copied-files"_s), "cut\nfile:///x/1.bmp");
    EXPECT_EQ(cut->data(u"application/x-kde-cutselection"_s), "1");
    EXPECT_EQ(cut->data(u"application/x-lanmira-dropeffect"_s), QByteArray("\x02\0\0\0", 4));
}

TEST(FileListData, EffectComesFromOurWordThenGnomeThenKdeThenCopy) {
    struct Row {
        const char* word; // `wordSize` bytes or null
        int wordSize;
        const char* gnome;
        const char* kde;
        std::uint32_t expected;
    };
    const Row rows[] = {
        {"\x02\0\0\0", 4, "copy\nfile:///a", nullptr, effect::kCut}, // the word wins
        {nullptr, 0, "cut\nfile:///a", nullptr, effect::kCut},
        {nullptr, 0, "copy\nfile:///a", "1", effect::kCopyAndLink}, // the verb beats the mark
        {nullptr, 0, nullptr, "1", effect::kCut},
        {nullptr, 0, nullptr, nullptr, effect::kCopyAndLink},
        {"\x02\0", 2, nullptr, nullptr, effect::kCopyAndLink}, // a short word is ignored
    };
    for (const Row& r : rows) {
        QMimeData data;
        data.setData(u"text/uri-list"_s, "file:///a\r\n");
        if (r.word)
            data.setData(u"application/x-lanmira-dropeffect"_s, QByteArray(r.word, r.wordSize));
        if (r.gnome)
            data.setData(u"x-special/gnome-copied-files"_s, r.gnome);
        if (r.kde)
            data.setData(u"application/x-kde-cutselection"_s, r.kde);
        const FileListData d = FileListData::decode(&data);
        ASSERT_EQ(d.paths, QList<QByteArray>{"/a"});
        EXPECT_EQ(d.effect, r.expected) << (r.gnome ? r.gnome : "") << (r.kde ? r.kde : "");
    }
}

TEST(FileListData, OddListsGiveTheFilesTheyNameAndRejectTheRest) {
    QMimeData data;
    data.setData(u"text/uri-list"_s,
                 "# a comment\r\n"
                 "file:///tmp/with%20space.jpg\r\n"
                 "file://localhost/tmp/host.jpg\n"
                 "file:/tmp/short.jpg\n"
                 "file:///tmp/bad%FFname.jpg\n" // not UTF-8: kept byte for byte
                 "http://example.org/x.jpg\n"
                 "file://otherhost/tmp/remote.jpg\n"
                 "file:///tmp/nul%00.jpg\n"
                 "\x01\x02garbage\xff\n"
                 "file://\n");
    const FileListData d = FileListData::decode(&data);
    EXPECT_EQ(d.paths, (QList<QByteArray>{"/tmp/with space.jpg", "/tmp/host.jpg", "/tmp/short.jpg",
                                          "/tmp/bad\xFFname.jpg"}));
    EXPECT_EQ(d.rejected.size(), 5);

    // What we write reads back the same, whatever the bytes of the name.
    const QList<QByteArray> names{"/t/a#b?c%d.jpg", "/t/\xFF\xFE.bmp", "/t/日本.png"};
    const auto round = FileListData::encode(names, effect::kCut);
    const FileListData back = FileListData::decode(round.get());
    EXPECT_EQ(back.paths, names);
    EXPECT_EQ(back.effect, effect::kCut);

    QMimeData nothing;
    nothing.setData(u"x-special/gnome-copied-files"_s, "cut");
    EXPECT_TRUE(FileListData::decode(&nothing).empty());
    EXPECT_TRUE(FileListData::decode(nullptr).empty());
}

// ---- The drag-over table

TEST(DropRules, EffectByOriginAndKeys) {
    using D = DropRules;
    constexpr auto S = D::kShift, C = D::kCtrl, A = D::kAlt;
    struct Row {
        bool fromThisView;
        std::uint32_t keys;
        std::uint32_t expected;
    };
    const Row rows[] = {
        {false, 0, effect::kMove},    {false, S, effect::kMove},
        {false, C, effect::kCopy},    {false, C | S, effect::kLink},
        {false, A, effect::kLink},    {false, A | C, effect::kCopy},
        {true, 0, effect::kNone},     {true, C, effect::kNone},
        {true, S, effect::kNone},     {true, A, effect::kLink},
        {true, C | S, effect::kLink}, {true, A | C | S, effect::kLink},
    };
    for (const Row& r : rows)
        EXPECT_EQ(D::dragOverEffect(true, true, r.fromThisView, r.keys), r.expected)
            << r.fromThisView << " keys " << r.keys;
    EXPECT_EQ(D::dragOverEffect(false, true, false, C), effect::kNone);
    EXPECT_EQ(D::dragOverEffect(true, false, false, C), effect::kNone);
    EXPECT_EQ(D::keyState(Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier), S | C | A);
}

// ---- Transfers

class TransferTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        ASSERT_TRUE(QDir().mkpath(m_dir.path() + u"/src"_s));
        ASSERT_TRUE(QDir().mkpath(m_dir.path() + u"/dst"_s));
    }
    QByteArray src(const char* name = "") const {
        return QFile::encodeName(m_dir.path() + u"/src/"_s) + name;
    }
    QByteArray dst(const char* name = "") const {
        return QFile::encodeName(m_dir.path() + u"/dst/"_s) + name;
    }
    TransferEngine::Result run(TransferEngine::Mode mode, QList<QByteArray> sources,
                               TransferEngine::Hooks hooks = {}) {
        TransferEngine engine(mode, std::move(sources), dst(), std::move(hooks));
        return engine.run();
    }
    QTemporaryDir m_dir{QStringLiteral(LANMIRA_BUILD_DIR "/fileops-XXXXXX")};
};

TEST_F(TransferTest, CopyKeepsBytesPermissionsAndTimesAndCopiesFoldersWhole) {
    const QByteArray content = bytesOf(3'000'000, 3);
    writeFile(src("a.jpg"), content);
    ::chmod(src("a.jpg").constData(), 0640);
    const struct timespec times[2] = {{1'000'000'000, 0}, {1'200'000'000, 500}};
    ::utimensat(AT_FDCWD, src("a.jpg").constData(), times, 0);
    ASSERT_TRUE(QDir().mkpath(QFile::decodeName(src("album/inner"))));
    writeFile(src("album/inner/b.png"), "png");
    ASSERT_EQ(::symlink("a.jpg", src("link.jpg").constData()), 0);

    const auto r = run(TransferEngine::Mode::Copy, {src("a.jpg"), src("album"), src("link.jpg")});
    EXPECT_TRUE(r.ok());
    EXPECT_EQ(r.transferred, 3);
    EXPECT_EQ(readFile(dst("a.jpg")), content);
    EXPECT_EQ(readFile(dst("album/inner/b.png")), "png");
    struct stat st {};
    ASSERT_EQ(::stat(dst("a.jpg").constData(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640u);
    EXPECT_EQ(st.st_mtim.tv_sec, 1'200'000'000);
    char target[64] = {};
    EXPECT_EQ(::readlink(dst("link.jpg").constData(), target, sizeof target - 1), 5);
    EXPECT_STREQ(target, "a.jpg");
    EXPECT_TRUE(QFile::exists(QFile::decodeName(src("a.jpg"))));
    EXPECT_TRUE(partials(m_dir.path()).isEmpty());
}

TEST_F(TransferTest, RefusesAFileOntoItselfAFolderIntoItselfAndReportsVanishedSources) {
    writeFile(src("a.jpg"), "a");
    writeFile(src("b.jpg"), "b");
    TransferEngine onto(TransferEngine::Mode::Copy, {src("a.jpg")}, src(), {});
    const auto r1 = onto.run();
    ASSERT_EQ(r1.failures.size(), 1u);
    EXPECT_EQ(readFile(src("a.jpg")), "a");

    TransferEngine into(TransferEngine::Mode::Move, {QFile::encodeName(m_dir.path())}, dst(), {});
    EXPECT_EQ(into.run().failures.size(), 1u);
    EXPECT_TRUE(QFile::exists(QFile::decodeName(src("b.jpg"))));

    const auto r3 = run(TransferEngine::Mode::Copy, {src("gone.jpg"), src("b.jpg")});
    ASSERT_EQ(r3.failures.size(), 1u);
    EXPECT_TRUE(r3.failures[0].path.endsWith(u"gone.jpg"_s));
    EXPECT_EQ(r3.transferred, 1);
}

TEST_F(TransferTest, EveryConflictAnswer) {
    for (const char* n : {"1.jpg", "2.jpg", "3.jpg"}) {
        writeFile(src(n), "new");
        writeFile(dst(n), "old");
    }
    const QList<QByteArray> all{src("1.jpg"), src("2.jpg"), src("3.jpg")};

    struct Case {
        std::vector<TransferEngine::Conflict> answers;
        bool applyToAll;
        const char* expected; // what 1, 2 and 3 hold after
        int asked;
        bool cancelled;
    };
    using C = TransferEngine::Conflict;
    const Case cases[] = {
        {{C::Replace, C::Skip, C::Replace}, false, "new old new", 3, false},
        {{C::Skip}, true, "old old old", 1, false},
        {{C::Replace}, true, "new new new", 1, false},
        {{C::Skip, C::Cancel}, false, "old old old", 2, true},
    };
    for (const Case& c : cases) {
        for (const char* n : {"1.jpg", "2.jpg", "3.jpg"})
            writeFile(dst(n), "old");
        int asked = 0;
        TransferEngine::Hooks hooks;
        hooks.askConflict = [&](const QString& target, bool* applyToAll) {
            EXPECT_TRUE(target.endsWith(u".jpg"_s));
            *applyToAll = c.applyToAll;
            return c.answers[static_cast<std::size_t>(asked++)];
        };
        const auto r = run(TransferEngine::Mode::Copy, all, hooks);
        const QByteArray got =
            readFile(dst("1.jpg")) + ' ' + readFile(dst("2.jpg")) + ' ' + readFile(dst("3.jpg"));
        EXPECT_EQ(got, c.expected);
        EXPECT_EQ(asked, c.asked);
        EXPECT_EQ(r.cancelled, c.cancelled);
        EXPECT_TRUE(r.failures.empty());
    }
    EXPECT_TRUE(partials(m_dir.path()).isEmpty());
}

TEST_F(TransferTest, MoveRenamesWithinOneFileSystemAndKeepsWhatIsInTheWay) {
    writeFile(src("a.jpg"), "a");
    ASSERT_TRUE(QDir().mkpath(QFile::decodeName(src("album"))));
    writeFile(src("album/b.jpg"), "b");
    struct stat before {};
    ::stat(src("a.jpg").constData(), &before);
    const auto r = run(TransferEngine::Mode::Move, {src("a.jpg"), src("album")});
    EXPECT_TRUE(r.ok());
    EXPECT_EQ(r.transferred, 2);
    struct stat after {};
    ASSERT_EQ(::stat(dst("a.jpg").constData(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino); // renamed, not copied
    EXPECT_EQ(readFile(dst("album/b.jpg")), "b");
    EXPECT_FALSE(QFile::exists(QFile::decodeName(src("a.jpg"))));
    EXPECT_FALSE(QFileInfo::exists(QFile::decodeName(src("album"))));
}

TEST_F(TransferTest, CancelAndFullDiskLeaveSourcesAndNoPartFileUnderAFinalName) {
    writeFile(src("big.jpg"), bytesOf(6'000'000, 1));
    writeFile(src("next.jpg"), "next");

    // Cancel while the first file is half written.
    TransferEngine* engine = nullptr;
    std::size_t written = 0;
    TransferEngine::Hooks cancelling;
    cancelling.write = [&](int fd, const void* data, std::size_t size) {
        written += size;
        if (written > 2'000'000)
            engine->cancel();
        return ::write(fd, data, size);
    };
    TransferEngine e1(TransferEngine::Mode::Copy, {src("big.jpg"), src("next.jpg")}, dst(),
                      cancelling);
    engine = &e1;
    const auto r1 = e1.run();
    EXPECT_TRUE(r1.cancelled);
    EXPECT_FALSE(QFile::exists(QFile::decodeName(dst("big.jpg"))));
    EXPECT_FALSE(QFile::exists(QFile::decodeName(dst("next.jpg"))));
    EXPECT_TRUE(partials(m_dir.path()).isEmpty());

    // The disk fills up after 1 MB: the big file fails, the small one still fits.
    std::size_t room = 1'000'000;
    TransferEngine::Hooks full;
    full.write = [&](int fd, const void* data, std::size_t size) -> ssize_t {
        if (size > room) {
            errno = ENOSPC;
            return -1;
        }
        room -= size;
        return ::write(fd, data, size);
    };
    const auto r2 = run(TransferEngine::Mode::Copy, {src("big.jpg"), src("next.jpg")}, full);
    ASSERT_EQ(r2.failures.size(), 1u);
    EXPECT_TRUE(r2.failures[0].reason.contains(QString::fromLocal8Bit(std::strerror(ENOSPC))));
    EXPECT_FALSE(QFile::exists(QFile::decodeName(dst("big.jpg"))));
    EXPECT_EQ(readFile(dst("next.jpg")), "next");
    EXPECT_EQ(readFile(src("big.jpg")).size(), 6'000'000);
    EXPECT_TRUE(partials(m_dir.path()).isEmpty());
}

TEST_F(TransferTest, ReadOnlyTargetFailsCleanly) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "root writes into read-only folders";
    writeFile(src("a.jpg"), "a");
    ::chmod(dst().constData(), 0555);
    const auto r = run(TransferEngine::Mode::Move, {src("a.jpg")});
    ::chmod(dst().constData(), 0755);
    EXPECT_EQ(r.failures.size(), 1u);
    EXPECT_EQ(readFile(src("a.jpg")), "a");
}

// Across file systems a move is a copy and a delete: killing it at any moment leaves every
// file whole in one place or the other.
TEST_F(TransferTest, KilledMidMoveAcrossFileSystemsLosesNothing) {
    QTemporaryDir other(u"/dev/shm/fileops-XXXXXX"_s);
    struct stat a {
    }, b{};
    if (!other.isValid() || ::stat(other.path().toLocal8Bit().constData(), &a) != 0 ||
        ::stat(m_dir.path().toLocal8Bit().constData(), &b) != 0 || a.st_dev == b.st_dev)
        GTEST_SKIP() << "no second file system at /dev/shm";
    constexpr int kFiles = 40;
    constexpr int kSize = 1'500'000;
    QList<QByteArray> sources;
    for (int i = 0; i < kFiles; ++i) {
        const QByteArray name = src("") + "f" + QByteArray::number(i) + ".jpg";
        writeFile(name, bytesOf(kSize, static_cast<char>(i)));
        sources.append(name);
    }
    const QByteArray target = QFile::encodeName(other.path());
    for (int delayMs : {30, 90, 200}) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            TransferEngine engine(TransferEngine::Mode::Move, sources, target, {});
            engine.run();
            ::_exit(0);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        for (int i = 0; i < kFiles; ++i) {
            const QByteArray name = "f" + QByteArray::number(i) + ".jpg";
            const QByteArray expected = bytesOf(kSize, static_cast<char>(i));
            const QByteArray inSource = readFile(src("") + name);
            const QByteArray inTarget = readFile(target + '/' + name);
            EXPECT_TRUE(inSource == expected || inTarget == expected) << name.constData();
            if (!inTarget.isEmpty()) {
                EXPECT_EQ(inTarget, expected) << "partial file under a final name";
            }
        }
        // Move back what arrived, for the next round.
        for (QDirIterator it(other.path(), QDir::Files); it.hasNext();) {
            const QString p = it.next();
            const QString home = QFile::decodeName(src("")) + QFileInfo(p).fileName();
            if (!p.endsWith(QString::fromLatin1(TransferEngine::kTempSuffix)) &&
                !QFile::exists(home)) {
                QFile::rename(p, home);
            } else {
                QFile::remove(p);
            }
        }
    }
}

// ---- Links

TEST(LinkMaker, NamesAfterTheSourceAndAsksBeforeReplacing) {
    QTemporaryDir dir;
    const QByteArray root = QFile::encodeName(dir.path());
    QDir().mkpath(dir.path() + u"/pics"_s);
    QDir().mkpath(dir.path() + u"/out"_s);
    writeFile(root + "/pics/a.jpg", "a");
    writeFile(root + "/pics/b.jpg", "b");
    writeFile(root + "/pics/c.jpg", "c");
    const QByteArray a = root + "/pics/a.jpg";
    const QByteArray shortcut = root + "/pics/short.jpg";
    ASSERT_EQ(::symlink(a.constData(), shortcut.constData()), 0);
    writeFile(root + "/out/b.jpg", "in the way");
    writeFile(root + "/out/c.jpg", "in the way");

    // A link to a link keeps the name; b: No; c: Yes.
    QStringList asked;
    QList<LinkMaker::Answer> answers{LinkMaker::Answer::No, LinkMaker::Answer::Yes};
    const auto r =
        LinkMaker::makeLinks({root + "/pics/short.jpg", root + "/pics/b.jpg", root + "/pics/c.jpg"},
                             root + "/out", [&](const QString& name) {
                                 asked.append(name);
                                 return answers.takeFirst();
                             });
    EXPECT_EQ(asked, (QStringList{u"b.jpg"_s, u"c.jpg"_s}));
    EXPECT_EQ(r.made, 2);
    EXPECT_EQ(QFileInfo(dir.path() + u"/out/short.jpg"_s).symLinkTarget(),
              dir.path() + u"/pics/short.jpg"_s);
    EXPECT_EQ(readFile(root + "/out/b.jpg"), "in the way");
    EXPECT_TRUE(QFileInfo(dir.path() + u"/out/c.jpg"_s).isSymLink());
    EXPECT_EQ(readFile(root + "/out/c.jpg"), "c");

    // Cancel stops the rest; the source's own folder never swaps a file for a link.
    writeFile(root + "/out/a.jpg", "x");
    const auto cancelled =
        LinkMaker::makeLinks({root + "/pics/a.jpg", root + "/pics/b.jpg"}, root + "/out",
                             [](const QString&) { return LinkMaker::Answer::Cancel; });
    EXPECT_TRUE(cancelled.cancelled);
    EXPECT_EQ(cancelled.made, 0);
    const auto self = LinkMaker::makeLinks({root + "/pics/a.jpg"}, root + "/pics",
                                           [](const QString&) { return LinkMaker::Answer::Yes; });
    EXPECT_EQ(self.failed.size(), 1);
    EXPECT_FALSE(QFileInfo(dir.path() + u"/pics/a.jpg"_s).isSymLink());
    EXPECT_EQ(readFile(root + "/pics/a.jpg"), "a");
}

// ---- Multi-page TIFF

// A w × h 24-bit picture as a packed bitmap.
std::vector<std::uint8_t> dib(int w, int h, std::uint8_t shade) {
    const int stride = (w * 3 + 3) / 4 * 4;
    std::vector<std::uint8_t> d(40 + static_cast<std::size_t>(stride) * h, shade);
    auto put32 = [&](int at, std::uint32_t v) { std::memcpy(d.data() + at, &v, 4); };
    put32(0, 40);
    put32(4, static_cast<std::uint32_t>(w));
    put32(8, static_cast<std::uint32_t>(h));
    put32(12, 1 | (24u << 16));
    put32(16, 0);
    put32(20, static_cast<std::uint32_t>(stride * h));
    put32(24, 0), put32(28, 0), put32(32, 0), put32(36, 0);
    return d;
}

bool save(const QString& path, std::uint32_t format, int w, int h, std::uint8_t shade,
          bool append = false) {
    ImageIoParams p{};
    p.format = format;
    if (append)
        p.optionBytes[0] = IMAGELIB_OPT_APPEND_PAGE;
    const auto d = dib(w, h, shade);
    return ImageLib_Save(QFile::encodeName(path).constData(), d.data(), &p) != 0;
}

int pagesOf(const QString& path) {
    ImageIoParams p{};
    void* d = ImageLib_Open(QFile::encodeName(path).constData(), &p);
    if (!d)
        return 0;
    ImageLib_Free(d);
    return std::max(1, p.pageCount);
}

class TiffJoinerTest : public ::testing::Test {
protected:
    void SetUp() override {
        // The questions carry the catalog's texts.
        ASSERT_TRUE(i18n_init(QString::fromUtf8(LANMIRA_BUILD_DIR "/share/lanmira/i18n"), 0));
        ASSERT_TRUE(save(path(u"two.tif"_s), IMAGELIB_FMT_TIFF, 30, 20, 10));
        ASSERT_TRUE(save(path(u"two.tif"_s), IMAGELIB_FMT_TIFF, 30, 20, 90, true));
        ASSERT_TRUE(save(path(u"one.bmp"_s), IMAGELIB_FMT_BMP, 16, 16, 200));
        QFile broken(path(u"broken.jpg"_s));
        ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
        broken.write("\xFF\xD8 not a picture");
    }
    QString path(const QString& name) const { return m_dir.path() + u'/' + name; }
    std::vector<TiffJoiner::Source> sources(const QStringList& names) const {
        std::vector<TiffJoiner::Source> s;
        for (const QString& n : names)
            s.push_back({n, path(n)});
        return s;
    }
    bool leftovers() const {
        return !QDir(m_dir.path())
                    .entryList({u".*lanmira-part*"_s}, QDir::Files | QDir::Hidden)
                    .isEmpty();
    }
    QTemporaryDir m_dir;
};

TEST_F(TiffJoinerTest, EveryPageOfEveryPictureAndOkGoesOnPastABrokenOne) {
    QStringList asked;
    TiffJoiner::Hooks hooks;
    hooks.pauseMs = 0;
    hooks.ask = [&](const QString& text) {
        asked.append(text);
        return TiffJoiner::Answer::Ok;
    };
    std::vector<int> progress;
    hooks.progress = [&](int p) { progress.push_back(p); };
    const auto r = TiffJoiner::join(sources({u"two.tif"_s, u"broken.jpg"_s, u"one.bmp"_s}),
                                    path(u"out.tif"_s), hooks);
    EXPECT_EQ(r.outcome, TiffJoiner::Outcome::Written);
    EXPECT_EQ(r.pages, 3);
    EXPECT_EQ(pagesOf(path(u"out.tif"_s)), 3);
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(asked[0].contains(u"broken.jpg"_s)); // the name, then the library's text
    EXPECT_EQ(progress, (std::vector<int>{0, 33, 66, 100}));
    EXPECT_FALSE(leftovers());
}

TEST_F(TiffJoinerTest, CancelOrAFailedSaveLeavesNoFileUnderTheChosenName) {
    TiffJoiner::Hooks cancel;
    cancel.pauseMs = 0;
    cancel.ask = [](const QString&) { return TiffJoiner::Answer::Cancel; };
    // An older file of that name stays as it was.
    QFile old(path(u"out.tif"_s));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("old");
    old.close();
    const auto r = TiffJoiner::join(sources({u"two.tif"_s, u"broken.jpg"_s, u"one.bmp"_s}),
                                    path(u"out.tif"_s), cancel);
    EXPECT_EQ(r.outcome, TiffJoiner::Outcome::Cancelled);
    EXPECT_EQ(QFileInfo(path(u"out.tif"_s)).size(), 3);
    EXPECT_FALSE(leftovers());

    // Saving into a folder that does not exist: asked with the output's name each time.
    QStringList asked;
    TiffJoiner::Hooks fail;
    fail.pauseMs = 0;
    fail.ask = [&](const QString& text) {
        asked.append(text);
        return TiffJoiner::Answer::Ok;
    };
    const QString nowhere = path(u"missing/out.tif"_s);
    const auto r2 = TiffJoiner::join(sources({u"one.bmp"_s}), nowhere, fail);
    EXPECT_EQ(r2.outcome, TiffJoiner::Outcome::Nothing);
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(asked[0].contains(nowhere));
    EXPECT_FALSE(QFile::exists(nowhere));
}

} // namespace

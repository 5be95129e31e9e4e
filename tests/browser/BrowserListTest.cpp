#include "browser/BrowserList.h"

#include "browser/BrowserSettings.h"
#include "browser/FileNames.h"
#include "browser/FormatLookup.h"
#include "browser/thumbnails/ThumbnailMaker.h"
#include "imagelib/imagelib.h"

#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <fstream>
#include <unistd.h>

using namespace lanmira;
using namespace Qt::StringLiterals;

// Readable failure output for lists of names.
void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}

namespace {

using Names = std::vector<QString>;

class Folder {
public:
    QString path() const { return m_dir.path() + u'/'; }
    QByteArray raw(const QString& name) const { return QFile::encodeName(path() + name); }

    void touch(std::initializer_list<const char*> names) const {
        for (const char* name : names)
            EXPECT_TRUE(QFile(path() + QString::fromUtf8(name)).open(QIODevice::WriteOnly));
    }
    void link(const QString& name, const QString& target) const {
        EXPECT_EQ(::symlink(QFile::encodeName(target).constData(), raw(name).constData()), 0);
    }
    void remove(const QString& name) const { EXPECT_TRUE(QFile::remove(path() + name)); }

    // A sorted list of the folder's images.
    std::unique_ptr<BrowserList> scan() const {
        auto list = std::make_unique<BrowserList>();
        list->currentFolder = path();
        list->fullScan();
        list->sort();
        return list;
    }

private:
    QTemporaryDir m_dir;
};

Names namesOf(const BrowserList& list) {
    Names names;
    for (const auto& item : list.items())
        names.push_back(item->path.section(u'/', -1));
    return names;
}

Names sorted(Names names) {
    std::sort(names.begin(), names.end());
    return names;
}

const BrowserItem* find(const BrowserList& list, const QString& name) {
    for (const auto& item : list.items())
        if (item->path.endsWith(u'/' + name))
            return item.get();
    return nullptr;
}

TEST(FormatLookup, MatchesExtensionsIgnoringCase) {
    const struct {
        QString path;
        std::uint32_t format;
        int rank;
    } cases[] = {
        {u"/f/a.jpg"_s, 2, 2},      {u"/f/a.JPEG"_s, 2, 3},     {u"/f/a.Tif"_s, 4, 7},
        {u"/f/a.bmp"_s, 1, 0},      {u"/f/a.txt"_s, 0, -1},     {u"/f/a.lnk"_s, 0, -1},
        {u"/f/trailing."_s, 0, -1}, {u"/f.jpg/noext"_s, 0, -1}, {u"/f/a.jpg.gz"_s, 0, -1},
    };
    for (const auto& c : cases) {
        const QStringView ext = FormatLookup::extensionOf(c.path);
        EXPECT_EQ(ext.isNull() ? 0 : FormatLookup::formatOfExtension(ext), c.format)
            << c.path.toStdString();
        EXPECT_EQ(FormatLookup::typeRank(c.path), c.rank) << c.path.toStdString();
    }
}

TEST(BrowserListScan, ListsImageFilesAndShortcutsToImagesOnly) {
    Folder dir;
    dir.touch({"a.jpg", "B.JPG", "c.Png", "notes.txt", "noext", "trailing.", "filtered.tif"});
    ASSERT_TRUE(QDir(dir.path()).mkpath(u"folder.jpg"_s) && QDir(dir.path()).mkpath(u"other"_s));
    dir.touch({"other/pic.gif"});
    ASSERT_EQ(::mkfifo(dir.raw(u"pipe.jpg"_s).constData(), 0600), 0);
    // Not valid UTF-8: listed all the same, its bytes kept (checked further below).
    const QByteArray badName = QFile::encodeName(dir.path()) + "bad\xff.jpg";
    const int fd = ::open(badName.constData(), O_CREAT | O_WRONLY, 0600);
    ASSERT_GE(fd, 0);
    ::close(fd);
    // The temporary folder's own clean-up cannot name it.
    const auto unlinkBadName = qScopeGuard([&badName] { ::unlink(badName.constData()); });

    dir.link(u"link-to-a"_s, u"a.jpg"_s); // a shortcut needs no extension of its own
    dir.link(u"up.bmp"_s, u"other/../other/pic.gif"_s);
    dir.link(u"to-folder.jpg"_s, u"folder.jpg"_s);
    dir.link(u"to-text.jpg"_s, u"notes.txt"_s);
    dir.link(u"dead.jpg"_s, u"missing.jpg"_s);
    dir.link(u"loop1.jpg"_s, u"loop2.jpg"_s);
    dir.link(u"loop2.jpg"_s, u"loop1.jpg"_s);

    BrowserList list;
    list.formatFilter[4] = 4; // TIFF: bit 0 clear
    list.currentFolder = dir.path();
    list.fullScan();

    const QString badText = filenames::decode("bad\xff.jpg");
    EXPECT_EQ(sorted(namesOf(list)), sorted(Names{u"B.JPG"_s, u"a.jpg"_s, badText, u"c.Png"_s,
                                                  u"link-to-a"_s, u"up.bmp"_s}));
    ASSERT_NE(find(list, badText), nullptr);
    EXPECT_EQ(filenames::encode(find(list, badText)->path), badName);
    EXPECT_EQ(find(list, u"c.Png"_s)->format, 3u);
    EXPECT_FALSE(find(list, u"a.jpg"_s)->isShortcut());
    const BrowserItem* shortcut = find(list, u"link-to-a"_s);
    EXPECT_EQ(shortcut->format, 2u);
    EXPECT_EQ(shortcut->linkTarget, dir.path() + u"a.jpg"_s);
    EXPECT_EQ(find(list, u"up.bmp"_s)->format, 5u) << "the target's format, not the link's";
    EXPECT_EQ(find(list, u"up.bmp"_s)->linkTarget, dir.path() + u"other/pic.gif"_s);

    list.formatFilter[4] = 5;
    list.fullScan();
    EXPECT_NE(find(list, u"filtered.tif"_s), nullptr);

    list.currentFolder = dir.path() + u"vanished/"_s;
    list.fullScan();
    EXPECT_TRUE(list.items().empty());
}

TEST(BrowserListSort, EveryKeyAscendingAndItsExactReverse) {
    // Ties on purpose: three images of 200 pixels, two of width 10 and height 20, two
    // unknown sizes; 50000 x 50000 wraps to a negative 32-bit pixel count.
    const std::tuple<const char*, std::int32_t, std::int32_t, const char*> rows[] = {
        {"/f/c.tif", 10, 20, ""},    {"/f/huge.gif", 50000, 50000, ""}, {"/f/b.jpg", 20, 10, ""},
        {"/f/e", 30, 5, "/f/t.bmp"}, {"/f/A.png", 10, 20, ""},          {"/f/d.JPG", 0, 0, ""},
        {"/f/f.xyz", 0, 0, ""},
    };
    const std::pair<SortKey, Names> cases[] = {
        {SortKey::Name,
         {u"A.png"_s, u"b.jpg"_s, u"c.tif"_s, u"d.JPG"_s, u"e"_s, u"f.xyz"_s, u"huge.gif"_s}},
        {SortKey::Type,
         {u"f.xyz"_s, u"e"_s, u"b.jpg"_s, u"d.JPG"_s, u"A.png"_s, u"c.tif"_s, u"huge.gif"_s}},
        {SortKey::Size,
         {u"huge.gif"_s, u"d.JPG"_s, u"f.xyz"_s, u"e"_s, u"A.png"_s, u"c.tif"_s, u"b.jpg"_s}},
        {SortKey::Width,
         {u"d.JPG"_s, u"f.xyz"_s, u"A.png"_s, u"c.tif"_s, u"b.jpg"_s, u"e"_s, u"huge.gif"_s}},
        {SortKey::Height,
         {u"d.JPG"_s, u"f.xyz"_s, u"e"_s, u"b.jpg"_s, u"A.png"_s, u"c.tif"_s, u"huge.gif"_s}},
        {SortKey::Extension,
         {u"e"_s, u"huge.gif"_s, u"b.jpg"_s, u"d.JPG"_s, u"A.png"_s, u"c.tif"_s, u"f.xyz"_s}},
    };
    for (const auto& [key, ascending] : cases) {
        SCOPED_TRACE(static_cast<int>(key));
        BrowserList list;
        for (const auto& [path, width, height, target] : rows) {
            auto& item = list.items().emplace_back(std::make_unique<BrowserItem>(
                QString::fromUtf8(path), 1u, QString::fromUtf8(target)));
            item->imageWidth = width;
            item->imageHeight = height;
        }
        list.sortKey = static_cast<std::int32_t>(key);
        for (const std::int32_t direction : {0, 1}) {
            list.sortDirection = direction;
            EXPECT_TRUE(list.sort());
            EXPECT_EQ(namesOf(list),
                      direction ? Names(ascending.rbegin(), ascending.rend()) : ascending);
            EXPECT_FALSE(list.sort()) << "a sorted list reports no change";
        }
    }
    // Names differing only in case still have one order.
    const BrowserItem upper(u"/f/IMG.jpg"_s, 2), lower(u"/f/img.jpg"_s, 2);
    for (const std::int32_t direction : {0, 1})
        EXPECT_NE(BrowserList::before(upper, lower, 0, direction),
                  BrowserList::before(lower, upper, 0, direction));
}

TEST(BrowserListRescan, AppendsOnlyNewNamesAtTheEnd) {
    Folder dir;
    dir.touch({"b.jpg", "c.jpg"});
    const auto list = dir.scan();
    dir.touch({"a.jpg", "B.jpg", "new.txt"}); // B.jpg: a different file on Linux
    dir.remove(u"c.jpg"_s);
    EXPECT_TRUE(list->rescanForAdditions());
    const Names names = namesOf(*list);
    ASSERT_EQ(names.size(), 4u);
    EXPECT_EQ(Names(names.begin(), names.begin() + 2), (Names{u"b.jpg"_s, u"c.jpg"_s}))
        << "existing items keep their places, vanished ones stay";
    EXPECT_EQ(sorted({names[2], names[3]}), (Names{u"B.jpg"_s, u"a.jpg"_s}));
    EXPECT_FALSE(list->rescanForAdditions());
}

TEST(BrowserListSelection, SelectsAndRemovesOnlyWhatIsGone) {
    Folder dir;
    dir.touch({"a.jpg", "b.jpg", "c.jpg", "d.jpg"});
    dir.link(u"s.jpg"_s, u"d.jpg"_s);
    const auto list = dir.scan();
    ASSERT_EQ(namesOf(*list).size(), 5u);

    list->selectAll();
    list->items()[2]->setSelected(false); // c.jpg
    EXPECT_EQ(list->selectedCount(), 4);
    list->invertSelection();
    EXPECT_EQ(list->selectedPaths(), Names{dir.path() + u"c.jpg"_s});
    list->invertSelection();

    dir.remove(u"a.jpg"_s);
    dir.remove(u"c.jpg"_s); // gone but not selected: stays
    dir.remove(u"d.jpg"_s); // the shortcut to it remains a file of its own
    EXPECT_TRUE(list->removeSelectedGone());
    EXPECT_EQ(namesOf(*list), (Names{u"b.jpg"_s, u"c.jpg"_s, u"s.jpg"_s}));
    EXPECT_FALSE(list->removeSelectedGone());

    EXPECT_EQ(list->removePath(dir.path() + u"C.JPG"_s), -1) << "paths match exactly";
    EXPECT_EQ(list->removePath(dir.path() + u"c.jpg"_s), 1);
    EXPECT_EQ(namesOf(*list), (Names{u"b.jpg"_s, u"s.jpg"_s}));
}

TEST(BrowserSettings, RoundTripsAndIgnoresBadValues) {
    QTemporaryDir home;
    const std::filesystem::path root = home.path().toStdString();
    const auto values = [](const BrowserList& l) {
        return std::tuple(l.sortKey, l.sortDirection, l.largeMode);
    };
    BrowserSettings settings(u"Acme"_s, u"Scope"_s, root);
    BrowserList loaded;
    settings.load(loaded);
    EXPECT_EQ(values(loaded), std::tuple(0, 0, 1));
    EXPECT_EQ(loaded.formatFilter[15], 5u);

    BrowserList saved;
    saved.sortKey = 4;
    saved.sortDirection = 1;
    saved.largeMode = 0;
    saved.formatFilter[2] = 0xFFFFFFFEu;
    saved.formatFilter[7] = 6;
    settings.save(saved);
    EXPECT_TRUE(std::filesystem::exists(root / "Vornalt/Lanmira/Shell.conf"));
    EXPECT_TRUE(std::filesystem::exists(root / "Acme/Scope/ibrowser.conf"));
    settings.load(loaded);
    EXPECT_EQ(values(loaded), std::tuple(4, 1, 0));
    EXPECT_EQ(loaded.formatFilter, saved.formatFilter);

    std::ofstream(root / "Acme/Scope/ibrowser.conf") << "sortby=6\nsortmode=-1\nbLargemode=yes\n";
    std::ofstream(root / "Vornalt/Lanmira/Shell.conf") << "if00=junk\nif01=0\n";
    settings.load(loaded);
    EXPECT_EQ(values(loaded), std::tuple(0, 0, 1));
    EXPECT_EQ(std::tuple(loaded.formatFilter[0], loaded.formatFilter[1], loaded.formatFilter[2]),
              std::tuple(5u, 0u, 5u));
}

// Linux names are bytes: whatever they hold, the text the program keeps names the same file.
TEST(FileNames, AnyBytesRoundTripAndValidUtf8ReadsAsItself) {
    const QByteArray samples[] = {"plain.jpg",
                                  "Gr\xc3\xbc\xc3\x9f"
                                  "e \xe6\x97\xa5.png",
                                  "\xf0\x9f\x99\x82.bmp",
                                  "caf\xe9.bmp",
                                  "\xff\xfe\x80.tif",
                                  "\xc3(overlong \xc0\xaf)",
                                  "\xed\xa0\x80 surrogate bytes",
                                  "cut \xe6\x97",
                                  "\xf4\x90\x80\x80 above U+10FFFF"};
    for (const QByteArray& raw : samples) {
        const QString text = filenames::decode(raw);
        EXPECT_EQ(filenames::encode(text), raw) << raw.toHex().constData();
        if (QString::fromUtf8(raw).toUtf8() == raw) {
            EXPECT_EQ(text, QString::fromUtf8(raw)) << "valid UTF-8 reads as Qt reads it";
        }
    }
}

TEST(FileNames, ANameThatIsNotUtf8IsThumbnailedSavedAndDeleted) {
    Folder dir;
    const QByteArray raw = QFile::encodeName(dir.path()) + "caf\xe9 \xff.bmp";
    {
        // A 2 x 2 24-bit bitmap.
        QFile file(QString::fromUtf8(QFile::encodeName(dir.path())) + u"seed.bmp"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        const unsigned char bmp[] = {'B', 'M', 70,  0, 0, 0, 0,  0, 0,   0,   54,  0,   0,   0,
                                     40,  0,   0,   0, 2, 0, 0,  0, 2,   0,   0,   0,   1,   0,
                                     24,  0,   0,   0, 0, 0, 16, 0, 0,   0,   0,   0,   0,   0,
                                     0,   0,   0,   0, 0, 0, 0,  0, 0,   0,   0,   0,   255, 0,
                                     0,   0,   255, 0, 0, 0, 0,  0, 255, 255, 255, 255, 0,   0};
        file.write(reinterpret_cast<const char*>(bmp), sizeof bmp);
    }
    ASSERT_EQ(::rename(QFile::encodeName(dir.path() + u"seed.bmp"_s).constData(), raw.constData()),
              0);
    const auto list = dir.scan();
    ASSERT_EQ(list->items().size(), 1u);
    const QString path = list->items().front()->path;
    EXPECT_EQ(filenames::encode(path), raw);

    const ThumbnailMaker::Result made = ThumbnailMaker::make(path);
    EXPECT_EQ(std::tuple(made.large.width, made.large.height), std::tuple(2, 2));

    ImageIoParams params{};
    void* picture = ImageLib_Open(filenames::encode(path).constData(), &params);
    ASSERT_NE(picture, nullptr);
    EXPECT_TRUE(ImageLib_Save(filenames::encode(path).constData(), picture, &params));
    ImageLib_Free(picture);
    EXPECT_EQ(dir.scan()->items().size(), 1u) << "saved over itself, no second file";

    EXPECT_EQ(::unlink(filenames::encode(path).constData()), 0);
    EXPECT_TRUE(dir.scan()->items().empty());
}

} // namespace

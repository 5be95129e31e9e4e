#include "browser/thumbnails/ThumbnailCache.h"

#include "acquire/DibLayout.h"
#include "acquire/PackedDib.h"
#include "browser/BrowserList.h"
#include "browser/thumbnails/CacheEligibility.h"
#include "browser/thumbnails/ThumbnailMaker.h"
#include "imagelib/imagelib.h"

#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <future>
#include <vector>

using namespace lanmira;
using namespace Qt::StringLiterals;

namespace {

using Bytes = std::vector<std::uint8_t>;

void put32(Bytes& b, std::uint32_t v) {
    for (int i = 0; i < 4; ++i)
        b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

std::uint32_t le32(const Bytes& b, std::size_t at) {
    return b[at] | (b[at + 1] << 8) | (b[at + 2] << 16) | (std::uint32_t{b[at + 3]} << 24);
}

Thumbnail filled(std::int32_t w, std::int32_t h, std::uint8_t seed) {
    Thumbnail t{Bytes(Thumbnail::stride(w) * h), w, h};
    for (std::size_t i = 0; i < t.pixels.size(); ++i)
        t.pixels[i] = static_cast<std::uint8_t>(seed + i * 7);
    return t;
}

void writeFile(const QString& path, const Bytes& bytes) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size()));
}

void setMtime(const QString& path, std::int64_t sec, long nsec = 0) {
    const timespec t[2] = {{sec, nsec}, {sec, nsec}};
    ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), t, 0), 0);
}

// A bottom-up BMP file of 24 bits, or 8 bits with a grey palette.
Bytes bmp(std::int32_t w, std::int32_t h, int bits) {
    const std::uint32_t stride = (w * bits + 31) / 32 * 4, table = bits == 8 ? 1024 : 0;
    Bytes b = {'B', 'M'};
    for (std::uint32_t v : {54 + table + stride * h, 0u, 54 + table, 40u, std::uint32_t(w),
                            std::uint32_t(h), 1u | (bits << 16), 0u, 0u, 0u, 0u, 0u, 0u})
        put32(b, v);
    for (std::uint32_t i = 0; i < table / 4; ++i)
        put32(b, i * 0x010101);
    for (std::uint32_t i = 0; i < stride * h; ++i)
        b.push_back(static_cast<std::uint8_t>(i * 13));
    return b;
}

class ThumbnailCacheTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        QDir().mkpath(images);
        QDir().mkpath(removable);
        CacheEligibility::setClassifier(
            [usb = removable](const QString& p) { return !p.startsWith(usb); });
    }
    void TearDown() override { CacheEligibility::setClassifier({}); }

    // An image file dated 1000 s into the epoch, and an item for it with both thumbnails.
    std::unique_ptr<BrowserItem> madeItem(const QString& name) {
        auto item = std::make_unique<BrowserItem>(images + name, 2);
        writeFile(item->path, {1, 2, 3});
        setMtime(item->path, 1000);
        item->large = filled(96, 31, 1);
        item->small = filled(32, 10, 2);
        item->imageWidth = 3000;
        item->imageHeight = 968;
        item->bitsPerPixel = 24;
        return item;
    }

    QTemporaryDir dir;
    QString images = dir.path() + u"/img/"_s;
    QString removable = dir.path() + u"/usb/"_s;
    ThumbnailCache cache{dir.path() + u"/cache/"_s};
};

TEST_F(ThumbnailCacheTest, NameIsTheMd5OfTheUtf16PathUnderATwoDigitFolder) {
    const QString r = cache.root();
    // Digests from printf '%s' PATH | iconv -t UTF-16LE | md5sum.
    EXPECT_EQ(cache.fileNameFor(u"/home/user/Pictures/a.jpg"_s),
              r + u"92/761c379e9a2d9445a1627224bbf707"_s);
    EXPECT_EQ(cache.fileNameFor(u"/home/user/Pictures/A.jpg"_s),
              r + u"54/42eb96fb31f8dc3c676598c739c20f"_s);
    EXPECT_EQ(cache.fileNameFor(QString::fromUtf8("/data/Mikroskop/Zelle µ.tif")),
              r + u"12/396f37669f49d29da5a6c8993af58c"_s);
    // 259 units and the NUL fill the path field; one more does not fit.
    const QString longest = u'/' + QString(258, u'x');
    EXPECT_FALSE(cache.fileNameFor(longest).isEmpty());
    EXPECT_TRUE(cache.fileNameFor(longest + u'x').isEmpty());
    EXPECT_TRUE(cache.fileNameFor(removable + u"a.jpg"_s).isEmpty());
}

TEST_F(ThumbnailCacheTest, FileLayoutAndDecode) {
    BrowserItem item(u"/x/ab.jpg"_s, 2);
    item.large = filled(3, 2, 9); // 9-byte rows padded to 12
    item.small = filled(1, 1, 4);
    item.imageWidth = 300;
    item.imageHeight = 200;
    item.bitsPerPixel = 8;
    const Bytes f = ThumbnailCache::encode(item.path, item);
    ASSERT_EQ(f.size(), 520u + 40 + 24 + 40 + 4);
    EXPECT_EQ(Bytes(f.begin(), f.begin() + 4), Bytes({'/', 0, 'x', 0}));
    EXPECT_TRUE(std::all_of(f.begin() + 18, f.begin() + 520, [](auto b) { return b == 0; }));
    for (std::size_t h : {520u, 584u})
        EXPECT_EQ(Bytes(f.begin() + h + 12, f.begin() + h + 40),
                  Bytes({1, 0, 24,  0, 0, 0, 0, 0, 0, 0, 0, 0, 44, 1,
                         0, 0, 200, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0,  0}));
    EXPECT_EQ(le32(f, 524), 3u);
    EXPECT_EQ(le32(f, 528), 2u);
    EXPECT_EQ(le32(f, 588), 1u);

    BrowserItem back(item.path, 2);
    ASSERT_TRUE(ThumbnailCache::decode(f.data(), f.size(), u"/X/AB.JPG"_s, back));
    EXPECT_EQ(back.large.pixels, item.large.pixels);
    EXPECT_EQ(back.small.pixels, item.small.pixels);
    EXPECT_EQ(back.imageWidth, 300);
    EXPECT_EQ(back.bitsPerPixel, 8u);

    // Cut inside each field; another path; sides negative, zero or overflowing.
    for (std::size_t cut : {0u, 519u, 559u, 583u, 623u, 627u})
        EXPECT_FALSE(ThumbnailCache::decode(f.data(), cut, item.path, back)) << cut;
    EXPECT_FALSE(ThumbnailCache::decode(f.data(), f.size(), u"/x/ac.jpg"_s, back));
    for (std::uint32_t w : {0xFFFFFFFFu, 0u, 0x7FFFFFFFu, 0x0AAAAAABu}) {
        Bytes bad = f;
        for (int i = 0; i < 4; ++i)
            bad[524 + i] = static_cast<std::uint8_t>(w >> (8 * i));
        EXPECT_FALSE(ThumbnailCache::decode(bad.data(), bad.size(), item.path, back)) << w;
    }
}

TEST_F(ThumbnailCacheTest, WriteThenRead) {
    auto item = madeItem(u"a.jpg"_s);
    cache.write(*item);
    const QString name = cache.fileNameFor(item->path);
    EXPECT_EQ(QDir(QFileInfo(name).path()).entryList(QDir::Files | QDir::Hidden),
              QStringList(QFileInfo(name).fileName())); // no temporary left behind

    BrowserItem fresh(item->path, 2);
    ASSERT_TRUE(cache.read(fresh));
    EXPECT_TRUE(fresh.thumbnailDone());
    EXPECT_EQ(fresh.imageTime, std::int64_t{1000} * 1'000'000'000);
    EXPECT_EQ(fresh.large.pixels, item->large.pixels);
    EXPECT_EQ(fresh.small.width, 32);
    EXPECT_EQ(fresh.imageHeight, 968);
    EXPECT_EQ(fresh.bitsPerPixel, 24u);

    // A shortcut is cached under its target and learns both times.
    const QString link = images + u"link.jpg"_s;
    ASSERT_TRUE(QFile::link(item->path, link));
    BrowserItem shortcut(link, 2, item->path);
    ASSERT_TRUE(cache.read(shortcut));
    EXPECT_NE(shortcut.linkTime, shortcut.imageTime);
    EXPECT_NE(shortcut.linkTime, 0);

    // Never cached where the classifier says no, but its times are still learned.
    BrowserItem usb(removable + u"d.jpg"_s, 2);
    writeFile(usb.path, {1});
    usb.large = usb.small = filled(2, 2, 1);
    cache.write(usb);
    EXPECT_FALSE(cache.read(usb));
    EXPECT_NE(usb.imageTime, 0);
    EXPECT_EQ(QDir(cache.root()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(), 1);
}

TEST_F(ThumbnailCacheTest, BadOrStaleCacheFilesAreDeletedWhenRead) {
    // The image's nanoseconds against the cache file's 7, or a change to the cache file.
    const std::tuple<const char*, long, std::function<void(QByteArray&)>> cases[] = {
        {"as new as the image", 7, {}},
        {"a nanosecond older", 8, {}},
        {"truncated", 0, [](QByteArray& b) { b.chop(1); }},
        {"another image's", 0, [](QByteArray& b) { b[10] = b[10] ^ 1; }},
    };
    for (const auto& [what, imageNs, change] : cases) {
        SCOPED_TRACE(what);
        auto item = madeItem(u"b.jpg"_s);
        cache.write(*item);
        const QString name = cache.fileNameFor(item->path);
        if (change) {
            QFile f(name);
            ASSERT_TRUE(f.open(QIODevice::ReadWrite));
            QByteArray b = f.readAll();
            change(b);
            f.resize(0);
            f.seek(0);
            f.write(b);
        } else {
            setMtime(name, 5000, 7);
            setMtime(item->path, 5000, imageNs);
        }
        BrowserItem fresh(item->path, 2);
        EXPECT_FALSE(cache.read(fresh));
        EXPECT_FALSE(QFile::exists(name));
        EXPECT_FALSE(fresh.thumbnailDone() || !fresh.large.empty());
    }
}

TEST_F(ThumbnailCacheTest, ChangeCheck) {
    BrowserList list;
    auto item = madeItem(u"f.jpg"_s);
    EXPECT_EQ(cache.checkForChange(*item, list), ThumbnailCache::Unchanged); // never read
    cache.write(*item);
    ASSERT_TRUE(cache.read(*item));
    EXPECT_EQ(cache.checkForChange(*item, list), ThumbnailCache::Unchanged);

    setMtime(item->path, 2000);
    EXPECT_EQ(cache.checkForChange(*item, list), ThumbnailCache::Changed);
    EXPECT_FALSE(item->thumbnailDone());
    EXPECT_TRUE(item->large.empty());
    EXPECT_EQ(item->bitsPerPixel, 0u);
    EXPECT_FALSE(QFile::exists(cache.fileNameFor(item->path)));

    list.formatFilter[2] &= ~1u;
    EXPECT_EQ(cache.checkForChange(*item, list), ThumbnailCache::Gone);
    list.formatFilter[2] |= 1;
    QFile::remove(item->path);
    EXPECT_EQ(cache.checkForChange(*item, list), ThumbnailCache::Gone);
}

TEST_F(ThumbnailCacheTest, CleanRemovesOrphansAndKeepsTheRest) {
    auto kept = madeItem(u"g.jpg"_s);
    const QString sub = cache.root() + u"ab/"_s;
    const Bytes orphan = ThumbnailCache::encode(images + u"gone.jpg"_s, *kept);
    QDir().mkpath(sub + u"nested"_s);
    writeFile(sub + u"good"_s, ThumbnailCache::encode(kept->path, *kept));
    writeFile(sub + u"orphan"_s, orphan);
    writeFile(sub + u"short"_s, Bytes(519, 0));
    // A link out of the cache is removed; what it points at is left alone.
    writeFile(images + u"outside"_s, orphan);
    ASSERT_TRUE(QFile::link(images + u"outside"_s, sub + u"link"_s));
    // A fresh temporary may be a write in progress; an old one was left by a crash.
    writeFile(sub + u".abc-123456"_s, Bytes(10, 0));
    writeFile(sub + u".old-123456"_s, Bytes(10, 0));
    setMtime(sub + u".old-123456"_s, 1000);

    cache.clean(0x1ab); // only the low byte picks the folder
    QStringList left =
        QDir(sub).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    left.sort();
    EXPECT_EQ(left, QStringList({u".abc-123456"_s, u"good"_s, u"nested"_s}));
    EXPECT_TRUE(QFile::exists(images + u"outside"_s));
}

TEST(ThumbnailMakerTest, FitsTheBoxes) {
    const std::tuple<int, int, int, QSize> cases[] = {
        {300, 100, 96, {96, 32}}, {300, 100, 32, {32, 10}},   {20, 20, 96, {20, 20}},
        {20, 20, 32, {20, 20}},   {97, 97, 96, {96, 96}},     {1, 1000, 96, {1, 96}},
        {1000, 1, 32, {32, 1}},   {4000, 3000, 96, {96, 72}}, {4000, 3000, 32, {32, 24}},
        {300, 97, 96, {96, 32}}, // 31 takes the box side's parity
        {97, 300, 96, {32, 96}},  {0, 0, 96, {1, 1}},
    };
    for (const auto& [w, h, box, expected] : cases)
        EXPECT_EQ(ThumbnailMaker::fit(w, h, box, box), expected) << w << "x" << h << " in " << box;
}

Bytes firstPixels(const Thumbnail& t, std::size_t n) {
    return Bytes(t.pixels.begin(), t.pixels.begin() + static_cast<std::ptrdiff_t>(3 * n));
}

TEST(ThumbnailMakerTest, Scalers) {
    // Uniform stays uniform, shrinking (area) and enlarging (bilinear).
    Bytes flat;
    for (int i = 0; i < 12 * 7; ++i)
        flat.insert(flat.end(), {10, 128, 250});
    for (QSize to : {QSize(5, 3), QSize(12, 20), QSize(30, 2)}) {
        const Thumbnail t =
            ThumbnailMaker::scale24(flat.data(), 12, 7, 36, to.width(), to.height());
        ASSERT_EQ(t.pixels.size(), Thumbnail::stride(to.width()) * to.height());
        for (int y = 0; y < to.height(); ++y)
            EXPECT_EQ(Bytes(t.pixels.begin() + y * Thumbnail::stride(to.width()),
                            t.pixels.begin() + y * Thumbnail::stride(to.width()) + 3 * to.width()),
                      Bytes(flat.begin(), flat.begin() + 3 * to.width()));
    }
    // 2 x 2 to 1 x 1: the mean of four, rounded.
    const Bytes quad = {0, 0, 0, 1, 1, 1, 0, 0, 9, 9, 9, 255, 255, 255, 0, 0};
    EXPECT_EQ(firstPixels(ThumbnailMaker::scale24(quad.data(), 2, 2, 8, 1, 1), 1),
              Bytes({66, 66, 66}));
    // 3 x 1 to 2 x 1 does not shrink vertically, so bilinear at x = 0 and 1.5.
    const Bytes row = {0, 0, 0, 100, 100, 100, 200, 200, 200, 0, 0, 0};
    EXPECT_EQ(firstPixels(ThumbnailMaker::scale24(row.data(), 3, 1, 12, 2, 1), 2),
              Bytes({0, 0, 0, 150, 150, 150}));
    // 3 x 2 to 2 x 1: the middle column counts half in each output pixel.
    const Bytes two = {0,  0,  0,  90, 90, 90, 200, 200, 200, 0, 0, 0,
                       40, 40, 40, 90, 90, 90, 200, 200, 200, 0, 0, 0};
    EXPECT_EQ(firstPixels(ThumbnailMaker::scale24(two.data(), 3, 2, 12, 2, 1), 2),
              Bytes({43, 43, 43, 163, 163, 163}));
    // Nearest neighbour picks columns 0 and 1 of 3, and the top row of 2 (last in memory).
    EXPECT_EQ(firstPixels(ThumbnailMaker::stretch24(two.data(), 3, 2, 12, 2, 1), 2),
              Bytes({40, 40, 40, 90, 90, 90}));
    EXPECT_TRUE(ThumbnailMaker::scale24(two.data(), 3, 2, 8, 2, 1).empty()); // stride too short
}

TEST_F(ThumbnailCacheTest, MakeFromFiles) {
    const std::tuple<const char*, int, int, int, QSize, QSize> cases[] = {
        {"wide24.bmp", 300, 100, 24, {96, 32}, {32, 10}},
        {"exact24.bmp", 96, 72, 24, {96, 72}, {32, 24}},
        {"grey8.bmp", 150, 150, 8, {96, 96}, {32, 32}},
        {"tiny8.bmp", 5, 3, 8, {5, 3}, {5, 3}},
    };
    for (const auto& [name, w, h, bits, large, small] : cases) {
        const QString path = images + QString::fromUtf8(name);
        writeFile(path, bmp(w, h, bits));
        const ThumbnailMaker::Result r = ThumbnailMaker::make(path);
        EXPECT_EQ(QSize(r.large.width, r.large.height), large) << name;
        EXPECT_EQ(QSize(r.small.width, r.small.height), small) << name;
        EXPECT_EQ(r.large.pixels.size(), Thumbnail::stride(large.width()) * large.height());
        EXPECT_EQ(std::tuple(r.imageWidth, r.imageHeight, r.bitsPerPixel),
                  std::tuple(w, h, std::uint32_t(bits)));
    }
    // Other depths are stretched row by row, with the pixels of a stretch of a 24-bit copy.
    for (const char* name : {"grey8.bmp", "tiny8.bmp"}) {
        const QString path = images + QString::fromUtf8(name);
        ImageIoParams params{};
        const PackedDib dib = dibFromImageLib(ImageLib_Open(QFile::encodeName(path), &params));
        const PackedDib rgb = dibToRgb24(dib);
        const auto l = DibLayout::read(rgb.data(), rgb.size());
        ASSERT_TRUE(l);
        const ThumbnailMaker::Result r = ThumbnailMaker::make(path);
        for (const Thumbnail* t : {&r.large, &r.small})
            EXPECT_EQ(t->pixels,
                      ThumbnailMaker::stretch24(rgb.data() + l->pixelOffset, l->width, l->height,
                                                l->stride, t->width, t->height)
                          .pixels)
                << name;
    }
    // Exactly the thumbnail's size: the rows are copied.
    const Bytes file = bmp(96, 72, 24);
    const Thumbnail exact = ThumbnailMaker::make(images + u"exact24.bmp"_s).large;
    EXPECT_TRUE(std::equal(exact.pixels.begin(), exact.pixels.end(), file.begin() + 54));

    writeFile(images + u"junk.bmp"_s, {'B', 'M', 0, 1});
    const ThumbnailMaker::Result bad = ThumbnailMaker::make(images + u"junk.bmp"_s);
    EXPECT_TRUE(bad.large.empty() && bad.small.empty() && bad.large.width == 0);
}

// Whatever sits in a cache file's place, reading never blocks and never leaves the cache.
TEST_F(ThumbnailCacheTest, FifosAndLinkedFoldersAreNeverOpenedOrFollowed) {
    auto item = madeItem(u"a.bmp"_s);
    const QString name = cache.fileNameFor(item->path);
    const QString sub = name.left(name.lastIndexOf(u'/'));
    ASSERT_TRUE(QDir().mkpath(sub));
    ASSERT_EQ(::mkfifo(QFile::encodeName(name).constData(), 0600), 0);
    BrowserItem probe(item->path, item->format);
    auto reading = std::async(std::launch::async, [&] { return cache.read(probe); });
    if (reading.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
        // Let the reader go before failing, or the test would hang.
        ::close(::open(QFile::encodeName(name).constData(), O_WRONLY | O_NONBLOCK));
        FAIL() << "a FIFO in a cache file's place blocked the reader";
    }
    EXPECT_FALSE(reading.get());
    EXPECT_FALSE(QFileInfo::exists(name)) << "what is not a cache file is cleared away";

    // A linked sub-folder: a good cache file behind it is neither read nor written nor deleted.
    cache.write(*item);
    ASSERT_TRUE(QFileInfo(name).isFile());
    const QString elsewhere = dir.path() + u"/elsewhere"_s;
    ASSERT_TRUE(QDir().rename(sub, elsewhere));
    ASSERT_TRUE(QFile::link(elsewhere, sub));
    BrowserItem behindLink(item->path, item->format);
    EXPECT_FALSE(cache.read(behindLink));
    EXPECT_FALSE(behindLink.thumbnailDone());
    const QString leaf = name.mid(name.lastIndexOf(u'/'));
    EXPECT_TRUE(QFileInfo::exists(elsewhere + leaf));
    QFile::remove(elsewhere + leaf);
    cache.write(*item);
    EXPECT_TRUE(QDir(elsewhere)
                    .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden)
                    .isEmpty());
}

TEST(ThumbnailCacheRoot, AFolderThatCannotBeMadeMeansNoCache) {
    QTemporaryDir dir;
    const QString blocker = dir.path() + u"/file"_s;
    writeFile(blocker, {1});
    const QByteArray old = qgetenv("XDG_CACHE_HOME");
    qputenv("XDG_CACHE_HOME", QFile::encodeName(blocker));
    const QString root = ThumbnailCache::defaultRoot();
    qputenv("XDG_CACHE_HOME", old);
    EXPECT_TRUE(root.isEmpty()) << root.toStdString();
}

// A fake sysfs and a mount table with one mount of each kind.
TEST(CacheEligibilityTest, ClassifiesMountsFromMountinfoAndSysfs) {
    QTemporaryDir sys;
    ASSERT_TRUE(sys.isValid());
    const QString root = sys.path();
    QDir().mkpath(root + u"/dev/block"_s);
    QDir().mkpath(root + u"/class/block"_s);
    const auto disk = [&](const char* devPath, const char* number, const char* removableFlag,
                          bool partition) {
        const QString dev = root + u"/devices/"_s + QString::fromUtf8(devPath);
        QDir().mkpath(dev);
        QFile flag((partition ? QFileInfo(dev).path() : dev) + u"/removable"_s);
        ASSERT_TRUE(flag.open(QIODevice::WriteOnly));
        flag.write(removableFlag);
        if (partition)
            writeFile(dev + u"/partition"_s, {'1'});
        ASSERT_TRUE(QFile::link(dev, root + u"/dev/block/"_s + QString::fromUtf8(number)));
        ASSERT_TRUE(QFile::link(dev, root + u"/class/block/"_s + QFileInfo(dev).fileName()));
    };
    disk("pci0000:00/0000:00:1f.2/ata1/host0/target0:0:0/0:0:0:0/block/sda/sda1", "8:1", "0\n",
         true);
    disk("pci0000:00/0000:00:14.0/usb2/2-1/2-1:1.0/host6/target6:0:0/6:0:0:0/block/sdb/sdb1",
         "8:17", "0\n", true);
    disk("pci0000:00/0000:00:1f.2/ata2/host1/target1:0:0/1:0:0:0/block/sdc", "8:32", "1\n", false);
    disk("pci0000:00/0000:00:1d.0/nvme/nvme0/nvme0n1/nvme0n1p2", "259:2", "0\n", true);
    disk("virtual/block/zram0", "252:0", "0\n", false);

    const QString mountinfo = QStringLiteral(
        "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
        "23 22 0:45 /@home /home rw,relatime shared:2 - btrfs /dev/nvme0n1p2 rw,subvol=/@home\n"
        "24 22 8:17 / /media/me/my\\040stick rw,nosuid - vfat /dev/sdb1 rw\n"
        "25 22 8:32 / /mnt/card rw - ext4 /dev/sdc rw\n"
        "26 22 0:50 / /net/share rw - nfs4 server:/export rw\n"
        "27 22 0:51 / /mnt/smb rw - cifs //server/share rw\n"
        "28 23 0:52 / /home/me/remote rw - fuse.sshfs me@host: rw\n"
        "29 22 11:0 / /media/cdrom ro - iso9660 /dev/sr0 ro\n"
        "30 22 0:53 / /tmp rw - tmpfs tmpfs rw\n"
        "31 22 252:0 / /scratch rw - ext4 /dev/zram0 rw\n"
        "32 22 0:54 / /var/lib/docker/x rw - overlay overlay rw,upperdir=/x\n"
        "33 22 0:55 / /proc rw - proc proc rw\n"
        "34 22 8:32 / /mnt/stacked rw - ext4 /dev/sdc rw\n"
        "35 34 8:1 /srv /mnt/stacked rw - ext4 /dev/sda1 rw\n"
        "garbage line\n");
    // "/homework" is not under "/home"; "/mnt/stacked" has the fixed disk mounted on top.
    for (const char* path :
         {"/usr/share/a.jpg", "/home/me/a.jpg", "/homework/a.jpg", "/media/me/my stickers/a.jpg",
          "/mnt/stacked/a.jpg", "/var/lib/docker/x/a.jpg"})
        EXPECT_TRUE(CacheEligibility::onFixedStorage(QString::fromUtf8(path), mountinfo, root))
            << path;
    for (const char* path :
         {"/media/me/my stick/a.jpg", "/mnt/card/a.jpg", "/net/share/a.jpg", "/mnt/smb/a.jpg",
          "/home/me/remote", "/media/cdrom/a.jpg", "/tmp/a.jpg", "/scratch/a.jpg", "/proc/1/a.jpg",
          "/home/me/../../net/share/a.jpg", "relative/a.jpg"})
        EXPECT_FALSE(CacheEligibility::onFixedStorage(QString::fromUtf8(path), mountinfo, root))
            << path;
    EXPECT_FALSE(CacheEligibility::onFixedStorage(u"/a.jpg"_s, QString(), root));
}

} // namespace

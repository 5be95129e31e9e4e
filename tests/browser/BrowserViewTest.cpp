#include "browser/BrowserList.h"
#include "browser/CView1.h"
#include "browser/FileDeleter.h"
#include "browser/StatusTexts.h"
#include "browser/grid/GridLayout.h"
#include "browser/thumbnails/ThumbnailWorker.h"
#include "i18n/i18n.h"
#include "imagelib/imagelib.h"
#include "platform/CommandIds.h"
#include "platform/PostedMessage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

using namespace Qt::StringLiterals;

namespace lanmira {
namespace {

bool waitFor(const std::function<bool()>& done) {
    return QTest::qWaitFor(done, 10'000);
}

void addItems(BrowserList& list, int count) {
    for (int k = 0; k < count; ++k)
        list.items().push_back(
            std::make_unique<BrowserItem>(u"/pics/%1.jpg"_s.arg(k), IMAGELIB_FMT_JPEG));
}

GridLayout::Input grid(int count, bool large, QSize client, bool vbar = false, bool hbar = false) {
    return {count, large, client, 16, vbar, 16, hbar};
}

TEST(GridLayoutTest, ColumnsRowsAndScrollSize) {
    const std::tuple<const char*, GridLayout::Input, int, QSize> cases[] = {
        {"five columns fit", grid(10, true, {530, 600}), 5, {530, 252}},
        {"narrower than a cell", grid(3, true, {50, 600}), 1, {106, 378}},
        {"shown vertical bar counts", grid(4, true, {514, 600}, true), 5, {530, 126}},
        {"horizontal bar's height counts", grid(4, true, {514, 600}, false, true), 5, {530, 126}},
        {"overflow leaves room for the bar", grid(100, true, {530, 600}), 4, {424, 25 * 126}},
        {"overflow keeps one column", grid(5, true, {110, 100}), 1, {106, 630}},
        {"small cells", grid(3, false, {300, 100}), 2, {284, 80}},
        {"empty list", grid(0, true, {530, 600}), 0, {0, 0}},
    };
    for (const auto& [what, in, columns, scrollSize] : cases) {
        const GridLayout::Result r = GridLayout::compute(in);
        EXPECT_EQ(r.columns, columns) << what;
        EXPECT_EQ(r.scrollSize, scrollSize) << what;
    }
}

TEST(GridLayoutTest, ChangeCheckPeriodFirstVisibleAndHitTest) {
    const std::pair<int, int> periods[] = {{0, 2000},    {999, 2000},  {1000, 3000},
                                           {1999, 3000}, {2500, 4000}, {50'000, 4000}};
    for (const auto& [items, ms] : periods)
        EXPECT_EQ(GridLayout::changeCheckPeriod(items), ms) << items;
    EXPECT_EQ(GridLayout::firstVisible(300, 5, true), 10);
    EXPECT_EQ(GridLayout::firstVisible(125, 5, true), 0);
    EXPECT_EQ(GridLayout::firstVisible(80, 3, false), 6);
    EXPECT_EQ(GridLayout::firstVisible(-40, 3, false), 0);
    EXPECT_EQ(GridLayout::cellRect(7, 5, true), QRect(212, 126, 106, 126));

    // A hit counts only inside the cell's inset.
    BrowserList list;
    addItems(list, 6);
    for (const auto& [large, inset] :
         {std::pair(true, GridLayout::kLargeInset), std::pair(false, GridLayout::kSmallInset)}) {
        list.largeMode = large ? 1 : 0;
        ASSERT_EQ(GridLayout::layOut(list, grid(6, large, {300, 1000})).columns, 2);
        const QRect second = list.items()[1]->cell(large);
        EXPECT_EQ(second, GridLayout::cellRect(1, 2, large));
        const QPoint in(inset, inset), out(inset - 1, inset);
        EXPECT_EQ(GridLayout::hitTest(list, second.topLeft() + in), 1);
        EXPECT_EQ(GridLayout::hitTest(list, second.topLeft() + out), -1);
        EXPECT_EQ(GridLayout::hitTest(list, second.bottomRight() - in), 1);
        EXPECT_EQ(GridLayout::hitTest(list, second.bottomRight() - out), -1);
        EXPECT_EQ(GridLayout::hitTest(list, {1000, 10}), -1);
    }
}

class StatusTextsTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!i18n_init(QString::fromUtf8(LANMIRA_BUILD_DIR "/share/lanmira/i18n"), 0))
            GTEST_SKIP() << "the catalogs are not built";
    }
    void TearDown() override { i18n_reset(); }

    BrowserItem& add(const QString& path, std::uint32_t bpp, bool done = true,
                     const QString& target = {}) {
        auto& item = *m_list.items().emplace_back(
            std::make_unique<BrowserItem>(path, IMAGELIB_FMT_JPEG, target));
        item.bitsPerPixel = bpp;
        item.imageWidth = 1600;
        item.imageHeight = 1200;
        if (done)
            item.markThumbnailDone();
        item.setSelected(true);
        return item;
    }
    std::tuple<QString, QString, QString> texts() const {
        const StatusTexts t = StatusTexts::of(m_list);
        return {t.position, t.image, t.name};
    }

    BrowserList m_list;
};

TEST_F(StatusTextsTest, SelectionAndShortcutTexts) {
    add(u"/d/a.jpg"_s, 24).setSelected(false);
    add(u"/d/b.jpg"_s, 24);
    EXPECT_EQ(texts(), std::tuple(u"2/2"_s, u"24 bpp  1600 x 1200"_s, u"b.jpg"_s));
    add(u"/d/c.jpg"_s, 24);
    EXPECT_EQ(texts(), std::tuple(u"2, 3"_s, u"24 bpp  1600 x 1200"_s, QString()));
    add(u"/d/e.jpg"_s, 8);
    EXPECT_TRUE(StatusTexts::of(m_list).image.isEmpty()) << "depths disagree";
    add(u"/d/f.jpg"_s, 8, false);
    EXPECT_EQ(StatusTexts::of(m_list).image, u"Waiting..."_s);
    for (auto& item : m_list.items())
        item->setSelected(false);
    EXPECT_EQ(texts(), std::tuple(u"0, 5"_s, QString(), QString()));

    BrowserItem& near = add(u"/d/link.jpg"_s, 24, true, u"/d/real.jpg"_s);
    EXPECT_EQ(StatusTexts::of(m_list).name, u"link.jpg --> real.jpg"_s);
    near.setSelected(false);
    add(u"/d/far.jpg"_s, 24, true, u"/e/real.jpg"_s);
    EXPECT_EQ(StatusTexts::of(m_list).name, u"far.jpg --> /e/real.jpg"_s);
}

class ResortCounter : public QObject {
public:
    int resorts = 0;

protected:
    void customEvent(QEvent* event) override {
        if (PostedMessage* m = PostedMessage::from(event); m && m->message() == msg::BROWSER_RESORT)
            ++resorts;
    }
};

class WorkerTest : public ::testing::Test {
protected:
    void SetUp() override { addItems(m_list, 10); }

    // A maker that records the order and runs `onItem` (the "user" acting meanwhile).
    void start(std::function<void(int)> onItem = {}) {
        m_worker = std::make_unique<ThumbnailWorker>(
            m_list, nullptr, m_registration.token(), [this](int) { ++m_cellsDone; },
            [this, onItem](BrowserItem& item) {
                const int index = item.path.section(u'/', -1).section(u'.', 0, 0).toInt();
                {
                    std::lock_guard lock(m_orderLock);
                    m_order.push_back(index);
                }
                if (onItem)
                    onItem(index);
            });
        m_worker->start();
        m_list.stopRequest.store(BrowserList::kStopRun);
        m_worker->wake();
    }
    std::vector<int> order() {
        std::lock_guard lock(m_orderLock);
        return m_order;
    }
    bool complete() const { return m_list.thumbnailsComplete.load() == 1; }

    BrowserList m_list;
    ResortCounter m_receiver;
    ReceiverRegistration m_registration{&m_receiver};
    std::mutex m_orderLock; // guards m_order
    std::vector<int> m_order;
    std::atomic<int> m_cellsDone{0};
    std::unique_ptr<ThumbnailWorker> m_worker;
};

TEST_F(WorkerTest, VisibleItemsFirstThenTheRestThenResortThenStop) {
    m_list.firstVisible.store(6);
    start();
    ASSERT_TRUE(waitFor([&] { return complete() && m_receiver.resorts == 1; }));
    EXPECT_EQ(order(), (std::vector<int>{6, 7, 8, 9, 0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(m_cellsDone.load(), 10);
    for (const auto& item : m_list.items())
        EXPECT_TRUE(item->thumbnailDone()) << "done even though nothing was made";
    m_worker->stop();
    EXPECT_EQ(m_list.stopRequest.load(), BrowserList::kStopAbandon);
    m_worker->stop(); // twice is harmless
}

TEST_F(WorkerTest, AbandonStopsWithoutCompletionUntilWokenAgain) {
    start([&](int index) {
        if (index == 2)
            m_list.stopRequest.store(BrowserList::kStopAbandon);
    });
    ASSERT_TRUE(waitFor([&] { return order().size() == 3; }));
    { std::lock_guard passOver(m_list.lock()); }
    QCoreApplication::processEvents();
    EXPECT_FALSE(complete());
    EXPECT_EQ(m_receiver.resorts, 0);
    EXPECT_EQ(order().size(), 3u);

    m_list.stopRequest.store(BrowserList::kStopRun);
    m_worker->wake();
    ASSERT_TRUE(waitFor([&] { return complete() && m_receiver.resorts == 1; }));
    EXPECT_EQ(order(), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST_F(WorkerTest, RestartGoesToTheNewFirstVisible) {
    start([&](int index) {
        if (index == 1) {
            m_list.firstVisible.store(7);
            m_list.stopRequest.store(BrowserList::kStopRestart);
        }
    });
    ASSERT_TRUE(waitFor([&] { return complete(); }));
    EXPECT_EQ(order(), (std::vector<int>{0, 1, 7, 8, 9, 2, 3, 4, 5, 6}));
    EXPECT_EQ(m_list.stopRequest.load(), BrowserList::kStopRun);
}

TEST_F(WorkerTest, DecodesWithoutTheListLockAndDropsWhatAChangedListMakesStale) {
    std::atomic<bool> first{true};
    start([&](int) {
        if (first.exchange(false)) {
            std::lock_guard lock(m_list.lock()); // a deadlock if the worker kept it
            m_list.touch();
        }
    });
    ASSERT_TRUE(waitFor([&] { return complete(); }));
    EXPECT_EQ(order(), (std::vector<int>{0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

// The view over the process-wide list, without a worker: nothing completes by itself.
class ViewTest : public ::testing::Test {
protected:
    // Settings and cache go to a temporary folder, not the user's.
    static void SetUpTestSuite() {
        static QTemporaryDir home;
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.filePath(u"config"_s)));
        qputenv("XDG_CACHE_HOME", QFile::encodeName(home.filePath(u"cache"_s)));
    }
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        resetList();
    }
    void TearDown() override {
        FileDeleter::setQuestionHandler({});
        QDir::setCurrent(m_savedCwd); // opening a folder makes it current
        resetList();
    }
    static void resetList() {
        BrowserList& l = BrowserList::instance();
        l.items().clear();
        l.currentFolder.clear();
        l.sortKey = 0;
        l.sortDirection = 0;
        l.largeMode = 1;
        l.thumbnailsComplete.store(0);
        l.stopRequest.store(BrowserList::kStopRun);
    }
    void touch(const QStringList& names) {
        for (const QString& name : names)
            ASSERT_TRUE(QFile(m_dir.filePath(name)).open(QIODevice::WriteOnly));
    }
    // A view of the folder holding `names`.
    std::unique_ptr<CView1> open(const QStringList& names, QSize size = {400, 300}) {
        touch(names);
        auto view = std::make_unique<CView1>(u"Vornalt"_s, u"Lanmira"_s, m_dir.path());
        view->resize(size);
        view->openFolder(m_dir.path());
        return view;
    }
    QStringList names() const {
        QStringList out;
        for (const auto& item : BrowserList::instance().items())
            out.append(item->path.section(u'/', -1));
        return out;
    }
    BrowserItem& item(int k) { return *BrowserList::instance().items()[k]; }

    QTemporaryDir m_dir;
    const QString m_savedCwd = QDir::currentPath();
};

TEST_F(ViewTest, SortingIsLockedOutUntilThumbnailsAreComplete) {
    const QStringList abc{u"a.png"_s, u"b.jpg"_s, u"c.bmp"_s};
    const auto view = open(abc);
    BrowserList& l = BrowserList::instance();
    ASSERT_EQ(names(), abc);
    EXPECT_EQ(l.thumbnailsComplete.load(), 0);
    for (int id : {cmd::ID_SORT_BY_EXTENSION, cmd::ID_SORT_DESCENDING, cmd::ID_BROWSER_SORT_CYCLE})
        EXPECT_TRUE(view->onCommand(id));
    EXPECT_EQ(std::pair(l.sortKey, l.sortDirection), std::pair(0, 0));
    EXPECT_EQ(names(), abc);

    l.thumbnailsComplete.store(1);
    view->onCommand(cmd::ID_SORT_BY_EXTENSION);
    EXPECT_EQ(names(), (QStringList{u"c.bmp"_s, u"b.jpg"_s, u"a.png"_s}));
    view->onCommand(cmd::ID_SORT_DESCENDING);
    EXPECT_EQ(names(), abc);
    EXPECT_EQ(item(0).largeCell.topLeft(), QPoint(0, 0)) << "laid out again after sorting";
    view->onCommand(cmd::ID_BROWSER_SORT_CYCLE);
    EXPECT_EQ(l.sortKey, 1) << "extension is followed by type";

    CommandState state;
    ASSERT_TRUE(view->onUpdateCommand(cmd::ID_SORT_BY_TYPE, state));
    EXPECT_TRUE(state.enabled && state.checked);
    ASSERT_TRUE(view->onUpdateCommand(cmd::ID_SORT_ASCENDING, state));
    EXPECT_FALSE(state.checked);
    ASSERT_TRUE(view->onUpdateCommand(cmd::ID_DELETE, state));
    EXPECT_FALSE(state.enabled) << "nothing selected";
}

TEST_F(ViewTest, DeletingKeepsTheListInStepWithTheDisk) {
    const auto view = open({u"a.jpg"_s, u"b.jpg"_s, u"c.jpg"_s, u"d.jpg"_s});
    ASSERT_EQ(names().size(), 4);

    FileDeleter::setQuestionHandler([](const QString&, int) { return int(QMessageBox::No); });
    item(0).setSelected(true);
    view->deleteSelection(true);
    EXPECT_EQ(names().size(), 4) << "declined";
    EXPECT_TRUE(QFile::exists(m_dir.filePath(u"a.jpg"_s)));
    EXPECT_EQ(view->deleteFile(m_dir.filePath(u"d.jpg"_s), true), -1);

    // Accepted, but b.jpg turns into a folder meanwhile and stays: only what is gone leaves.
    const QString b = m_dir.filePath(u"b.jpg"_s);
    FileDeleter::setQuestionHandler([b](const QString&, int buttons) {
        if (buttons & QMessageBox::Yes && QFile::exists(b) && QFile::remove(b))
            QDir().mkdir(b);
        return int(buttons & QMessageBox::Yes ? QMessageBox::Yes : QMessageBox::Ok);
    });
    item(1).setSelected(true);
    view->deleteSelection(true);
    EXPECT_FALSE(QFile::exists(m_dir.filePath(u"a.jpg"_s)));
    EXPECT_EQ(names(), (QStringList{u"b.jpg"_s, u"c.jpg"_s, u"d.jpg"_s}));
    EXPECT_EQ(item(1).largeCell.topLeft(), QPoint(106, 0)) << "laid out again";
    EXPECT_EQ(BrowserList::instance().stopRequest.load(), BrowserList::kStopRun);

    EXPECT_EQ(view->deleteFile(m_dir.filePath(u"d.jpg"_s), true), 2);
    EXPECT_EQ(names(), (QStringList{u"b.jpg"_s, u"c.jpg"_s}));
    touch({u"x.jpg"_s});
    EXPECT_EQ(view->deleteFile(m_dir.filePath(u"x.jpg"_s), true), 0) << "not listed";
}

TEST_F(ViewTest, PeriodicCheckDropsVanishedFilesAndAppendsNewOnes) {
    touch({u"a.jpg"_s, u"b.jpg"_s});
    CView1 view(u"Vornalt"_s, u"Lanmira"_s, m_dir.path());
    ASSERT_TRUE(view.startBrowser());
    view.openFolder(m_dir.path());
    BrowserList& l = BrowserList::instance();
    ASSERT_TRUE(waitFor([&] { return l.thumbnailsComplete.load() == 1; }));

    ASSERT_TRUE(QFile::remove(m_dir.filePath(u"a.jpg"_s)));
    touch({u"0.jpg"_s});
    ASSERT_TRUE(waitFor([&] {
        return names() == QStringList{u"b.jpg"_s, u"0.jpg"_s} && l.thumbnailsComplete.load() == 1;
    }));
    // The same key again re-sorts once, because the check appended out of order.
    view.onCommand(cmd::ID_SORT_BY_NAME);
    EXPECT_EQ(names(), (QStringList{u"0.jpg"_s, u"b.jpg"_s}));
}

void sendMouse(QWidget* target, QEvent::Type type, QPoint pos, Qt::KeyboardModifiers modifiers) {
    QMouseEvent event(type, pos, target->mapToGlobal(pos),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                      modifiers);
    QCoreApplication::sendEvent(target, &event);
}

TEST_F(ViewTest, RubberBandReplacesOrWithCtrlAddsToTheSelection) {
    const auto view =
        open({u"0.jpg"_s, u"1.jpg"_s, u"2.jpg"_s, u"3.jpg"_s, u"4.jpg"_s, u"5.jpg"_s}, {400, 400});
    view->show();
    ASSERT_EQ(view->columns(), 3);
    QWidget* vp = view->viewport();
    const auto selection = [&] {
        QString marks;
        for (int k = 0; k < 6; ++k)
            marks += item(k).selected() ? u'x' : u'.';
        return marks;
    };
    for (const Qt::KeyboardModifiers modifiers : {Qt::NoModifier, Qt::ControlModifier}) {
        for (int k = 0; k < 6; ++k)
            item(k).setSelected(k == 5);
        // From the margin of the first cell (empty space) into the second row.
        sendMouse(vp, QEvent::MouseButtonPress, {2, 2}, modifiers);
        sendMouse(vp, QEvent::MouseMove, {120, 140}, modifiers);
        sendMouse(vp, QEvent::MouseButtonRelease, {120, 140}, modifiers);
        EXPECT_EQ(selection(), modifiers ? u"xx.xxx"_s : u"xx.xx."_s);
    }
    // A press on an unselected item replaces the selection.
    sendMouse(vp, QEvent::MouseButtonPress, {250, 50}, Qt::NoModifier);
    sendMouse(vp, QEvent::MouseButtonRelease, {250, 50}, Qt::NoModifier);
    EXPECT_EQ(selection(), u"..x..."_s);
}

TEST_F(ViewTest, ThumbnailIsDrawnUprightAndCentred) {
    const auto view = open({u"a.jpg"_s});
    // 2 × 2, bottom-up B G R rows padded to 8 bytes: a red row below a blue one.
    Thumbnail& t = item(0).large;
    t.width = t.height = 2;
    t.pixels = {0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0};
    item(0).markThumbnailDone();
    const QImage shot = view->viewport()->grab().toImage();
    const int at = 5 + (96 - 2) / 2;
    EXPECT_EQ(shot.pixelColor(at, at), QColor(Qt::blue));
    EXPECT_EQ(shot.pixelColor(at + 1, at + 1), QColor(Qt::red));
    EXPECT_EQ(shot.pixelColor(at - 1, at), view->palette().color(QPalette::Button));
}

TEST_F(ViewTest, AFolderThatVanishesGivesAnEmptyGrid) {
    const auto view = open({u"a.jpg"_s});
    ASSERT_EQ(names().size(), 1);
    item(0).setSelected(true);
    ASSERT_TRUE(m_dir.remove());
    view->refresh();
    EXPECT_TRUE(names().isEmpty());
    EXPECT_EQ(view->columns(), 0);
    EXPECT_EQ(view->statusTexts().name, QString());
    view->grab(); // paints without a crash
}

} // namespace
} // namespace lanmira

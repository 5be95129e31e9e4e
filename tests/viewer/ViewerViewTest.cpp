#include "acquire/DibMaker.h"
#include "browser/BrowserList.h"
#include "i18n/i18n.h"
#include "imagelib/imagelib.h"
#include "platform/CommandIds.h"
#include "platform/CommandRouter.h"
#include "platform/FrameHost.h"
#include "platform/PostedMessage.h"
#include "viewer/CMainFrame2.h"
#include "viewer/CSaveAsDlg.h"
#include "viewer/CView2.h"
#include "viewer/CZoomCustomDlg.h"
#include "viewer/ViewerHost.h"
#include "viewer/ViewerReceiver.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <mutex>

using namespace Qt::StringLiterals;

// Readable failure messages.
void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

namespace lanmira {
namespace {

bool waitFor(const std::function<bool()>& done) {
    return QTest::qWaitFor(done, 5000);
}

struct FakeHost final : ViewerHost {
    bool promptToSave() const override { return false; }
    std::uint32_t slideDelay() const override { return 20; }
    QString chooseFileToOpen(QWidget*) override { return {}; }
    int deleteFile(const QString& path, bool forGood) override {
        deleted.push_back(path);
        return onDelete ? onDelete(path, forGood) : -1;
    }
    int readTrackMode() override { return trackRead; }
    void writeTrackMode(int mode) override { trackWritten = mode; }

    int trackRead = 1;
    int trackWritten = -1;
    std::function<int(const QString&, bool)> onDelete;
    QStringList deleted;
};

struct NoCommands final : CommandTarget {
    bool onCommand(int) override { return false; }
    bool onUpdateCommand(int, CommandState&) override { return false; }
};

struct FakeFrameHost final : FrameHost {
    bool queryClose(QMainWindow*) override { return true; }
    void frameClosed(QMainWindow*) override {}
    CommandTarget* applicationCommands() override { return &none; }
    NoCommands none;
};

// Answers modal dialogs as they come up, one scripted step each.
class ModalScript {
public:
    using Step = std::function<void(QWidget*)>;
    explicit ModalScript(std::deque<Step> steps) : m_steps(std::move(steps)) {
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (modal && modal != m_last && !m_steps.empty()) {
                m_last = modal;
                Step step = std::move(m_steps.front());
                m_steps.pop_front();
                step(modal);
            } else if (!modal) {
                m_last = nullptr;
            }
        });
        m_timer.start(5);
    }
    bool done() const { return m_steps.empty(); }

private:
    std::deque<Step> m_steps;
    QTimer m_timer;
    QWidget* m_last = nullptr;
};

// A 24-bit picture whose colour is given for each pixel, row 0 at the top.
PackedDib picture24(int w, int h, const std::function<QRgb(int, int)>& colourAt) {
    dibmaker::Bytes b = dibmaker::infoHeader(w, h, 24);
    const int stride = (w * 3 + 3) / 4 * 4;
    for (int row = 0; row < h; ++row) {
        const int y = h - 1 - row;
        for (int x = 0; x < w; ++x) {
            const QRgb c = colourAt(x, y);
            b.insert(b.end(),
                     {static_cast<std::uint8_t>(qBlue(c)), static_cast<std::uint8_t>(qGreen(c)),
                      static_cast<std::uint8_t>(qRed(c))});
        }
        b.insert(b.end(), static_cast<std::size_t>(stride - w * 3), 0);
    }
    return dibmaker::toDib(b);
}

bool save(const QString& path, const PackedDib& dib, std::uint32_t format, bool append = false) {
    ImageIoParams params{};
    params.format = format;
    params.optionBytes[0] = append ? IMAGELIB_OPT_APPEND_PAGE : 0;
    return ImageLib_Save(QFile::encodeName(path).constData(), dib.data(), &params) != 0;
}

// A black picture of any size.
QRgb black(int, int) {
    return 0;
}

QRgb pixel(CView2& view, int x, int y) {
    return view.viewport()->grab().toImage().pixel(x, y) | 0xFF000000u;
}

class ViewerViewTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!i18n_init(QString::fromUtf8(LANMIRA_BUILD_DIR "/share/lanmira/i18n"), 0))
            GTEST_SKIP() << "the catalogs are not built";
        ASSERT_TRUE(m_dir.isValid());
        m_view.resize(400, 300);
        m_view.show();
        ASSERT_TRUE(waitFor([&] { return m_view.viewport()->size() == QSize(400, 300); }));
    }
    void TearDown() override {
        QDir::setCurrent(m_savedCwd);
        setList({}, -1);
        ViewerReceiver::clear();
        i18n_reset();
    }

    QString file(const QString& name) const { return m_dir.filePath(name); }

    // A 200 x 100 BMP.
    QString bmp(const QString& name) {
        const QString path = file(name);
        EXPECT_TRUE(save(path, picture24(200, 100, [](int, int) { return qRgb(200, 30, 30); }),
                         IMAGELIB_FMT_BMP));
        return path;
    }
    // Five 60 x 40 pages.
    QString tiff5(const QString& name) {
        const QString path = file(name);
        for (int k = 0; k < 5; ++k)
            EXPECT_TRUE(save(path, picture24(60, 40, black), IMAGELIB_FMT_TIFF, k > 0));
        return path;
    }

    static void setList(const QStringList& paths, int selected) {
        BrowserList& list = BrowserList::instance();
        std::lock_guard lock(list.lock());
        list.items().clear();
        for (const QString& p : paths) {
            list.items().push_back(std::make_unique<BrowserItem>(p, IMAGELIB_FMT_BMP));
            list.items().back()->setSelected(list.items().size() - 1 ==
                                             static_cast<std::size_t>(selected));
        }
    }
    static QString selectedPath() {
        BrowserList& list = BrowserList::instance();
        std::lock_guard lock(list.lock());
        const std::vector<QString> paths = list.selectedPaths();
        return paths.size() == 1 ? paths.front() : QString();
    }

    bool enabled(int id) {
        CommandState state;
        return m_view.onUpdateCommand(id, state) && state.enabled;
    }
    QString shown() const {
        return m_view.paneText(cmd::ID_PANE_PATH) + u' ' + m_view.paneText(cmd::ID_PANE_PAGE);
    }

    QTemporaryDir m_dir;
    const QString m_savedCwd = QDir::currentPath(); // dialogs start in the current folder
    FakeHost m_host;
    CView2 m_view{m_host};
};

TEST_F(ViewerViewTest, StatusPanesFollowTheOpenFileAndZoomShowsWithoutOne) {
    EXPECT_EQ(m_view.paneText(cmd::ID_PANE_ZOOM), u"100%"_s);
    EXPECT_EQ(m_view.paneText(cmd::ID_PANE_SIZE), QString());

    const QString path = bmp(u"a.bmp"_s);
    m_view.openFile(path);
    EXPECT_EQ(m_view.paneText(cmd::ID_PANE_PATH), path);
    EXPECT_EQ(m_view.paneText(cmd::ID_PANE_SIZE), u"200 x 100"_s);
    EXPECT_TRUE(m_view.paneText(cmd::ID_PANE_DEPTH).startsWith(u"24 bpp, "_s));
    EXPECT_EQ(m_view.paneText(cmd::ID_PANE_PAGE), u"Page 1/1"_s);

    // Too large for the window: fitted, the percentage truncated.
    const QString big = file(u"big.bmp"_s);
    ASSERT_TRUE(save(big, picture24(1000, 500, black), IMAGELIB_FMT_BMP));
    m_view.openFile(big);
    EXPECT_EQ(m_view.paneText(cmd::ID_PANE_ZOOM), u"40%"_s);

    ASSERT_TRUE(QFile::link(path, file(u"link.bmp"_s)));
    m_view.openFile(file(u"link.bmp"_s));
    EXPECT_EQ(m_view.paneText(cmd::ID_PANE_PATH), file(u"link.bmp"_s) + u" --> "_s + path);

    // A file that cannot be read: the library's text with a warning icon, an empty view,
    // and the path still named.
    QFile junk(file(u"junk.bmp"_s));
    ASSERT_TRUE(junk.open(QIODevice::WriteOnly));
    junk.write("not a picture");
    junk.close();
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    ModalScript answer({[&](QWidget* w) {
        auto* box = qobject_cast<QMessageBox*>(w);
        icon = box->icon();
        box->done(QMessageBox::Ok);
    }});
    m_view.openFile(junk.fileName());
    EXPECT_EQ(icon, QMessageBox::Warning);
    EXPECT_FALSE(m_view.document().hasPicture());
    EXPECT_EQ(m_view.paneText(cmd::ID_PANE_PATH), junk.fileName());
    EXPECT_EQ(m_view.paneText(cmd::ID_PANE_SIZE), QString());
}

TEST_F(ViewerViewTest, SaveAndPageCommandsFollowThePicture) {
    m_view.openFile(bmp(u"a.bmp"_s));
    EXPECT_FALSE(enabled(cmd::ID_FILE_SAVE));
    EXPECT_FALSE(enabled(cmd::ID_PAGE_NEXT));
    EXPECT_FALSE(enabled(cmd::ID_ZOOM_ACTUAL_SIZE));
    m_view.onCommand(cmd::ID_ROTATE_CCW);
    EXPECT_EQ(m_view.paneText(cmd::ID_PANE_SIZE), u"100 x 200"_s);
    EXPECT_TRUE(enabled(cmd::ID_FILE_SAVE));

    m_view.openFile(tiff5(u"pages.tif"_s));
    struct Row {
        int command;
        const char* page;
        bool first, previous, next, last;
    };
    const Row rows[] = {
        {0, "Page 1/5", false, false, true, true},
        {cmd::ID_PAGE_NEXT, "Page 2/5", true, true, true, true},
        {cmd::ID_PAGE_LAST, "Page 5/5", true, true, false, false},
        {cmd::ID_PAGE_NEXT, "Page 5/5", true, true, false, false},
        {cmd::ID_PAGE_PREVIOUS, "Page 4/5", true, true, true, true},
        {cmd::ID_PAGE_FIRST, "Page 1/5", false, false, true, true},
    };
    for (const Row& r : rows) {
        if (r.command)
            m_view.onCommand(r.command);
        SCOPED_TRACE(r.page);
        EXPECT_EQ(m_view.paneText(cmd::ID_PANE_PAGE), QString::fromUtf8(r.page));
        EXPECT_EQ(enabled(cmd::ID_PAGE_FIRST), r.first);
        EXPECT_EQ(enabled(cmd::ID_PAGE_PREVIOUS), r.previous);
        EXPECT_EQ(enabled(cmd::ID_PAGE_NEXT), r.next);
        EXPECT_EQ(enabled(cmd::ID_PAGE_LAST), r.last);
        EXPECT_EQ(enabled(cmd::ID_NEXT_PAGE_OR_IMAGE), r.next);
    }
    // A turned multi-page file is only ever written through Save As.
    m_view.onCommand(cmd::ID_ROTATE_CW);
    EXPECT_TRUE(m_view.document().modified());
    EXPECT_FALSE(enabled(cmd::ID_FILE_SAVE));
}

TEST_F(ViewerViewTest, SlideShowStepsPagesThenFilesAndIgnoresTicksWhileStopped) {
    const QString pages = tiff5(u"1.tif"_s), second = bmp(u"2.bmp"_s), third = bmp(u"3.bmp"_s);
    setList({pages, second, third}, 0);
    m_view.becomeReceiver();
    m_view.openFile(pages);
    QStringList seen{shown()};
    QObject::connect(&m_view, &CView2::statusChanged, [&] {
        if (seen.last() != shown())
            seen.append(shown());
    });
    int ticks = 0;
    struct TickCounter : QObject {
        int* n;
        bool eventFilter(QObject*, QEvent* e) override {
            *n += e->type() == QEvent::Timer;
            return false;
        }
    } counter;
    counter.n = &ticks;
    m_view.installEventFilter(&counter);

    m_view.onCommand(cmd::ID_SLIDE_SHOW);
    ASSERT_TRUE(waitFor([&] { return m_view.document().filePath() == third; }));
    QTest::qWait(80);
    const QStringList expected{pages + u" Page 1/5"_s, pages + u" Page 2/5"_s,
                               pages + u" Page 3/5"_s, pages + u" Page 4/5"_s,
                               pages + u" Page 5/5"_s, second + u" Page 1/1"_s,
                               third + u" Page 1/1"_s};
    EXPECT_EQ(seen, expected);
    EXPECT_TRUE(m_view.document().slideShowRunning);

    // Stopped: the timer goes on ticking, but nothing moves.
    m_view.onCommand(cmd::ID_SLIDE_SHOW);
    setList({pages, second, third}, 1);
    m_view.openFile(second);
    ticks = 0;
    QTest::qWait(120);
    EXPECT_GE(ticks, 2);
    EXPECT_EQ(m_view.document().filePath(), second);
    m_view.onCommand(cmd::ID_SLIDE_SHOW);
    EXPECT_TRUE(waitFor([&] { return m_view.document().filePath() == third; }));
}

TEST_F(ViewerViewTest, CommandsThatStopARunningSlideShow) {
    m_view.openFile(bmp(u"a.bmp"_s));
    const std::pair<int, bool> rows[] = {
        {cmd::ID_FILE_OPEN, true},          {cmd::ID_DELETE, true},
        {cmd::ID_PAGE_NEXT, true},          {cmd::ID_ROTATE_180, true},
        {cmd::ID_FLIP_VERTICAL, true},      {cmd::ID_TRACK, true},
        {cmd::ID_IMAGE_NEXT, true},         {cmd::ID_NEXT_PAGE_OR_IMAGE, true},
        {cmd::ID_ZOOM_BEST_FIT, false},     {cmd::ID_ZOOM_ACTUAL_SIZE, false},
        {cmd::ID_ZOOM_LOCK, false},         {cmd::ID_ZOOM_AUTO_SHRINK, false},
        {cmd::ID_ZOOM_AUTO_ENLARGE, false}, {cmd::ID_COPY_IMAGE, false},
    };
    for (const auto& [id, stops] : rows) {
        m_view.document().slideShowRunning = true;
        EXPECT_TRUE(m_view.onCommand(id));
        EXPECT_EQ(m_view.document().slideShowRunning, !stops) << id;
    }
}

TEST_F(ViewerViewTest, DeleteShowsTheFileNowAtTheDeletedPosition) {
    const QString a = bmp(u"a.bmp"_s), b = bmp(u"b.bmp"_s), c = bmp(u"c.bmp"_s);
    setList({a, b, c}, 1);
    m_view.becomeReceiver();
    m_view.openFile(b);
    m_host.onDelete = [](const QString&, bool) {
        BrowserList& list = BrowserList::instance();
        std::lock_guard lock(list.lock());
        list.items().erase(list.items().begin() + 1);
        return 1;
    };
    m_view.onCommand(cmd::ID_DELETE);
    EXPECT_EQ(m_host.deleted, QStringList{b});
    EXPECT_EQ(m_view.document().filePath(), c);
    EXPECT_EQ(selectedPath(), c);
}

TEST_F(ViewerViewTest, TrackModeIsReadAsOneOrZeroAndWrittenBack) {
    FakeHost host;
    host.trackRead = 7;
    {
        CView2 view(host);
        EXPECT_EQ(view.trackMode(), 1);
        view.onCommand(cmd::ID_TRACK);
    }
    EXPECT_EQ(host.trackWritten, 0);
}

// Drawing

TEST_F(ViewerViewTest, BackgroundBandsSurroundTheCentredPictureTheRightWayUp) {
    // Quadrants: top-left red, top-right green, bottom-left blue, bottom-right white.
    m_view.adopt(picture24(200, 100, [](int x, int y) {
        return y < 50 ? (x < 100 ? qRgb(255, 0, 0) : qRgb(0, 255, 0))
                      : (x < 100 ? qRgb(0, 0, 255) : qRgb(255, 255, 255));
    }));
    const QRgb face = m_view.palette().color(QPalette::Button).rgb();
    const QRect picture(100, 100, 200, 100);
    for (const QPoint p : {QPoint(0, 0), QPoint(99, 150), QPoint(300, 150), QPoint(200, 99),
                           QPoint(200, 200), QPoint(399, 299)})
        EXPECT_EQ(pixel(m_view, p.x(), p.y()), face) << p.x() << "," << p.y();
    EXPECT_EQ(pixel(m_view, picture.left(), picture.top()), qRgb(255, 0, 0));
    EXPECT_EQ(pixel(m_view, picture.right(), picture.top()), qRgb(0, 255, 0));
    EXPECT_EQ(pixel(m_view, picture.left(), picture.bottom()), qRgb(0, 0, 255));
    EXPECT_EQ(pixel(m_view, picture.right(), picture.bottom()), qRgb(255, 255, 255));
}

TEST_F(ViewerViewTest, EveryDepthDrawsItsOwnColours) {
    // 8 x 2 pictures, the left half red and the right half blue: the depth, the palette's
    // size, its red and blue entries, and one row.
    const std::tuple<int, std::size_t, std::size_t, std::size_t, dibmaker::Bytes> cases[] = {
        {1, 2, 1, 0, {0xF0, 0, 0, 0}},
        {4, 16, 2, 9, {0x22, 0x22, 0x99, 0x99}},
        {8, 256, 7, 200, {7, 7, 7, 7, 200, 200, 200, 200}},
        {16, 0, 0, 0, {0, 0x7C, 0, 0x7C, 0, 0x7C, 0, 0x7C, 0x1F, 0, 0x1F, 0, 0x1F, 0, 0x1F, 0}},
        {32, 0, 0, 0, {0,   0, 255, 0, 0,   0, 255, 0, 0,   0, 255, 0, 0,   0, 255, 0,
                       255, 0, 0,   0, 255, 0, 0,   0, 255, 0, 0,   0, 255, 0, 0,   0}},
    };
    for (const auto& [depth, entries, red, blue, row] : cases) {
        SCOPED_TRACE(depth);
        dibmaker::Bytes b = dibmaker::infoHeader(8, 2, depth);
        const std::size_t table = b.size();
        b.resize(table + entries * 4, 0);
        if (entries) {
            b[table + red * 4 + 2] = 255;
            b[table + blue * 4] = 255;
        }
        for (int k = 0; k < 2; ++k)
            b.insert(b.end(), row.begin(), row.end());
        m_view.adopt(dibmaker::toDib(b));
        ASSERT_TRUE(m_view.document().hasPicture());
        // Centred at 100%: columns 196..203, rows 149..150.
        EXPECT_EQ(pixel(m_view, 196, 149), qRgb(255, 0, 0));
        EXPECT_EQ(pixel(m_view, 199, 150), qRgb(255, 0, 0));
        EXPECT_EQ(pixel(m_view, 200, 149), qRgb(0, 0, 255));
        EXPECT_EQ(pixel(m_view, 203, 150), qRgb(0, 0, 255));
    }
}

TEST_F(ViewerViewTest, AReducedPictureSettlesToTheMeanOfItsPixels) {
    // One-pixel black and white checks at half size: grey, not one of the two.
    m_view.adopt(picture24(800, 600, [](int x, int y) {
        return ((x ^ y) & 1) ? qRgb(255, 255, 255) : qRgb(0, 0, 0);
    }));
    ASSERT_EQ(m_view.paneText(cmd::ID_PANE_ZOOM), u"50%"_s);
    pixel(m_view, 0, 0);
    QTest::qWait(50);
    for (const QPoint p : {QPoint(0, 0), QPoint(123, 77), QPoint(399, 299)})
        EXPECT_NEAR(qGreen(pixel(m_view, p.x(), p.y())), 128, 2);
}

TEST_F(ViewerViewTest, PrintingWithoutAPrinterWritesAPdfBesideTheCurrentFolder) {
    QDir::setCurrent(m_dir.path());
    m_view.openFile(bmp(u"a.bmp"_s));
    QString printer;
    ModalScript accept({[&](QWidget* w) {
        printer = QString::fromLatin1(w->metaObject()->className());
        qobject_cast<QDialog*>(w)->accept();
    }});
    m_view.onCommand(cmd::ID_FILE_PRINT);
    EXPECT_EQ(printer, u"QPrintDialog"_s);
    EXPECT_GT(QFileInfo(m_dir.filePath(u"a.pdf"_s)).size(), 1000);
}

// Frame and dialogs

TEST_F(ViewerViewTest, FrameOpensPostedPathsAndAdoptsPostedPictures) {
    FakeFrameHost frameHost;
    CMainFrame2 frame(frameHost, m_host);
    const QString a = bmp(u"a.bmp"_s), b = bmp(u"b.bmp"_s);
    setList({a, b}, 1);
    postMessage(&frame, msg::VIEWER_OPEN_PATH, 0, 0, makePayload(a));
    ASSERT_TRUE(waitFor([&] { return selectedPath() == a; }));
    EXPECT_EQ(frame.view()->document().filePath(), a);
    EXPECT_EQ(frame.findChild<QLabel*>(u"statusSize"_s)->text(), u"200 x 100"_s);

    postMessage(&frame, msg::VIEWER_ADOPT_DIB, 0, 0, makePayload(picture24(30, 20, black)));
    ASSERT_TRUE(waitFor([&] { return frame.view()->document().width() == 30; }));
    EXPECT_TRUE(frame.view()->document().filePath().isEmpty());
    EXPECT_TRUE(frame.view()->document().modified());
    EXPECT_TRUE(frame.router().query(cmd::ID_FILE_SAVE).enabled);
    EXPECT_EQ(frame.findChild<QLabel*>(u"statusPath"_s)->text(), QString());
    EXPECT_EQ(frame.findChild<QLabel*>(u"statusDepth"_s)->text(), u"24 bpp, 2835 pixels/m"_s);
}

TEST_F(ViewerViewTest, CustomZoomRefusesWhatTheSpinBoxReachesBelowTen) {
    CZoomCustomDlg dialog(5);
    auto* spin = dialog.findChild<QSpinBox*>();
    ASSERT_NE(spin, nullptr);
    EXPECT_EQ(spin->minimum(), 5);
    EXPECT_EQ(spin->property("i18nId").toInt(), 1061);
    dialog.show();
    QString refusal;
    ModalScript answer({[&](QWidget* w) {
        refusal = qobject_cast<QMessageBox*>(w)->text();
        qobject_cast<QDialog*>(w)->reject();
    }});
    dialog.accept();
    EXPECT_EQ(refusal, u"Please enter an integer between 10 and 400."_s);
    EXPECT_NE(dialog.result(), QDialog::Accepted);
    spin->setValue(10);
    dialog.accept();
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(dialog.percent(), 10);
}

TEST_F(ViewerViewTest, SaveAsAddsTheTypesExtensionAndAsksBeforeReplacing) {
    QDir::setCurrent(m_dir.path());
    const PackedDib dib = picture24(8, 8, black);
    bool optionForBmp = true, optionForJpeg = false;
    const auto chooseJpeg = [&](QWidget* w) {
        auto* dialog = qobject_cast<QFileDialog*>(w);
        auto* option = dialog->findChild<QPushButton*>(u"saveAsOption"_s);
        optionForBmp = option->isEnabled();
        for (const QString& f : dialog->nameFilters())
            if (f.startsWith(u"JPEG"_s))
                dialog->selectNameFilter(f);
        optionForJpeg = option->isEnabled();
        static_cast<QDialog*>(dialog)->accept();
    };
    const auto reject = [](QWidget* w) { qobject_cast<QDialog*>(w)->reject(); };
    std::optional<DocumentUi::SaveAsChoice> choice;
    {
        ModalScript script({chooseJpeg});
        choice = CSaveAsDlg::run(nullptr, dib, u"shot"_s);
    }
    ASSERT_TRUE(choice);
    EXPECT_EQ(choice->path, m_dir.filePath(u"shot.jpg"_s));
    EXPECT_EQ(choice->params.format, IMAGELIB_FMT_JPEG);
    EXPECT_EQ(choice->params.formatOption, 90u);
    EXPECT_FALSE(optionForBmp);
    EXPECT_TRUE(optionForJpeg);

    // An existing file: "No" goes back to the dialog, which is then cancelled.
    ASSERT_TRUE(save(choice->path, dib, IMAGELIB_FMT_JPEG));
    QString question;
    {
        ModalScript script({chooseJpeg,
                            [&](QWidget* w) {
                                question = qobject_cast<QMessageBox*>(w)->text();
                                qobject_cast<QDialog*>(w)->done(QMessageBox::No);
                            },
                            reject});
        choice = CSaveAsDlg::run(nullptr, dib, u"shot"_s);
        EXPECT_TRUE(script.done());
    }
    EXPECT_FALSE(choice);
    EXPECT_TRUE(question.startsWith(m_dir.filePath(u"shot.jpg"_s) + u" already exists."_s));

    // A typed extension of another format wins over the type list's first entry.
    {
        ModalScript script({[](QWidget* w) {
            qobject_cast<QFileDialog*>(w)->selectFile(u"typed.png"_s);
            qobject_cast<QDialog*>(w)->accept();
        }});
        choice = CSaveAsDlg::run(nullptr, dib, u"shot"_s);
    }
    ASSERT_TRUE(choice);
    EXPECT_EQ(choice->path, m_dir.filePath(u"typed.png"_s));
    EXPECT_EQ(choice->params.format, IMAGELIB_FMT_PNG);
}

} // namespace
} // namespace lanmira

#include "viewer/ImageDocument.h"

#include "acquire/DibMaker.h"
#include "i18n/i18n.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <deque>

using namespace lanmira;
using namespace Qt::StringLiterals;
using Result = ImageDocument::Result;
using Answer = DocumentUi::Answer;

namespace {

// Answers from a script and logs every question and message in order.
struct ScriptedUi final : DocumentUi {
    bool prompt = true;
    std::deque<Answer> answers;
    std::optional<SaveAsChoice> saveAs;
    bool multipageOk = true;
    QStringList log;

    bool promptEnabled() const override { return prompt; }
    void openFailed(const QString& text) override { log << u"open failed: "_s + text; }
    void pageFailed(const QString& text) override { log << u"page failed: "_s + text; }
    bool confirmMultipage() override {
        log << u"pages?"_s;
        return multipageOk;
    }
    void saveFailed(const QString& message) override { log << u"save failed: "_s + message; }
    Answer askToSave(const QString& name) override {
        log << u"ask "_s + name;
        const Answer a = answers.empty() ? Answer::Cancel : answers.front();
        if (!answers.empty())
            answers.pop_front();
        return a;
    }
    std::optional<SaveAsChoice> chooseSaveAs(const PackedDib&, const QString& proposed) override {
        log << u"save as "_s + proposed;
        return saveAs;
    }
};

// A 24-bit picture; its width tells the pages of a test file apart.
PackedDib picture(int width) {
    const auto rows = static_cast<std::size_t>((width * 3 + 3) / 4 * 4 * 6);
    return dibmaker::toDib(dibmaker::cat(dibmaker::infoHeader(width, 6, 24), {}, rows));
}

bool write(const QString& path, const PackedDib& dib, std::uint32_t format, bool append = false) {
    ImageIoParams p{};
    p.format = format;
    p.optionBytes[0] = append ? IMAGELIB_OPT_APPEND_PAGE : 0;
    return ImageLib_Save(QFile::encodeName(path).constData(), dib.data(), &p) != 0;
}

DocumentUi::SaveAsChoice choice(const QString& path, std::uint32_t format) {
    DocumentUi::SaveAsChoice c{path};
    c.params.format = format;
    return c;
}

std::uint32_t formatOnDisk(const QString& path) {
    ImageIoParams p{};
    ImageLib_Free(ImageLib_Open(QFile::encodeName(path).constData(), &p));
    return p.format;
}

class ImageDocumentTest : public ::testing::Test {
protected:
    void SetUp() override {
        qputenv("LANGUAGE", "en");
        ASSERT_TRUE(i18n_init(QString::fromUtf8(LANMIRA_BUILD_DIR "/share/lanmira/i18n"), 0));
        ASSERT_TRUE(write(bmp, picture(8), IMAGELIB_FMT_BMP));
        for (int page = 0; page < 3; ++page)
            ASSERT_TRUE(write(tiff, picture(10 + page), IMAGELIB_FMT_TIFF, page > 0));
    }
    void TearDown() override { i18n_reset(); }

    QString path(const QString& name) const { return m_dir.filePath(name); }
    // Opens, then changes the picture as a transform would.
    void openModified(const QString& file) {
        ASSERT_EQ(doc.open(file), Result::Shown);
        doc.replacePicture(picture(4));
    }

    QTemporaryDir m_dir;
    const QString bmp = path(u"a.bmp"_s), tiff = path(u"three.tif"_s);
    const QString askBmp = u"ask "_s + bmp;
    ScriptedUi ui;
    ImageDocument doc{ui};
};

TEST_F(ImageDocumentTest, OpenFailedOpenAndLinks) {
    ASSERT_EQ(doc.open(bmp), Result::Shown);
    EXPECT_EQ(doc.sizeText(), u"8 x 6"_s);
    EXPECT_EQ(doc.pageText(), u"Page 1/1"_s);
    EXPECT_TRUE(doc.depthText().startsWith(u"24 bpp, "_s));

    const QString link = path(u"link.bmp"_s), dangling = path(u"dangling.bmp"_s);
    ASSERT_TRUE(QFile::link(u"a.bmp"_s, link) && QFile::link(path(u"gone"_s), dangling));
    EXPECT_EQ(doc.open(link), Result::Shown);
    EXPECT_EQ(doc.pathText(), link + u" --> "_s + bmp);
    EXPECT_TRUE(ui.log.isEmpty());

    // A dangling link opens as itself, and fails like any missing file.
    EXPECT_EQ(doc.open(dangling), Result::Emptied);
    EXPECT_FALSE(doc.hasPicture());
    EXPECT_EQ(doc.pathText(), dangling) << "the path pane keeps the failed file";
    EXPECT_TRUE(doc.sizeText().isEmpty() && doc.pageText().isEmpty());
    ASSERT_EQ(ui.log.size(), 1);
    EXPECT_GT(ui.log[0].size(), 20) << "the library's own text: " << ui.log[0].toStdString();
}

TEST_F(ImageDocumentTest, PageCommandsAndTheirEnablingThroughAThreePageFile) {
    openModified(tiff);
    const struct {
        Result (ImageDocument::*command)();
        Result result;
        int page, width;
    } steps[] = {
        {&ImageDocument::previousPage, Result::Unchanged, 0, 4},
        {&ImageDocument::nextPage, Result::Shown, 1, 11},
        {&ImageDocument::lastPage, Result::Shown, 2, 12},
        {&ImageDocument::nextPage, Result::Unchanged, 2, 12},
        {&ImageDocument::previousPage, Result::Shown, 1, 11},
        {&ImageDocument::firstPage, Result::Shown, 0, 10},
    };
    for (const auto& s : steps) {
        doc.slideShowRunning = true;
        EXPECT_EQ((doc.*s.command)(), s.result);
        EXPECT_FALSE(doc.slideShowRunning);
        EXPECT_EQ(doc.currentPage(), s.page);
        EXPECT_EQ(doc.width(), s.width);
        const int p = s.page;
        EXPECT_EQ(doc.canFirstPage(), p != 0);
        EXPECT_EQ(std::pair(doc.canPreviousPage(), doc.hasPreviousPage()), std::pair(p > 0, p > 0));
        EXPECT_EQ(std::pair(doc.canNextPage(), doc.hasNextPage()), std::pair(p < 2, p < 2));
        EXPECT_EQ(doc.canLastPage(), p != 2);
        EXPECT_EQ(doc.pageText(), u"Page %1/3"_s.arg(p + 1));
    }
    EXPECT_TRUE(doc.modified()) << "a page change keeps the flag";
    EXPECT_FALSE(doc.canSave() || doc.save()) << "a multi-page file is only written by Save As";

    // Replaced by a one-page file behind the viewer's back.
    ASSERT_TRUE(write(tiff, picture(10), IMAGELIB_FMT_TIFF));
    EXPECT_EQ(doc.lastPage(), Result::Emptied);
    EXPECT_EQ(doc.pathText(), tiff);
    EXPECT_TRUE(ui.log.size() == 1 && ui.log[0].startsWith(u"page failed: "_s));
    EXPECT_EQ(doc.firstPage(), Result::Unchanged) << "no picture: no page commands";
}

TEST_F(ImageDocumentTest, SinglePagesAndUntitledPicturesNeverChangePage) {
    const auto noPages = [&] {
        for (auto command : {&ImageDocument::firstPage, &ImageDocument::previousPage,
                             &ImageDocument::nextPage, &ImageDocument::lastPage})
            EXPECT_EQ((doc.*command)(), Result::Unchanged);
        EXPECT_FALSE(doc.canFirstPage() || doc.canPreviousPage() || doc.canNextPage() ||
                     doc.canLastPage() || doc.hasNextPage() || doc.hasPreviousPage());
    };
    ASSERT_EQ(doc.open(bmp), Result::Shown);
    noPages();
    ASSERT_EQ(doc.adopt(picture(7)), Result::Shown); // format 0, no page count
    noPages();
    EXPECT_TRUE(doc.modified() && doc.pathText().isEmpty());
    EXPECT_EQ(doc.depthText(), u"24 bpp, 2835 pixels/m"_s);
    ui.answers = {Answer::Cancel};
    EXPECT_EQ(doc.adopt(picture(9)), Result::Unchanged);
    EXPECT_EQ(doc.width(), 7);
    EXPECT_FALSE(doc.save()) << "Save of an untitled picture is Save As, here cancelled";
    EXPECT_EQ(ui.log, (QStringList{u"ask Untitled"_s, u"save as "_s}));
}

TEST_F(ImageDocumentTest, SavePromptPaths) {
    const QString saved = path(u"saved.png"_s), untitled = u"ask Untitled"_s;
    const struct {
        const char* name;
        bool prompt, untitled;
        std::optional<Answer> answer;
        bool saveAsChosen, goesOn;
        QStringList log;
    } cases[] = {
        {"prompt off", false, false, {}, false, true, {}},
        {"No", true, false, Answer::No, false, true, {askBmp}},
        {"Cancel", true, false, Answer::Cancel, false, false, {askBmp}},
        {"Yes on a file", true, false, Answer::Yes, false, true, {askBmp}},
        {"Yes, untitled", true, true, Answer::Yes, true, true, {untitled, u"save as "_s}},
        {"Save As cancelled", true, true, Answer::Yes, false, false, {untitled, u"save as "_s}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_TRUE(write(bmp, picture(8), IMAGELIB_FMT_BMP));
        QFile::remove(saved);
        ui = ScriptedUi{};
        ui.prompt = c.prompt;
        if (c.answer)
            ui.answers.push_back(*c.answer);
        if (c.saveAsChosen)
            ui.saveAs = choice(saved, IMAGELIB_FMT_PNG);
        if (c.untitled)
            doc.adopt(picture(4));
        else
            openModified(bmp);
        EXPECT_EQ(doc.close(), c.goesOn);
        EXPECT_EQ(ui.log, c.log);
        EXPECT_EQ(doc.hasPicture(), !c.goesOn);
        EXPECT_EQ(QFile::exists(saved), c.saveAsChosen);
        ui.prompt = false;
        ASSERT_EQ(doc.open(bmp), Result::Shown);
        EXPECT_EQ(doc.width(), c.answer == Answer::Yes && !c.untitled ? 4 : 8);
    }
}

TEST_F(ImageDocumentTest, SaveKeepsTheOpenedFormatSaveAsTheDialogsAndTheCloseSaveTheNames) {
    const QString pngNamedBmp = path(u"png.bmp"_s), copy = path(u"copy.png"_s);
    ASSERT_TRUE(write(pngNamedBmp, picture(8), IMAGELIB_FMT_PNG));
    openModified(pngNamedBmp);
    EXPECT_TRUE(doc.canSave() && doc.save());
    EXPECT_FALSE(doc.modified());
    EXPECT_EQ(formatOnDisk(pngNamedBmp), IMAGELIB_FMT_PNG);

    doc.replacePicture(picture(5));
    ui.saveAs = choice(copy, IMAGELIB_FMT_TIFF);
    ui.saveAs->params.pageCount = 5; // not an option field: must not raise the page question
    EXPECT_TRUE(doc.saveAs());
    EXPECT_EQ(formatOnDisk(copy), IMAGELIB_FMT_TIFF);
    EXPECT_EQ(doc.filePath(), pngNamedBmp);
    EXPECT_TRUE(doc.modified()) << "Save As leaves the document as it was";

    ui.answers = {Answer::Yes};
    EXPECT_TRUE(doc.close());
    EXPECT_EQ(formatOnDisk(pngNamedBmp), IMAGELIB_FMT_BMP);
    EXPECT_EQ(ui.log, (QStringList{u"save as png.bmp"_s, u"ask "_s + pngNamedBmp}));
}

TEST_F(ImageDocumentTest, SaveFailuresAndTheMultipageQuestion) {
    openModified(bmp);
    const QString nowhere = path(u"missing/b.bmp"_s);
    ui.saveAs = choice(nowhere, IMAGELIB_FMT_BMP);
    EXPECT_FALSE(doc.saveAs());
    ASSERT_EQ(ui.log.size(), 2);
    const QString head = u"save failed: The file "_s + nowhere + u" could not be saved.\n"_s;
    EXPECT_TRUE(ui.log[1].startsWith(head) && ui.log[1].size() > head.size());
    EXPECT_TRUE(doc.modified());

    ImageIoParams pages{};
    pages.pageCount = 2;
    const QString out = path(u"page.bmp"_s);
    ui.multipageOk = false;
    EXPECT_FALSE(doc.saveDocument(out, doc.image(), pages) || QFile::exists(out));
    ui.multipageOk = true;
    EXPECT_TRUE(doc.saveDocument(out, doc.image(), pages));
    EXPECT_EQ(ui.log.mid(2), (QStringList{u"pages?"_s, u"pages?"_s}));
}

TEST_F(ImageDocumentTest, DeleteAsksAboutChangesOnlyAfterTheFileIsGone) {
    const auto deleter = [&](int position) {
        return [&, position](const QString& file) {
            ui.log << u"deleted "_s + file;
            return position;
        };
    };
    openModified(bmp);
    EXPECT_EQ(doc.deleteShown(deleter(-1)), -1);
    ui.answers = {Answer::Cancel, Answer::No};
    EXPECT_EQ(doc.deleteShown(deleter(3)), -1);
    EXPECT_TRUE(doc.hasPicture());
    EXPECT_EQ(doc.deleteShown(deleter(3)), 3);
    EXPECT_FALSE(doc.hasPicture());
    const QString gone = u"deleted "_s + bmp;
    EXPECT_EQ(ui.log, (QStringList{gone, gone, askBmp, gone, askBmp}));
}

} // namespace

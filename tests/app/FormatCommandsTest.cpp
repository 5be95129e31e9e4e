#include "../../tools/ProfileWriter.h"
#include "app/CPellanoApp.h"
#include "browser/BrowserList.h"
#include "browser/filetypes/FormatWordsApplier.h"
#include "imagelib/imagelib.h"
#include "imagelib/iopt.h"
#include "platform/CommandIds.h"
#include "viewer/CFileSaveSetup.h"
#include "viewer/CFmtDlg.h"
#include "viewer/CFmtListCtrl.h"
#include "viewer/FmtListModel.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <fstream>
#include <functional>

using namespace lanmira;
using namespace Qt::StringLiterals;

namespace {

// The program started on a scratch account, for the two format commands.
class FormatCommands : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        QDir().mkpath(m_dir.path() + u"/prefix/bin"_s);
        QDir().mkpath(m_dir.path() + u"/pics"_s);
        qputenv("XDG_CONFIG_HOME", path(u"config"_s).toUtf8());
        qputenv("XDG_CACHE_HOME", path(u"cache"_s).toUtf8());
        qputenv("XDG_DATA_HOME", path(u"data"_s).toUtf8());

        const std::string xml = R"(<lanmira><oem company="Vornalt" app="Lanmira"/></lanmira>)";
        std::string error;
        auto writer =
            ProfileWriter::fromPemFile(LANMIRA_SOURCE_DIR "/tools/default-profile-key.pem", error);
        ASSERT_TRUE(writer) << error;
        std::vector<std::uint8_t> exml;
        ASSERT_TRUE(writer->write({reinterpret_cast<const std::uint8_t*>(xml.data()), xml.size()},
                                  exml, error));
        std::ofstream out(path(u"prefix/lanmira.exml"_s).toStdString(), std::ios::binary);
        out.write(reinterpret_cast<const char*>(exml.data()),
                  static_cast<std::streamsize>(exml.size()));
        out.close();

        m_app = std::make_unique<CPellanoApp>(CPellanoApp::Options{
            .path = path(u"pics"_s),
            .executablePath = path(u"prefix/bin/lanmira"_s),
            .reportFailure = [](const QString& t) { FAIL() << t.toStdString(); }});
        ASSERT_TRUE(m_app->initInstance());
    }

    void TearDown() override {
        if (m_app)
            m_app->exitInstance(0);
        BrowserList::instance().formatFilter.fill(BrowserList::kDefaultFormatWord);
    }

    QString path(const QString& relative) const { return m_dir.path() + u'/' + relative; }
    QString read(const QString& relative) const {
        QFile f(path(relative));
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }

    // Runs the command; `answer` gets its dialog once it is up.
    template <typename Dialog> void runWith(int command, std::function<void(Dialog&)> answer) {
        bool seen = false;
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, [&] {
            for (QWidget* w : QApplication::topLevelWidgets()) {
                auto* dialog = qobject_cast<Dialog*>(w);
                if (dialog && dialog->isVisible() && !seen) {
                    seen = true;
                    poll.stop();
                    answer(*dialog);
                }
            }
        });
        poll.start(10);
        m_app->onCommand(command);
        EXPECT_TRUE(seen);
    }

    QTemporaryDir m_dir;
    std::unique_ptr<CPellanoApp> m_app;
};

TEST_F(FormatCommands, DefaultFileOptionsSetTheNextCapturesNameAndFormat) {
    runWith<CFileSaveSetup>(cmd::ID_FILE_DEFAULT_OPTIONS, [](CFileSaveSetup& d) {
        d.titleEdit()->setText(u"Slide"_s);
        d.extensionCombo()->setCurrentText(u"png"_s);
        d.reject();
    });
    EXPECT_EQ(m_app->captureSettings().title, u"Lanmira"_s);
    EXPECT_EQ(m_app->captureSettings().extension, u"jpg"_s);

    runWith<CFileSaveSetup>(cmd::ID_FILE_DEFAULT_OPTIONS, [](CFileSaveSetup& d) {
        d.titleEdit()->setText(u"Slide"_s);
        d.extensionCombo()->setCurrentText(u"png"_s);
        d.accept();
    });
    const CaptureFormat capture = m_app->captureSettings();
    EXPECT_EQ(capture.title, u"Slide"_s);
    EXPECT_EQ(capture.extension, u"png"_s);
    EXPECT_EQ(capture.format, static_cast<int>(IMAGELIB_FMT_PNG));
    EXPECT_EQ(capture.options[0], iopt_get_default(IMAGELIB_FMT_PNG).value1);

    m_app->exitInstance(0);
    m_app.reset();
    const QString written = read(u"config/Vornalt/Lanmira/Lanmira.conf"_s);
    EXPECT_TRUE(written.contains(u"title=Slide"_s)) << written.toStdString();
    EXPECT_TRUE(written.contains(u"ext=png"_s)) << written.toStdString();
}

TEST_F(FormatCommands, FileFormatOkAssociatesAndCancelWritesNothing) {
    const auto tickPng = [](CFmtDlg& d) {
        FmtListModel* model = d.list()->fmtModel();
        for (int r = 0; r < model->rowCount(); ++r)
            if (model->formatOfRow(r) == IMAGELIB_FMT_PNG)
                model->toggle(r, 1);
    };
    runWith<CFmtDlg>(cmd::ID_FILE_FORMAT, [&](CFmtDlg& d) {
        tickPng(d);
        d.reject();
    });
    FormatWordsApplier::waitForWrites();
    EXPECT_EQ(BrowserList::instance().formatFilter[IMAGELIB_FMT_PNG], 5u);
    EXPECT_FALSE(QFile::exists(path(u"config/mimeapps.list"_s)));

    runWith<CFmtDlg>(cmd::ID_FILE_FORMAT, [&](CFmtDlg& d) {
        tickPng(d);
        d.accept();
    });
    EXPECT_EQ(BrowserList::instance().formatFilter[IMAGELIB_FMT_PNG], 7u);
    FormatWordsApplier::waitForWrites();
    EXPECT_TRUE(read(u"config/mimeapps.list"_s).contains(u"image/png=Lanmira.1.desktop"_s));
    const QString entry = read(u"data/applications/Lanmira.1.desktop"_s);
    // The association starts the program that is running.
    EXPECT_TRUE(entry.contains(u"Exec="_s + QCoreApplication::applicationFilePath()))
        << entry.toStdString();
    EXPECT_TRUE(read(u"config/Vornalt/Lanmira/Shell.conf"_s).contains(u"if03=7"_s));
}

} // namespace

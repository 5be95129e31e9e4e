#include "../../tools/ProfileWriter.h"
#include "app/CPellanoApp.h"
#include "imagelib/imagelib.h"
#include "imagelib/iopt.h"
#include "platform/CommandIds.h"
#include "viewer/CFileSaveSetup.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <fstream>
#include <functional>

using namespace lanmira;
using namespace Qt::StringLiterals;

namespace {

// The program started on a scratch account.
class FormatCommands : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        QDir().mkpath(m_dir.path() + u"/prefix/bin"_s);
        QDir().mkpath(m_dir.path() + u"/pics"_s);
        qputenv("XDG_CONFIG_HOME", path(u"config"_s).toUtf8());
        qputenv("XDG_CACHE_HOME", path(u"cache"_s).toUtf8());

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
        d.extensionCombo()->setCurrentText(u"bmp"_s);
        EXPECT_FALSE(d.optionButton()->isEnabled()); // BMP has no save options
        d.extensionCombo()->setCurrentText(u"png"_s);
        EXPECT_TRUE(d.optionButton()->isEnabled());
        d.titleEdit()->selectAll();
        QTest::keyClicks(d.titleEdit(), u"Sl/ide"_s); // a slash cannot become part of a name
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

} // namespace

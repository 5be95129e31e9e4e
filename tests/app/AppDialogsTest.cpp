#include "app/BusyInputFilter.h"
#include "app/COpenFileDlg.h"
#include "app/CSlideDlg.h"
#include "viewer/FormatFilters.h"

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using namespace lanmira;

TEST(SlideDialog, TakesWholeSecondsAndRefusesAHalfTypedZero) {
    CSlideDlg dialog(2);
    auto* edit = dialog.findChild<QSpinBox*>(QStringLiteral("delay"));
    ASSERT_TRUE(edit);
    EXPECT_EQ(edit->value(), 2);
    EXPECT_EQ(edit->maximum(), 3600);

    // The spin box lets "0" stand in its field; OK names the range and keeps the dialog.
    edit->findChild<QLineEdit*>()->setText(QStringLiteral("0"));
    QString warning;
    QTimer::singleShot(0, [&] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            warning = box->text();
            box->accept();
        }
    });
    dialog.accept();
    EXPECT_TRUE(warning.contains(QStringLiteral("between 1 and 3600"))) << warning.toStdString();
    EXPECT_NE(dialog.result(), QDialog::Accepted);

    edit->findChild<QLineEdit*>()->setText(QStringLiteral("3600"));
    dialog.accept();
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(dialog.seconds(), 3600u);
}

TEST(OpenDialog, ListsTheFormatsAndPreviewsOnlyPictures) {
    QTemporaryDir dir;
    const QString picture = dir.filePath(QStringLiteral("wide.bmp"));
    QImage image(640, 160, QImage::Format_RGB32);
    image.fill(Qt::red);
    ASSERT_TRUE(image.save(picture, "BMP"));
    const QString text = dir.filePath(QStringLiteral("notes.txt"));
    QFile(text).open(QIODevice::WriteOnly);

    QStringList filters, sizes;
    QString startFilter;
    QSize thumbnail;
    QTimer::singleShot(0, [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        auto* size = dialog ? dialog->findChild<QLabel*>(QStringLiteral("previewSize")) : nullptr;
        if (!size)
            return;
        filters = dialog->nameFilters();
        startFilter = dialog->selectedNameFilter();
        Q_EMIT dialog->currentChanged(picture);
        sizes << size->text();
        thumbnail = dialog->findChild<QLabel*>(QStringLiteral("previewPicture"))->pixmap().size();
        Q_EMIT dialog->currentChanged(text);
        sizes << size->text();
        dialog->selectFile(picture);
        static_cast<QDialog*>(dialog)->accept(); // the file dialog's own check
    });
    EXPECT_EQ(COpenFileDlg::run(nullptr, true), picture);

    QStringList expected;
    for (const FileType& type : openFileTypes())
        expected << type.nameFilter();
    EXPECT_EQ(filters, expected);
    EXPECT_EQ(startFilter, expected.value(expected.size() - 2)); // all supported pictures
    EXPECT_EQ(sizes, (QStringList{QStringLiteral("640 x 160"), QString()}));
    EXPECT_EQ(thumbnail, QSize(256, 64));
}

TEST(BusyInput, DropsTheUsersKeysAndCloseButtonButNotEscapeOrTheProgramsClose) {
    BusyInputFilter filter;
    qApp->installEventFilter(&filter);
    QWidget window;
    int saves = 0;
    auto* save = new QAction(&window);
    save->setShortcut(QKeySequence(QStringLiteral("Ctrl+S")));
    QObject::connect(save, &QAction::triggered, [&] { ++saves; });
    window.addAction(save);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));

    filter.setBusy(true);
    QTest::keyClick(window.windowHandle(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(saves, 0);
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    EXPECT_FALSE(filter.eventFilter(&window, &escape));
    EXPECT_TRUE(filter.eventFilter(&window, &press));
    window.close(); // reaches the window as the close button would
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(filter.closeWindow(&window));
    EXPECT_FALSE(window.isVisible());

    window.show();
    filter.setBusy(false);
    QTest::keyClick(window.windowHandle(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(saves, 1);
    qApp->removeEventFilter(&filter);
}

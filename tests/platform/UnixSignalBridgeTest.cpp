#include "platform/UnixSignalBridge.h"

#include <QElapsedTimer>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTimer>

#include <gtest/gtest.h>

#include <csignal>

using namespace lanmira;

namespace {

// A stop request arriving while a message box waits for an answer ends the box and still
// reaches the application, which then closes the way Exit does.
TEST(UnixSignalBridge, SigtermEndsAModalDialogAndIsDelivered) {
    UnixSignalBridge bridge;
    QSignalSpy requests(&bridge, &UnixSignalBridge::terminationRequested);
    QMessageBox box(QMessageBox::Question, QStringLiteral("Save?"), QStringLiteral("Save?"),
                    QMessageBox::Yes | QMessageBox::No);
    QTimer::singleShot(50, [] { ::raise(SIGTERM); });
    // Should the box not go, the test must not hang.
    QTimer::singleShot(5000, &box, [&box] { box.done(-1); });
    QElapsedTimer clock;
    clock.start();
    const int answer = box.exec();
    EXPECT_NE(answer, -1) << "the box was still open five seconds later";
    EXPECT_LT(clock.elapsed(), 4000);
    EXPECT_TRUE(requests.count() == 1 || requests.wait(2000));
    ASSERT_EQ(requests.count(), 1);
    EXPECT_EQ(requests.at(0).at(0).toInt(), SIGTERM);
}

} // namespace

#include <QApplication>

#include <gtest/gtest.h>

// GUI tests need a QApplication; CTest runs them on the offscreen platform.
int main(int argc, char** argv) {
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

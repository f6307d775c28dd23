#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <memory>

namespace orrery::test {

/// A test of widgets that need no display, with an application of its suite's own.
class OffscreenTest : public testing::Test {
public:
    static void SetUpTestSuite() {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int count = 1;
        static char name[] = "test";
        static char* arguments[] = {name, nullptr};
        application = std::make_unique<QApplication>(count, arguments);
    }
    static void TearDownTestSuite() { application.reset(); } // before Qt's own statics go

private:
    static inline std::unique_ptr<QApplication> application;
};

} // namespace orrery::test

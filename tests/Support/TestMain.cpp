#ifdef QT_WIDGETS_LIB
#include <QApplication>
using Application = QApplication;
#else
#include <QCoreApplication>
using Application = QCoreApplication;
#endif
#include <gmock/gmock.h>

/// What a test program returns when nothing failed but something could not be tried.
constexpr int skippedStatus = 77;

int main(int argc, char **argv)
{
    ::testing::InitGoogleMock(&argc, argv);
    Application app(argc, argv);
    const int status = RUN_ALL_TESTS();
    const bool skipped = ::testing::UnitTest::GetInstance()->skipped_test_count() > 0;
    return status == 0 && skipped ? skippedStatus : status;
}

#include <QApplication>
#include <gmock/gmock.h>

/// What a test program returns when nothing failed but something could not be tried.
constexpr int skippedStatus = 77;

/// Asked by the leak checker. Qt 6.4's radio and tab buttons tell assistive programs what they are
/// while QML still makes them, which then gives them a second record and forgets the first.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:QQmlData::createQQmlData\n";
}

int main(int argc, char **argv)
{
    ::testing::InitGoogleMock(&argc, argv);
    QApplication app(argc, argv);
    const int status = RUN_ALL_TESTS();
    const bool skipped = ::testing::UnitTest::GetInstance()->skipped_test_count() > 0;
    return status == 0 && skipped ? skippedStatus : status;
}

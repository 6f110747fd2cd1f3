#include <QCoreApplication>
#include <gmock/gmock.h>

/// What a test program returns when nothing failed but something could not be tried.
constexpr int skippedStatus = 77;

#ifdef __SANITIZE_THREAD__
/// Qt itself is not built for the thread sanitizer, which therefore does not see how futures and
/// posted events are passed from thread to thread, and takes their destruction for a race.
extern "C" const char *__tsan_default_suppressions()
{
    return "race:QFutureInterface\n"
           "race:QWaitCondition::~QWaitCondition\n"
           "race:QPromise<\n"
           "race:QMetaObject::invokeMethodImpl\n";
}
#endif

int main(int argc, char **argv)
{
    ::testing::InitGoogleMock(&argc, argv);
    QCoreApplication app(argc, argv);
    const int status = RUN_ALL_TESTS();
    const bool skipped = ::testing::UnitTest::GetInstance()->skipped_test_count() > 0;
    return status == 0 && skipped ? skippedStatus : status;
}

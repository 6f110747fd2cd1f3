#include "Platform/Linux/Process/SingleInstance.h"

#include "Base/StringLiterals.h"
#include "Support/LogRecorder.h"
#include "Support/WaitUntil.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

namespace Velloro {
namespace {

class SingleInstanceTest : public ::testing::Test
{
protected:
    void SetUp() override { qputenv("XDG_RUNTIME_DIR", directory.path().toUtf8()); }

    /// Another start of the program, which waits while this thread continues.
    class Start
    {
    public:
        Start()
            : m_thread(QThread::create([this] {
                SingleInstance instance;
                m_result = instance.acquire();
                m_isDone = true;
            }))
        {
            m_thread->start();
        }
        ~Start() { m_thread->wait(); }
        [[nodiscard]] bool isDone() const { return m_isDone; }
        [[nodiscard]] bool result() const { return m_result; }

    private:
        std::atomic<bool> m_result = false;
        std::atomic<bool> m_isDone = false;
        std::unique_ptr<QThread> m_thread;
    };

    QStringList messages() const { return log.messages(u"Velloro"_s); }

    LogRecorder log;
    QTemporaryDir directory;
};

TEST_F(SingleInstanceTest, theRunningOneComesForward)
{
    SingleInstance running;
    ASSERT_TRUE(running.acquire());
    int requests = 0;
    QObject::connect(&running, &SingleInstance::activationRequested, &running, [&] { ++requests; });
    const Start second;
    ASSERT_TRUE(waitUntil([&] { return second.isDone(); }));
    EXPECT_FALSE(second.result());
    EXPECT_EQ(requests, 1);
    EXPECT_EQ(messages(), QStringList({u"Already running"_s}));
}

TEST_F(SingleInstanceTest, commandsReachTheRunningOneInTheirOrder)
{
    const HotkeyCommand commands[]
        = {{HotkeyVerb::press, 1}, {HotkeyVerb::release, 2}, {HotkeyVerb::toggle, 3}};
    EXPECT_FALSE(commands[0].send(SingleInstance::socketPath())) << "nobody runs";
    std::vector<HotkeyCommand> received;
    bool isActivated = false;
    {
        SingleInstance running;
        ASSERT_TRUE(running.acquire());
        QObject::connect(&running, &SingleInstance::hotkeyCommanded, &running,
                         [&](const HotkeyCommand &command) { received.push_back(command); });
        QObject::connect(&running, &SingleInstance::activationRequested, &running,
                         [&] { isActivated = true; });
        // The sender does not wait for the running one, which is busy here.
        for (const HotkeyCommand &command : commands)
            EXPECT_TRUE(command.send(SingleInstance::socketPath()));
        EXPECT_TRUE(waitUntil([&] { return received.size() == std::size(commands); }));
    }
    EXPECT_TRUE(std::ranges::equal(received, commands));
    EXPECT_FALSE(isActivated);
    EXPECT_FALSE(commands[0].send(SingleInstance::socketPath())) << "it has ended";
    EXPECT_FALSE(commands[0].send(QByteArray(200, 'x'))) << "longer than an address";
}

TEST_F(SingleInstanceTest, theEndOfTheRunningOneIsWaitedFor)
{
    for (const bool answersNoMore : {false, true}) {
        std::optional<SingleInstance> ending(std::in_place);
        ASSERT_TRUE(ending->acquire());
        if (answersNoMore)
            ending->stopAnswering();
        const Start second;
        // No events are handled: a program that is ending does not do so any more, either.
        QThread::msleep(300);
        EXPECT_FALSE(second.isDone());
        ending.reset();
        ASSERT_TRUE(waitUntil([&] { return second.isDone(); }));
        EXPECT_TRUE(second.result());
    }
    EXPECT_EQ(messages(), QStringList());
}

TEST_F(SingleInstanceTest, oneThatIsStuckIsNotWaitedForWithoutEnd)
{
    SingleInstance stuck;
    ASSERT_TRUE(stuck.acquire());
    SingleInstance second;
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(second.acquire());
    EXPECT_LT(timer.elapsed(), 20'000);
    EXPECT_EQ(messages(), QStringList({u"Already running"_s}));
}

} // namespace
} // namespace Velloro

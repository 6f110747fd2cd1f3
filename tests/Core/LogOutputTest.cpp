#include "Base/LogOutput.h"

#include <QList>
#include <array>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/socket.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace Velloro {
namespace {

using namespace std::chrono_literals;

struct Channel
{
    const char *name;
    int reader = -1;
    int writer = -1;

    void closeReader() { close(std::exchange(reader, -1)); }
    ~Channel()
    {
        for (const int descriptor : {reader, writer}) {
            if (descriptor >= 0)
                close(descriptor);
        }
    }
};

void openChannel(Channel &channel)
{
    std::array<int, 2> ends{-1, -1};
    const std::string name = channel.name;
    if (name == "pipe") {
        ASSERT_EQ(pipe(ends.data()), 0);
    } else if (name == "socket") {
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    } else {
        termios raw = {};
        cfmakeraw(&raw);
        ASSERT_EQ(openpty(&ends[0], &ends[1], nullptr, &raw, nullptr), 0);
    }
    channel.reader = ends[0];
    channel.writer = ends[1];
}

/// Reads whole lines until `last` has come, or the other end is closed.
QList<QByteArray> readUntil(int descriptor, const QByteArray &last)
{
    QByteArray text;
    std::array<char, 4096> block;
    while (!text.endsWith(last + '\n')) {
        const ssize_t count = read(descriptor, block.data(), block.size());
        if (count <= 0)
            break;
        text.append(block.data(), count);
    }
    QList<QByteArray> lines = text.split('\n');
    lines.removeLast();
    return lines;
}

QByteArray lineOf(int number)
{
    return "line " + QByteArray::number(number) + ' ' + QByteArray(number % 300, '.');
}

class LogOutputTest : public ::testing::TestWithParam<const char *>
{
protected:
    void SetUp() override
    {
        std::signal(SIGPIPE, SIG_IGN);
        channel.name = GetParam();
        openChannel(channel);
    }

    Channel channel{""};
};

TEST_P(LogOutputTest, aReaderWhoComesLateGetsEveryLineInOrder)
{
    constexpr int count = 5000; // More than any of the channels holds.
    LogOutput output(channel.writer);
    for (int i = 0; i < count; ++i)
        output.write(lineOf(i) + '\n');
    EXPECT_FALSE(output.flush(0ms));

    const QList<QByteArray> lines = readUntil(channel.reader, lineOf(count - 1));
    ASSERT_EQ(lines.size(), count);
    for (int i = 0; i < count; ++i)
        EXPECT_EQ(lines[i], lineOf(i));
    EXPECT_TRUE(output.flush(20s));
    // The program's parent may be using it, too.
    EXPECT_FALSE(fcntl(channel.writer, F_GETFL) & O_NONBLOCK);
}

TEST_P(LogOutputTest, beyondTheLimitLinesAreDroppedAndCounted)
{
    constexpr int count = 5000;
    LogOutput output(channel.writer, 20'000);
    for (int i = 0; i < count; ++i)
        output.write(lineOf(i) + '\n');

    std::thread reader;
    QList<QByteArray> lines;
    reader = std::thread([&] { lines = readUntil(channel.reader, "end"); });
    EXPECT_TRUE(output.flush(20s));
    output.write("end\n");
    reader.join();

    ASSERT_GE(lines.size(), 3);
    qsizetype kept = 0;
    qsizetype dropped = 0;
    for (const QByteArray &line : lines.first(lines.size() - 1)) {
        if (line.startsWith("[Log] ") && line.endsWith(" lines dropped")) {
            dropped += line.split(' ')[1].toInt();
        } else {
            ASSERT_EQ(line, lineOf(static_cast<int>(kept + dropped)));
            ++kept;
        }
    }
    EXPECT_GT(kept, 100);
    EXPECT_GT(dropped, 100);
    EXPECT_EQ(kept + dropped, count);
}

TEST_P(LogOutputTest, aReaderWhoNeverReadsDoesNotHoldUpTheEnd)
{
    const auto begin = std::chrono::steady_clock::now();
    {
        LogOutput output(channel.writer);
        for (int i = 0; i < 5000; ++i)
            output.write(lineOf(i) + '\n');
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
    // The writing that was given up still has its end, which therefore must not be closed.
    channel.writer = -1;
    channel.closeReader();
}

TEST_P(LogOutputTest, aReaderWhoGoesAwayIsNotWaitedFor)
{
    LogOutput output(channel.writer);
    for (int i = 0; i < 5000; ++i)
        output.write(lineOf(i) + '\n');
    channel.closeReader();
    EXPECT_TRUE(output.flush(20s));
    output.write("nobody reads this\n");
    EXPECT_TRUE(output.flush(0ms));
}

INSTANTIATE_TEST_SUITE_P(, LogOutputTest, ::testing::Values("pipe", "socket", "terminal"),
                         [](const auto &info) { return std::string(info.param); });

} // namespace
} // namespace Velloro

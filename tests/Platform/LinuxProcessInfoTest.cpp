#include "Platform/Linux/Process/LinuxProcessInfo.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <gmock/gmock.h>
#include <thread>

namespace Velloro {
namespace {

TEST(LinuxProcessInfoTest, TellsTheStackOfTheCallingThread)
{
    const QString program = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
    QStringList outer = LinuxProcessInfo().callStackSymbols();
    ASSERT_GE(outer.size(), 3);
    for (qsizetype number = 0; number < outer.size(); ++number)
        EXPECT_TRUE(outer.at(number).startsWith(QString::number(number) + u' '));
    EXPECT_TRUE(outer.first().contains(program)) << outer.first().toStdString();

    QStringList inner;
    std::thread([&inner] { inner = LinuxProcessInfo().callStackSymbols(); }).join();
    // Frames of a new thread know nothing of the test that started it.
    EXPECT_LT(inner.size(), outer.size());
}

} // namespace
} // namespace Velloro

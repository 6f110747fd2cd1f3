#pragma once

#include "Managers/TextInsertionManager.h"
#include "Platform/Linux/Accessibility/AtSpiAccessibility.h"
#include "Support/InMemoryPlatform.h"
#include "Support/WaitUntil.h"

#include <QDBusConnection>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <gmock/gmock.h>

namespace Velloro {

/// An application on the desktop, ended with this object.
class Application
{
public:
    explicit Application(const QString &program, const QStringList &arguments)
    {
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(program, arguments);
    }
    ~Application()
    {
        if (process.state() == QProcess::NotRunning)
            return;
        process.kill();
        process.waitForFinished();
    }

    pid_t pid() const { return static_cast<pid_t>(process.processId()); }

    QProcess process;
};

/// One of the programs beside the tests that take commands, as JSON lists, and answer each.
class CommandedApplication : public Application
{
public:
    explicit CommandedApplication(const QString &name, const QStringList &arguments = {})
        : Application(QStringLiteral(VELLORO_TESTS_DIR "/Platform/") + name, arguments)
    {
    }

    QJsonValue command(const QJsonArray &words)
    {
        process.write(QJsonDocument(words).toJson(QJsonDocument::Compact) + '\n');
        if (!waitUntil([&] { return process.canReadLine(); }))
            return {};
        const QByteArray line = "[" + process.readLine() + "]";
        return QJsonDocument::fromJson(line).array().at(0);
    }
};

class AtSpiTest : public testing::Test
{
protected:
    using Role = AccessibilityRole;

    void SetUp() override
    {
        if (!QDBusConnection::sessionBus().isConnected() || qEnvironmentVariableIsEmpty("DISPLAY"))
            GTEST_SKIP() << "needs a desktop with an accessibility bus";
    }

    /// Makes the service under test.
    void connect()
    {
        platform.accessibility
            = std::make_unique<AtSpiAccessibility>(std::make_shared<PasteCoordinator>());
        ASSERT_TRUE(platform.accessibility->isProcessTrusted());
    }

    AccessibilityElementRef focused()
    {
        return platform.accessibility->focusedElement().value_or(nullptr);
    }
    AccessibilityElementRef focusedOf(pid_t process)
    {
        return platform.accessibility->focusedElementOf(process).value_or(nullptr);
    }
    /// The role of an element; nothing where there is none, or that is not known.
    std::optional<Role> roleOf(const AccessibilityElementRef &element)
    {
        const auto role = platform.accessibility->role(element);
        return role ? std::optional(*role) : std::nullopt;
    }
    bool waitForRole(Role role)
    {
        return waitUntil([&] { return roleOf(focused()) == role; });
    }
    bool insert(const QString &text)
    {
        memory.output.clear();
        return TextInsertionManager(platform).insertText(text);
    }
    bool pasted() const { return !memory.output.isEmpty(); }

    InMemoryPlatform memory;
    Platform &platform = memory.platform;
};

} // namespace Velloro

#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace Velloro {

/// A sound server of the test's own, without devices, which nobody else sees. It ends with the
/// object.
class PulseServer
{
public:
    PulseServer();
    ~PulseServer();
    PulseServer(const PulseServer &) = delete;
    PulseServer &operator=(const PulseServer &) = delete;

    /// Whether the server's program is installed.
    [[nodiscard]] static bool isInstalled();

    /// Starts it and waits until it takes connections; again after `kill`, at the same address.
    [[nodiscard]] bool start();
    /// Ends it as a crash would.
    void kill();
    /// Makes it stop answering, and continue.
    void suspend();
    void resume();

    [[nodiscard]] QByteArray address() const;
    /// A path in the server's own directory.
    [[nodiscard]] QString path(const QString &fileName) const;

    /// Runs a program as a client of this server and returns what it printed, trimmed.
    QString run(const QString &program, const QStringList &arguments);
    /// Loads a module and returns its index, empty when it could not be loaded.
    QString loadModule(const QString &moduleAndArguments);
    void unloadModule(const QString &index);
    /// One line per object of the kind, such as "source-outputs".
    QStringList list(const QString &kind);

private:
    [[nodiscard]] QProcessEnvironment environment() const;

    QTemporaryDir m_directory;
    QProcess m_process;
};

} // namespace Velloro

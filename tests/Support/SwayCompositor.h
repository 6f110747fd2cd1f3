#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace Velloro {

/// A Wayland compositor of the test's own, with one output and without devices, which nobody else
/// sees; X11 programs find a server beside it. While it is there, the environment of the test names
/// it. It ends with the object.
class SwayCompositor
{
public:
    SwayCompositor();
    ~SwayCompositor();
    SwayCompositor(const SwayCompositor &) = delete;
    SwayCompositor &operator=(const SwayCompositor &) = delete;

    /// What of these is not installed, the compositor's program included; empty when all are.
    [[nodiscard]] static QStringList missing(QStringList programs = {});

    /// Starts it and waits until it takes connections.
    [[nodiscard]] bool start();
    void kill();

    /// A path in the compositor's own directory.
    [[nodiscard]] QString path(const QString &fileName) const;
    /// Has the compositor start a program, by a shell's command line: with its displays in the
    /// environment.
    void execute(const QString &command);
    /// Runs a program as a client of this compositor and returns what it printed.
    [[nodiscard]] static QByteArray run(const QString &program, const QStringList &arguments);

private:
    QTemporaryDir m_directory;
    QProcess m_process;
};

} // namespace Velloro

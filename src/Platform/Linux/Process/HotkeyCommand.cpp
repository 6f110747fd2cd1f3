#include "Platform/Linux/Process/HotkeyCommand.h"

#include "Base/FileDescriptor.h"

#include <QFile>
#include <QList>
#include <algorithm>
#include <cstring>
#include <iterator>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

namespace Velloro {

namespace {

constexpr timeval patience{1, 0};

/// By `HotkeyVerb`.
constexpr const char *verbs[] = {"press", "release", "toggle"};

int64_t startOfThisProcess()
{
    QFile file(QStringLiteral("/proc/self/stat"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray stat = file.readAll();
    // The second field is the program's name in parentheses, in which anything may be; the 20th
    // after it is the start.
    return stat.mid(stat.lastIndexOf(')') + 1).split(' ').value(20).toLongLong();
}

} // namespace

HotkeyCommand HotkeyCommand::make(HotkeyVerb verb)
{
    return {verb, startOfThisProcess()};
}

QByteArray HotkeyCommand::line() const
{
    return verbs[static_cast<size_t>(verb)] + (' ' + QByteArray::number(qint64(startedAt)) + '\n');
}

std::optional<HotkeyCommand> HotkeyCommand::read(const QByteArray &line)
{
    const QList<QByteArray> words = line.trimmed().split(' ');
    const auto *const verb = std::ranges::find_if(
        verbs, [&](const char *candidate) { return words.constFirst() == candidate; });
    if (verb == std::end(verbs))
        return std::nullopt;
    return HotkeyCommand{static_cast<HotkeyVerb>(verb - verbs), words.value(1).toLongLong()};
}

bool HotkeyCommand::send(const QByteArray &socketPath) const
{
    sockaddr_un address{AF_UNIX, {}};
    if (size_t(socketPath.size()) >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, socketPath.constData(), size_t(socketPath.size()));

    const FileDescriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    setsockopt(connection.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    if (connect(connection.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address)
        != 0)
        return false;
    const QByteArray text = line();
    return ::send(connection.get(), text.constData(), size_t(text.size()), MSG_NOSIGNAL)
        == text.size();
}

} // namespace Velloro

#pragma once

#include "Base/Log.h"
#include "Base/StringLiterals.h"

#include <QStringList>
#include <functional>
#include <mutex>
#include <utility>

namespace Velloro {

/// Records the log's lines as long as it lives. One at a time; any thread may write lines.
class LogRecorder
{
public:
    using Listener = std::function<void(const QString &line)>;

    LogRecorder()
    {
        Log::setSink([this](const QString &line) {
            Listener listener;
            {
                const std::lock_guard lock(m_mutex);
                m_lines << line;
                listener = m_listener;
            }
            if (listener)
                listener(line);
        });
    }
    ~LogRecorder() { Log::setSink({}); }
    LogRecorder(const LogRecorder &) = delete;
    LogRecorder &operator=(const LogRecorder &) = delete;

    /// Hears of each line when it is written, by the thread that writes it.
    void setListener(Listener listener)
    {
        const std::lock_guard lock(m_mutex);
        m_listener = std::move(listener);
    }

    [[nodiscard]] QStringList lines() const
    {
        const std::lock_guard lock(m_mutex);
        // A list of its own: no other thread's next line meets the sharing of this one.
        return {m_lines.cbegin(), m_lines.cend()};
    }

    /// The messages of one component, in order, without its tag.
    [[nodiscard]] QStringList messages(const QString &tag) const
    {
        QStringList messages;
        const QString prefix = u"[%1] "_s.arg(tag);
        for (const QString &line : lines()) {
            if (line.startsWith(prefix))
                messages << line.mid(prefix.size());
        }
        return messages;
    }

    /// The lines since the last call or clearing.
    QStringList take()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_lines, {});
    }
    void clear() { take(); }

private:
    mutable std::mutex m_mutex;
    QStringList m_lines;
    Listener m_listener;
};

} // namespace Velloro

#include "Base/Log.h"

#include "Base/LogOutput.h"
#include "Base/StringLiterals.h"

#include <mutex>
#include <unistd.h>

namespace Velloro::Log {

namespace {

std::mutex &mutex()
{
    static std::mutex instance;
    return instance;
}

Sink &sink()
{
    static Sink instance;
    return instance;
}

LogOutput &standardOutput()
{
    static LogOutput instance(STDOUT_FILENO);
    return instance;
}

} // namespace

void line(QStringView tag, const QString &message)
{
    line(u"[%1] "_s.arg(tag) + message);
}

void line(const QString &message)
{
    QString text = message;
    text.replace(u'\n', u' ').replace(u'\r', u' ');

    const std::lock_guard lock(mutex());
    if (sink()) {
        sink()(text);
        return;
    }
    standardOutput().write(text.toUtf8() + '\n');
}

void flush()
{
    standardOutput().flush(LogOutput::endLimit);
}

void setSink(Sink newSink)
{
    const std::lock_guard lock(mutex());
    sink() = std::move(newSink);
}

} // namespace Velloro::Log

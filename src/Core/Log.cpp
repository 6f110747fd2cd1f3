#include "Core/Log.h"

#include <cstdio>
#include <mutex>

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

} // namespace

void line(QStringView tag, const QString &message)
{
    line(QStringLiteral("[%1] ").arg(tag) + message);
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
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

void setSink(Sink newSink)
{
    const std::lock_guard lock(mutex());
    sink() = std::move(newSink);
}

} // namespace Velloro::Log

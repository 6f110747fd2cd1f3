#pragma once

#include "Platform/Pasteboard.h"

#include <QStringList>

namespace Velloro {

/// A pasteboard of one test. It notes in `output` what is done with it: "read", "clear" and
/// "write TEXT".
class InMemoryPasteboard : public Pasteboard
{
public:
    explicit InMemoryPasteboard(QStringList &output)
        : m_output(output)
    {
    }

    /// What it holds now.
    std::optional<QString> content;
    /// Whether applications fetch what they are told to paste.
    bool isFetched = true;

    [[nodiscard]] std::optional<QString> string() override
    {
        m_output << QStringLiteral("read");
        return content;
    }
    void clearContents() override
    {
        m_output << QStringLiteral("clear");
        content.reset();
    }
    void setString(const QString &text) override
    {
        m_output << QStringLiteral("write ") + text;
        content = text;
    }
    [[nodiscard]] bool awaitPaste() override { return isFetched; }

private:
    QStringList &m_output;
};

} // namespace Velloro

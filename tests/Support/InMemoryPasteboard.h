#pragma once

#include "Platform/Pasteboard.h"

#include <QStringList>

namespace Velloro {

/// A pasteboard of one test.
class InMemoryPasteboard : public Pasteboard
{
public:
    /// What it holds now.
    std::optional<QString> content;
    /// Every text that was put there.
    QStringList written;

    [[nodiscard]] std::optional<QString> string() override { return content; }
    void clearContents() override { content.reset(); }
    void setString(const QString &text) override
    {
        content = text;
        written << text;
    }
};

} // namespace Velloro

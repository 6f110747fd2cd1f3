#pragma once

#include <QString>
#include <optional>

namespace Velloro {

/// The general pasteboard, plain text only. Main thread only; reading waits for the application
/// that owns the content for a bounded time.
class Pasteboard
{
public:
    virtual ~Pasteboard() = default;

    /// The plain text on the pasteboard; nothing when it holds none, or its owner does not answer.
    [[nodiscard]] virtual std::optional<QString> string() = 0;
    virtual void clearContents() = 0;
    /// Puts `text` on the pasteboard as its plain-text content.
    virtual void setString(const QString &text) = 0;

    /// Waits, for a bounded time, until the application that was given the last paste stroke has
    /// fetched the text; whether it has. False when that has been asked already.
    [[nodiscard]] virtual bool awaitPaste() = 0;
};

} // namespace Velloro

#pragma once

#include "Base/StringLiterals.h"
#include "Platform/Pasteboard.h"

#include <QStringList>
#include <optional>
#include <utility>

namespace Velloro {

/// A pasteboard of one test. It notes in `output` what is done with it: "write TEXT", "follow",
/// "unfollow", "borrow TEXT" and "give back".
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
    /// Another program takes it whenever this one has.
    bool isContested = false;

    void setString(const QString &text) override
    {
        m_output << u"write "_s + text;
        content = text;
        m_isBorrowed = false;
    }
    void follow() override { m_output << u"follow"_s; }
    void unfollow() override { m_output << u"unfollow"_s; }
    void borrow(const QString &text) override
    {
        m_wasPasteRefused = false;
        m_output << u"borrow "_s + text;
        if (!std::exchange(m_isBorrowed, true))
            m_displaced = content;
        content = text;
    }
    void giveBack() override
    {
        m_output << u"give back"_s;
        if (std::exchange(m_isBorrowed, false) && m_displaced)
            content = m_displaced;
    }
    [[nodiscard]] bool wasPasteRefused() const override { return m_wasPasteRefused; }
    [[nodiscard]] bool awaitPaste() override { return isFetched; }

    /// A paste stroke is about to be sent; whether it may be.
    [[nodiscard]] bool beginPaste()
    {
        m_wasPasteRefused = isContested;
        return !isContested;
    }

private:
    QStringList &m_output;
    std::optional<QString> m_displaced;
    bool m_isBorrowed = false;
    bool m_wasPasteRefused = false;
};

} // namespace Velloro

#pragma once

#include "Platform/KeyboardEvents.h"
#include "Platform/Pasteboard.h"

#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

namespace Velloro {

/// A pasteboard and a keyboard that write what is done with them into one list, in its order:
/// "read", "clear", "write TEXT", "KEY down FLAGS", "KEY up FLAGS" (flags in hexadecimal) and
/// "pause MICROSECONDS".
class OutputJournal
{
public:
    QStringList entries;
    std::optional<QString> clipboard;
    /// Key events can't be created.
    bool refusesKeys = false;

    std::unique_ptr<Pasteboard> makePasteboard()
    {
        return std::make_unique<JournalPasteboard>(*this);
    }
    std::unique_ptr<KeyboardEvents> makeKeyboard()
    {
        return std::make_unique<JournalKeyboard>(*this);
    }

private:
    struct JournalPasteboard : Pasteboard
    {
        explicit JournalPasteboard(OutputJournal &journal)
            : journal(journal)
        {
        }
        std::optional<QString> string() override
        {
            journal.entries << QStringLiteral("read");
            return journal.clipboard;
        }
        void clearContents() override
        {
            journal.entries << QStringLiteral("clear");
            journal.clipboard.reset();
        }
        void setString(const QString &text) override
        {
            journal.entries << u"write "_qs + text;
            journal.clipboard = text;
        }
        OutputJournal &journal;
    };

    struct JournalKeyboard : KeyboardEvents
    {
        explicit JournalKeyboard(OutputJournal &journal)
            : journal(journal)
        {
        }
        bool post(uint32_t keyCode, bool keyDown, uint64_t flags) override
        {
            if (journal.refusesKeys)
                return false;
            journal.entries << QStringLiteral("%1 %2 %3")
                                   .arg(keyCode)
                                   .arg(keyDown ? QStringLiteral("down") : QStringLiteral("up"))
                                   .arg(flags, 0, 16);
            return true;
        }
        void pause(std::chrono::microseconds duration) override
        {
            journal.entries << QStringLiteral("pause %1").arg(duration.count());
        }
        OutputJournal &journal;
    };
};

} // namespace Velloro

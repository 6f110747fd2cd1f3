#pragma once

#include "Base/StringLiterals.h"
#include "Platform/KeyboardEvents.h"

#include <QStringList>
#include <functional>

namespace Velloro {

/// Key strokes that reach nobody but the receiver that the test names. It notes them in `output`:
/// "KEY down FLAGS", "KEY up FLAGS" (flags in hexadecimal) and "pause MICROSECONDS".
class InMemoryKeyboardEvents : public KeyboardEvents
{
public:
    struct Event
    {
        uint32_t keyCode = 0;
        bool keyDown = false;
        uint64_t flags = 0;

        friend bool operator==(const Event &, const Event &) = default;
    };

    explicit InMemoryKeyboardEvents(QStringList &output)
        : m_output(output)
    {
    }

    /// Events can't be created.
    bool refuses = false;
    /// Asked before a paste stroke: whether it may be sent.
    std::function<bool()> willPaste;
    /// The application that has the focus.
    std::function<void(const Event &)> receiver;
    /// Told of each pause.
    std::function<void()> paused;

    bool post(uint32_t keyCode, bool keyDown, uint64_t flags) override
    {
        constexpr uint32_t keyV = 9;
        const bool isPaste = keyCode == keyV && flags == commandFlag;
        if (refuses || (isPaste && willPaste && !willPaste()))
            return false;
        m_output << u"%1 %2 %3"_s.arg(keyCode).arg(keyDown ? u"down"_s : u"up"_s).arg(flags, 0, 16);
        if (receiver)
            receiver({keyCode, keyDown, flags});
        return true;
    }
    void pause(std::chrono::microseconds duration) override
    {
        m_output << u"pause %1"_s.arg(duration.count());
        if (paused)
            paused();
    }

private:
    QStringList &m_output;
};

} // namespace Velloro

#pragma once

#include <QObject>
#include <chrono>

namespace Velloro {

/// The time that waiting for applications may take in one turn of the event loop, so that an
/// operation of many calls has one bound. It is whole again when the event loop has come round.
/// Main thread.
class AtSpiTimeAllowance : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// What is left in this turn.
    [[nodiscard]] std::chrono::milliseconds remaining() const;
    void spend(std::chrono::milliseconds elapsed);
    /// Counts the turns in which there was waiting; what was read in the same turn can be relied
    /// on.
    [[nodiscard]] quint64 turn() const { return m_turn; }

private:
    std::chrono::milliseconds m_spent{0};
    bool m_turnIsOpen = false;
    quint64 m_turn = 0;
};

} // namespace Velloro

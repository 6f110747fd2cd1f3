#pragma once

#include <QObject>

namespace Velloro {

/// The desktop's place for the icons of programs. Main thread only; nothing here waits.
class TrayHost : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Whether the place is there and answers. A desktop that starts may have it later.
    [[nodiscard]] virtual bool isPresent() const = 0;

Q_SIGNALS:
    /// The place is there now and was not before.
    void appeared();
};

} // namespace Velloro

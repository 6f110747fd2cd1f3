#pragma once

#include <QByteArray>
#include <QList>

namespace Velloro {

/// What a program has put into a selection. It can be asked for as long as it is there.
class DataOffer
{
public:
    virtual ~DataOffer() = default;

    /// In the program's order.
    [[nodiscard]] virtual QList<QByteArray> mimeTypes() const = 0;
    /// Has the program write this form into a pipe, which stays the caller's, and close it. What is
    /// there no longer is closed at once.
    virtual void receive(const QByteArray &mimeType, int pipe) = 0;
};

} // namespace Velloro

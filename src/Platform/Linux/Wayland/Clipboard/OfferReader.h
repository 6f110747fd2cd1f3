#pragma once

#include "Base/FileDescriptor.h"
#include "Platform/Linux/Wayland/Clipboard/DataOffer.h"
#include "Platform/Linux/Wayland/Clipboard/MimeContent.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <deque>
#include <memory>
#include <vector>

namespace Velloro {

/// Reads once what another program holds in a selection, without waiting for it.
///
/// An owner is asked for one form after the other, and given up when it gives no sign of life for
/// ten seconds, or is not done after a minute. What it has sent by then counts. Forms beyond 64 MiB
/// in all are left out, text and the forms that the owner names first being read first.
class OfferReader final : public QObject
{
    Q_OBJECT

public:
    enum class Forms { all, text };

    /// Begins.
    OfferReader(std::shared_ptr<DataOffer> offer, Forms forms);

    [[nodiscard]] bool isFinished() const { return m_isFinished; }
    /// Counts the owner's signs of life.
    [[nodiscard]] unsigned progress() const { return m_progress; }
    /// What has been read, in the owner's order; to be asked for once, when the reading is
    /// finished.
    [[nodiscard]] MimeContent takeContent();

    /// The selection is about to be taken from its owner: asks for everything at once that is left
    /// to be asked, since it answers later what it is asked now.
    void askForRest();
    /// The owner has gone: nothing more will come.
    void finish();

Q_SIGNALS:
    void finished();

private:
    /// A form that the owner is writing.
    struct Transfer
    {
        MimeContent::Form form;
        FileDescriptor pipe;
        QSocketNotifier notifier;
        bool isLeftOut = false;
    };

    void ask(const QByteArray &mimeType);
    void askForNext();
    void readFrom(Transfer &transfer);
    /// Appends it, or leaves the form out where there is no room for it.
    void take(Transfer &transfer, const char *data, qsizetype size);
    void complete(Transfer &transfer);

    std::shared_ptr<DataOffer> m_offer;
    std::deque<QByteArray> m_wanted;
    std::vector<std::unique_ptr<Transfer>> m_transfers;
    MimeContent m_content;
    /// Of all that is kept.
    qsizetype m_size = 0;
    QTimer m_patience;
    QDeadlineTimer m_end;
    unsigned m_progress = 0;
    bool m_isFinished = false;
};

} // namespace Velloro

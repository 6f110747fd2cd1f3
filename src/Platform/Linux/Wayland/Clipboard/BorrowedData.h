#pragma once

#include "Platform/Linux/Wayland/Clipboard/DataControl.h"
#include "Platform/Linux/Wayland/Clipboard/OfferReader.h"
#include "Platform/Linux/Wayland/Clipboard/PipeWriter.h"

#include <QObject>
#include <memory>
#include <optional>

namespace Velloro {

/// A selection of the user's that is borrowed for pastes: what it held is read beforehand and is
/// held by us, in the same forms, when it is given back.
///
/// Who takes the selection while it is borrowed has it: nothing is given back then. What could not
/// be read when it was borrowed is waited for before it is given back, since a program that was
/// busy still answers what it was asked before.
class BorrowedData final : public QObject
{
    Q_OBJECT

public:
    /// What becomes of the text that was pasted, where there was nothing before it.
    enum class WhenEmpty { keepsText, isGivenUp };

    /// `connection` and `control` outlive this.
    BorrowedData(WaylandConnection &connection, DataControl &control,
                 DataControl::Selection selection, OfferReader::Forms forms, WhenEmpty whenEmpty);

    /// Whether what is there is ours.
    [[nodiscard]] bool isOwn() const { return m_source != nullptr; }
    [[nodiscard]] bool isBorrowed() const { return m_isBorrowed; }

    /// Reads what another program has in it, and again whenever that changes, until `unfollow`.
    /// Waits for nothing.
    void follow();
    void unfollow();

    /// Puts a content there for good.
    void own(MimeContent content);
    /// Puts a content there until `giveBack`. What is displaced is waited for where it has not been
    /// read yet: 120 ms without a sign of life and half a second at most.
    void borrow(MimeContent content);
    /// Whether this text, in UTF-8, is there now: borrowed by us, or in the hands of a program that
    /// has taken it over, as some clipboard managers do. Waits like `borrow` for what another
    /// program has.
    [[nodiscard]] bool holds(const QByteArray &text);
    /// Puts back what was displaced. What is still being read then delays it: it is to be called
    /// again at `read`.
    void giveBack();

Q_SIGNALS:
    /// The displaced content has been read as far as it can be.
    void read();
    /// A program fetches this form of what is ours; `writer` has yet to begin with it.
    void fetched(const QByteArray &mimeType, Velloro::PipeWriter *writer);

private:
    [[nodiscard]] bool isReading() const { return m_reader && !m_reader->isFinished(); }
    /// Learns of every change before it.
    void askCompositor();
    void startReading();
    void awaitReading();
    void forgetDisplaced();
    void take(MimeContent content);
    void send(const QByteArray &mimeType, FileDescriptor pipe);
    void handleChange(DataControl::Selection selection);
    /// Somebody else has taken it.
    void lose();

    WaylandConnection &m_connection;
    DataControl &m_control;
    const DataControl::Selection m_selection;
    const OfferReader::Forms m_forms;
    const WhenEmpty m_whenEmpty;
    /// What is there; null unless it is ours.
    std::unique_ptr<DataSource> m_source;
    MimeContent m_content;
    std::unique_ptr<OfferReader> m_reader;
    /// What is read or has been read.
    std::shared_ptr<DataOffer> m_readOffer;
    std::optional<MimeContent> m_displaced;
    bool m_isFollowing = false;
    bool m_isBorrowed = false;
};

} // namespace Velloro

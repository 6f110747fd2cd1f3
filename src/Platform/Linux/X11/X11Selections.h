#pragma once

#include "Platform/Linux/X11/X11Connection.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace Velloro {

/// The clipboard of an X server, and its primary selection where a paste needs that one: owning
/// them, serving their content to other programs and reading theirs.
///
/// Lives on one thread. The connection must be this object's own: while another program's content
/// is being read, only what concerns the selections is dealt with. An owner that does not answer
/// costs 120 ms, and reading both selections for a paste costs 240 ms at most.
class X11Selections final : public QObject
{
    Q_OBJECT

public:
    explicit X11Selections(std::shared_ptr<X11Connection> connection);
    /// Hands the content to the clipboard manager if one runs, so that it outlives the program.
    ~X11Selections() override;

    /// The plain text of the clipboard; nothing when it holds none, or its owner does not answer.
    [[nodiscard]] std::optional<QString> string();
    void clearContents();
    void setString(const QString &text);

    /// Makes the primary selection hold what the clipboard holds, for half a second; then the text
    /// that it held before is back.
    void lendToPrimarySelection();

    /// The application of this window is about to paste what the clipboard holds now. It is given
    /// that whenever it asks, although the clipboard may hold something else by then; once, and for
    /// a second at most.
    void beginPaste(xcb_window_t window);
    /// Waits until that application has been given the text, for no longer than that second, and
    /// says whether it has; once. What is sent to it afterwards reaches it afterwards.
    [[nodiscard]] bool awaitPaste();

private:
    /// A selection that we own. Without text it is empty, which differs from an empty text.
    struct Ownership
    {
        std::optional<QByteArray> text; // UTF-8
        xcb_timestamp_t since = XCB_CURRENT_TIME;
    };
    /// A content that is being sent in pieces, as the receiver takes them.
    struct Transfer
    {
        xcb_window_t requestor = XCB_WINDOW_NONE;
        xcb_atom_t property = XCB_ATOM_NONE;
        xcb_atom_t type = XCB_ATOM_NONE;
        QByteArray data;
        qsizetype sent = 0;
        QDeadlineTimer deadline;
    };
    /// A paste that an application was told to do.
    struct Paste
    {
        uint32_t client = 0;
        QByteArray text; // UTF-8
        QDeadlineTimer deadline;
        bool served = false;
    };
    /// A conversion that we asked for and wait for.
    struct Reading
    {
        xcb_atom_t selection = XCB_ATOM_NONE;
        xcb_atom_t target = XCB_ATOM_NONE;
        xcb_atom_t property = XCB_ATOM_NONE;
        xcb_timestamp_t time = XCB_CURRENT_TIME;
        bool answered = false;
        bool refused = false;
        bool pieceArrived = false;
    };

    /// The X server's clock.
    [[nodiscard]] xcb_timestamp_t serverTime();
    void own(xcb_atom_t selection, std::optional<QByteArray> text);
    void giveUp(xcb_atom_t selection);
    [[nodiscard]] std::optional<Ownership> &ownership(xcb_atom_t selection);

    struct Property
    {
        xcb_atom_t type = XCB_ATOM_NONE;
        QByteArray data;
    };

    [[nodiscard]] std::optional<QString> read(xcb_atom_t selection);
    /// One conversion's content; nothing when it was refused or did not come in time.
    [[nodiscard]] std::optional<Property> readAs(xcb_atom_t selection, xcb_atom_t target,
                                                 QDeadlineTimer &deadline);
    /// When an owner that gives no sign of life any more is given up.
    [[nodiscard]] QDeadlineTimer patienceDeadline() const;
    [[nodiscard]] std::optional<Property> readPieces(QDeadlineTimer &deadline);
    /// The text in one of its forms; nothing when it is something else.
    [[nodiscard]] std::optional<QString> decoded(const Property &content) const;
    /// Reads and deletes a property of our window.
    [[nodiscard]] Property takeProperty(xcb_atom_t name);

    void handleEvent(const xcb_generic_event_t *event);
    void handleRequest(const xcb_selection_request_event_t &request);
    void handlePropertyChange(const xcb_property_notify_event_t &change);
    /// Writes the content in the form of `target` to the requestor; false when it can't be had.
    bool convert(const Ownership &owned, xcb_window_t requestor, xcb_atom_t target,
                 xcb_atom_t property);
    bool convertMultiple(const Ownership &owned, xcb_window_t requestor, xcb_atom_t property);
    void send(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, const QByteArray &data);
    void dropStaleTransfers();

    /// What all identifiers of the window's connection to the X server have in common.
    [[nodiscard]] uint32_t clientOf(xcb_window_t window) const;
    /// Whether the application that was told to paste has yet to be given the text.
    [[nodiscard]] bool isPasteUnderWay() const;
    [[nodiscard]] bool isText(xcb_atom_t target) const;

    void saveToClipboardManager();
    void returnPrimarySelection();

    std::shared_ptr<X11Connection> m_connection;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    qsizetype m_pieceSize = 0;
    xcb_timestamp_t m_serverTime = XCB_CURRENT_TIME;
    bool m_serverTimeArrived = false;
    std::optional<Ownership> m_clipboard;
    std::optional<Ownership> m_primary;
    std::optional<Paste> m_paste;
    std::optional<Reading> m_reading;
    /// The end of the reading that goes on, and the time that reading has taken since the clipboard
    /// was last asked for.
    QDeadlineTimer m_lastReading;
    std::chrono::milliseconds m_readingTime{0};
    unsigned m_readings = 0;
    std::vector<Transfer> m_transfers;
    QTimer m_transferTimeout;
    QTimer m_primaryLoan;
    std::optional<QString> m_primaryBefore;
    bool m_managerHasSaved = false;

    struct Atoms
    {
        xcb_atom_t clipboard, targets, timestamp, multiple, utf8String, text, textPlain,
            textPlainUtf8, incr, atomPair, clipboardManager, saveTargets, clock;
    } m_atoms{};
};

} // namespace Velloro

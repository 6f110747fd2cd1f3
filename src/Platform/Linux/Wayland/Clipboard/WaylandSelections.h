#pragma once

#include "Platform/Linux/Clipboard/Selections.h"
#include "Platform/Linux/Wayland/Clipboard/BorrowedData.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>
#include <memory>
#include <optional>

namespace Velloro {

/// The selections of a Wayland compositor. It does not tell who reads them: after a paste stroke,
/// who fetches the text next counts as the application that was to paste it.
///
/// What this program holds in them ends with it, unless a clipboard manager has taken it over by
/// then.
class WaylandSelections final : public QObject, public Selections
{
    Q_OBJECT

public:
    /// Null where the compositor keeps its selections for the program in front. The connection is
    /// this object's own, and was opened on this thread.
    [[nodiscard]] static std::unique_ptr<WaylandSelections>
    make(std::shared_ptr<WaylandConnection> connection);
    /// Gives back what is borrowed, so that a clipboard manager can have it.
    ~WaylandSelections() override;

    void setString(const QString &text) override;
    void follow() override;
    void unfollow() override;
    void borrow(const QString &text) override;
    void lendToPrimarySelection() override;
    void giveBack() override;
    [[nodiscard]] bool beginPaste(const PasteTarget &target) override;
    /// The application has the text in a pipe then; what is sent to it afterwards may overtake it.
    bool awaitPaste() override;

Q_SIGNALS:
    void pasteServed();

private:
    /// A paste that an application was told to do.
    struct Paste
    {
        /// Until then the text stays.
        QDeadlineTimer end;
        bool isOwn = false;
        bool served = false;
    };

    WaylandSelections(std::shared_ptr<WaylandConnection> connection,
                      std::unique_ptr<DataControl> control);

    [[nodiscard]] bool isPasteUnderWay() const;
    /// Whether every selection that the paste needs holds its text.
    [[nodiscard]] bool holdsText();
    void takeTextAgain();
    void awaitNotice();
    void continueGivingBack();
    void handleFetch(const QByteArray &mimeType, PipeWriter &writer);

    std::shared_ptr<WaylandConnection> m_connection;
    std::unique_ptr<DataControl> m_control;
    BorrowedData m_clipboard;
    BorrowedData m_primary;
    std::optional<Paste> m_paste;
    /// What was borrowed for; nothing when it has been given back.
    std::optional<QString> m_text;
    bool m_isPrimaryLent = false;
    /// The selections are to be given back as soon as that can be.
    bool m_isGivingBack = false;
    QTimer m_pasteEnd;
    /// Counts what others have asked for.
    unsigned m_requests = 0;
};

} // namespace Velloro

#pragma once

#include "Platform/Linux/Accessibility/AtSpiReference.h"

#include <QDBusMessage>
#include <QList>
#include <QObject>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QDBusPendingCallWatcher;

namespace Velloro {

class AtSpiApplications;
class AtSpiBus;
class AtSpiStates;

/// One search for the object with the keyboard focus, for when no event told of it. It asks the
/// window for its focused descendants or, where the application can't answer that, walks the tree
/// under the window to a limit. Of several objects that claim the focus the one into which text
/// goes is taken, else the innermost in sight. Main thread.
///
/// The search goes on by itself as replies arrive; `finish` waits for them instead.
class AtSpiFocusSearch : public QObject
{
    Q_OBJECT

public:
    /// Each reply is waited for as long as `timeout`.
    AtSpiFocusSearch(AtSpiBus &bus, AtSpiApplications &applications,
                     std::chrono::milliseconds timeout, QObject *parent = nullptr);
    ~AtSpiFocusSearch() override;

    /// Looks under this window.
    void searchWindow(const AtSpiReference &window);
    /// Looks for this application's active window, and under it.
    void searchApplication(const QString &service);
    /// Looks for the active window among all applications, and under it.
    void searchDesktop();

    /// Waits for the end of the search within the time allowance, and no longer than `longest`.
    void finish(std::chrono::milliseconds longest = std::chrono::milliseconds::max());

    /// The active window, as far as the search found it.
    [[nodiscard]] const std::optional<AtSpiReference> &window() const { return m_window; }
    /// The focused object; nothing when none was found.
    [[nodiscard]] const std::optional<AtSpiReference> &found() const { return m_found; }
    /// Whether text goes into it.
    [[nodiscard]] bool hasFoundTextField() const { return m_claim == Claim::textField; }
    /// Whether the search is over; until then a better object may be found.
    [[nodiscard]] bool hasEnded() const { return m_ended; }

Q_SIGNALS:
    /// The search has ended. Never sent from within the calls above.
    void finished();

private:
    using Continuation = std::function<void(const QDBusMessage &reply)>;
    /// How good a claim to the focus is, the best one last.
    enum class Claim { none, outOfSight, inSight, textField };
    struct Question
    {
        std::unique_ptr<QDBusPendingCallWatcher> watcher;
        QString service;
        Continuation continuation;
    };

    void ask(const AtSpiReference &object, const QString &interface, const QString &method,
             const QVariantList &arguments, Continuation continuation);
    void take(QDBusPendingCallWatcher *watcher);
    void lookAtApplication(const AtSpiReference &application);
    void lookAtWindow(const AtSpiReference &window);
    void walk();
    void visit(const AtSpiReference &object);
    void consider(const AtSpiReference &object, const AtSpiStates &states);
    void prefer(const AtSpiReference &object, Claim claim);
    void end();

    AtSpiBus &m_bus;
    AtSpiApplications &m_applications;
    const std::chrono::milliseconds m_timeout;
    std::vector<Question> m_questions;
    QList<AtSpiReference> m_unvisited;
    int m_visited = 0;
    std::optional<AtSpiReference> m_window;
    std::optional<AtSpiReference> m_found;
    Claim m_claim = Claim::none;
    bool m_ended = false;
};

} // namespace Velloro

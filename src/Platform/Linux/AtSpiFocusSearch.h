#pragma once

#include "Platform/Linux/AtSpiReference.h"

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

class AtSpiBus;

/// One search for the object with the keyboard focus, for when no event told of it. It asks the
/// window for its focused descendants or, where the application can't answer that, walks the tree
/// under the window to a limit. Main thread.
///
/// The search goes on by itself as replies arrive; `finish` waits for them instead.
class AtSpiFocusSearch : public QObject
{
    Q_OBJECT

public:
    /// Each reply is waited for as long as `timeout`.
    AtSpiFocusSearch(AtSpiBus &bus, std::chrono::milliseconds timeout, QObject *parent = nullptr);
    ~AtSpiFocusSearch() override;

    /// Looks under this window.
    void searchWindow(const AtSpiReference &window);
    /// Looks for the active window among all applications, and under it.
    void searchDesktop();

    /// Waits for the end of the search within the bus's allowance.
    void finish();

    /// The active window, as far as the search found it.
    [[nodiscard]] const std::optional<AtSpiReference> &window() const { return m_window; }
    /// The focused object; nothing when none was found.
    [[nodiscard]] const std::optional<AtSpiReference> &found() const { return m_found; }

Q_SIGNALS:
    /// The search has ended. Never sent from within the calls above.
    void finished();

private:
    using Continuation = std::function<void(const QDBusMessage &reply)>;
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
    void end();

    AtSpiBus &m_bus;
    const std::chrono::milliseconds m_timeout;
    std::vector<Question> m_questions;
    QList<AtSpiReference> m_unvisited;
    int m_visited = 0;
    std::optional<AtSpiReference> m_window;
    std::optional<AtSpiReference> m_found;
    bool m_ended = false;
};

} // namespace Velloro

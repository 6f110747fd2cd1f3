#pragma once

#include "Platform/Accessibility.h"
#include "Platform/Linux/Accessibility/AtSpiReference.h"

#include <QObject>
#include <QTimer>
#include <memory>
#include <optional>
#include <sys/types.h>

namespace Velloro {

class AtSpiApplications;
class AtSpiBus;
class AtSpiFocusSearch;

/// Knows which object on the accessibility bus has the keyboard focus. The focus is followed by
/// the events that applications send; where a window becomes active, or is active when the bus is
/// reached, and no event names the focused object, it is searched for in the background. Where a
/// toolkit has many objects claim the focus, and its events name any of them, the one counts into
/// which text goes. Main thread.
class AtSpiFocusTracker : public QObject
{
    Q_OBJECT

public:
    /// `bus` and `applications` outlive the tracker.
    AtSpiFocusTracker(AtSpiBus &bus, AtSpiApplications &applications, QObject *parent = nullptr);
    ~AtSpiFocusTracker() override;

    /// The object that has the focus now, as its application confirms; `noValue` when none is
    /// known, or it is one of this process, which can't answer while it asks. Waits within the
    /// time allowance.
    [[nodiscard]] Accessibility::Result<AtSpiReference> focused();
    /// The same, of the application with this process.
    [[nodiscard]] Accessibility::Result<AtSpiReference> focusedOf(pid_t process);

private:
    void onFocusGained(const AtSpiReference &object);
    void onFocusLost(const AtSpiReference &object);
    void onWindowActivated(const AtSpiReference &window);
    void onWindowDeactivated(const AtSpiReference &window);
    void onDisconnected();
    void onServiceGone(const QString &service);
    void searchActiveWindow();
    void searchDesktop();
    void takePendingEvents();
    Accessibility::Result<AtSpiReference> known(pid_t process);
    Accessibility::Result<AtSpiReference> confirmed(pid_t process);
    Accessibility::Result<AtSpiReference> preferredTo(const AtSpiReference &announced);
    /// Whether text goes into the object, as it says now; nothing when it has not the focus.
    std::optional<bool> takesText(const AtSpiReference &object);
    AtSpiFocusSearch &newSearch();

    AtSpiBus &m_bus;
    AtSpiApplications &m_applications;
    /// What was announced or found last.
    std::optional<AtSpiReference> m_focused;
    /// What was found to have the focus although something else was announced.
    std::optional<AtSpiReference> m_textField;
    std::optional<AtSpiReference> m_activeWindow;
    QTimer m_searchDelay;
    std::unique_ptr<AtSpiFocusSearch> m_search;
};

} // namespace Velloro

#include "Platform/Linux/Accessibility/AtSpiFocusTracker.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Accessibility/AtSpiApplications.h"
#include "Platform/Linux/Accessibility/AtSpiBus.h"
#include "Platform/Linux/Accessibility/AtSpiFocusSearch.h"
#include "Platform/Linux/Accessibility/AtSpiRole.h"
#include "Platform/Linux/Accessibility/AtSpiStates.h"

#include <QCoreApplication>
#include <QEvent>
#include <algorithm>
#include <chrono>
#include <unistd.h>

namespace Velloro {

namespace {

using namespace std::chrono_literals;

/// How long a newly active window has to tell of its focus by an event.
constexpr auto searchDelay = 150ms;
constexpr auto backgroundTimeout = 2s;
/// What looking behind an announcement may take of the time allowance.
constexpr auto longestLook = 150ms;

const QString accessibleInterface = u"org.a11y.atspi.Accessible"_s;

} // namespace

AtSpiFocusTracker::AtSpiFocusTracker(AtSpiBus &bus, AtSpiApplications &applications,
                                     QObject *parent)
    : QObject(parent)
    , m_bus(bus)
    , m_applications(applications)
{
    m_searchDelay.setSingleShot(true);
    connect(&m_searchDelay, &QTimer::timeout, this, &AtSpiFocusTracker::searchActiveWindow);
    connect(&bus, &AtSpiBus::connected, this, &AtSpiFocusTracker::searchDesktop);
    connect(&bus, &AtSpiBus::disconnected, this, &AtSpiFocusTracker::onDisconnected);
    connect(&bus, &AtSpiBus::focusGained, this, &AtSpiFocusTracker::onFocusGained);
    connect(&bus, &AtSpiBus::focusLost, this, &AtSpiFocusTracker::onFocusLost);
    connect(&bus, &AtSpiBus::windowActivated, this, &AtSpiFocusTracker::onWindowActivated);
    connect(&bus, &AtSpiBus::windowDeactivated, this, &AtSpiFocusTracker::onWindowDeactivated);
    connect(&bus, &AtSpiBus::serviceGone, this, &AtSpiFocusTracker::onServiceGone);
}

AtSpiFocusTracker::~AtSpiFocusTracker() = default;

void AtSpiFocusTracker::onFocusGained(const AtSpiReference &object)
{
    m_focused = object;
    m_searchDelay.stop();
    m_search.reset();
}

void AtSpiFocusTracker::onFocusLost(const AtSpiReference &object)
{
    if (m_focused == object)
        m_focused.reset();
}

void AtSpiFocusTracker::onWindowActivated(const AtSpiReference &window)
{
    m_activeWindow = window;
    m_textField.reset();
    // The event that names the focused object may come before this one.
    if (m_focused && m_focused->service == window.service)
        return;
    m_focused.reset();
    m_search.reset();
    m_searchDelay.start(searchDelay);
}

void AtSpiFocusTracker::onWindowDeactivated(const AtSpiReference &window)
{
    // It may be the one that the search has found active.
    m_search.reset();
    m_textField.reset();
    // Toolkits differ in whether an object keeps its focus in a window that is not active, and an
    // object may be of another process than the window that shows it.
    if (m_activeWindow == window) {
        m_activeWindow.reset();
        m_focused.reset();
    } else if (!m_activeWindow && m_focused && m_focused->service == window.service) {
        m_focused.reset();
    }
}

void AtSpiFocusTracker::onDisconnected()
{
    m_focused.reset();
    m_textField.reset();
    m_activeWindow.reset();
    m_searchDelay.stop();
    m_search.reset();
}

/// An application that ended could not say that its window did.
void AtSpiFocusTracker::onServiceGone(const QString &service)
{
    if (m_focused && m_focused->service == service)
        m_focused.reset();
    if (m_activeWindow && m_activeWindow->service == service)
        m_activeWindow.reset();
}

AtSpiFocusSearch &AtSpiFocusTracker::newSearch()
{
    m_search = std::make_unique<AtSpiFocusSearch>(m_bus, m_applications, backgroundTimeout);
    return *m_search;
}

void AtSpiFocusTracker::searchActiveWindow()
{
    if (!m_activeWindow)
        return;
    AtSpiFocusSearch &search = newSearch();
    connect(&search, &AtSpiFocusSearch::finished, this, [this] {
        if (!m_focused)
            m_focused = m_search->found();
        m_search.release()->deleteLater();
    });
    search.searchWindow(*m_activeWindow);
}

/// Finds out which window is active, too: an application that is just starting may not yet tell.
void AtSpiFocusTracker::searchDesktop()
{
    AtSpiFocusSearch &search = newSearch();
    connect(&search, &AtSpiFocusSearch::finished, this, [this] {
        if (!m_focused) {
            m_activeWindow = m_search->window();
            m_focused = m_search->found();
        }
        m_search.release()->deleteLater();
    });
    search.searchDesktop();
}

/// Lets events count that have arrived but that the event loop has not come to yet.
void AtSpiFocusTracker::takePendingEvents()
{
    QCoreApplication::sendPostedEvents(&m_bus, QEvent::MetaCall);
}

Accessibility::Result<AtSpiReference> AtSpiFocusTracker::focused()
{
    takePendingEvents();
    const std::optional<AtSpiReference> candidate = m_focused ? m_focused : m_activeWindow;
    return known(candidate ? m_applications.processOf(candidate->service) : -1);
}

Accessibility::Result<AtSpiReference> AtSpiFocusTracker::focusedOf(pid_t process)
{
    takePendingEvents();
    return known(process);
}

Accessibility::Result<AtSpiReference> AtSpiFocusTracker::known(pid_t process)
{
    const Accessibility::Result<AtSpiReference> result = confirmed(process);
    // What was missed is found for the next time.
    if (!result && result.error() == AccessibilityError::noValue && !m_focused && !m_search)
        searchDesktop();
    return result;
}

Accessibility::Result<AtSpiReference> AtSpiFocusTracker::confirmed(pid_t process)
{
    if (process == getpid())
        return tl::unexpected(AccessibilityError::noValue);
    if (m_focused && m_applications.processOf(m_focused->service) == process) {
        const AtSpiReference object = *m_focused;
        if (const std::optional<bool> takesText = this->takesText(object))
            return *takesText ? object : preferredTo(object);
        if (m_applications.isUnresponsive(object.service))
            return tl::unexpected(AccessibilityError::cannotComplete);
        m_focused.reset();
    }
    if (!m_activeWindow || m_applications.processOf(m_activeWindow->service) != process)
        return tl::unexpected(AccessibilityError::noValue);
    if (m_applications.isUnresponsive(m_activeWindow->service))
        return tl::unexpected(AccessibilityError::cannotComplete);

    AtSpiFocusSearch search(m_bus, m_applications, m_applications.allowance().remaining());
    search.searchWindow(*m_activeWindow);
    search.finish();
    if (search.hasEnded() || search.hasFoundTextField())
        m_focused = search.found();
    if (m_focused)
        return *m_focused;
    return tl::unexpected(m_applications.isUnresponsive(m_activeWindow->service)
                              ? AccessibilityError::cannotComplete
                              : AccessibilityError::noValue);
}

/// Qt says "focused" of every widget that hands its focus on to another, and of the current cell of
/// every list, and announces those, too: a text field may have the focus all the same.
Accessibility::Result<AtSpiReference>
AtSpiFocusTracker::preferredTo(const AtSpiReference &announced)
{
    const QString &service = announced.service;
    if (m_applications.toolkitOf(service) != u"Qt")
        return announced;
    if (m_textField && m_textField->service == service && takesText(*m_textField).value_or(false))
        return *m_textField;
    m_textField.reset();

    AtSpiFocusSearch search(
        m_bus, m_applications,
        std::min<std::chrono::milliseconds>(longestLook, m_applications.allowance().remaining()));
    search.searchApplication(service);
    search.finish(longestLook);
    if (search.hasFoundTextField()) {
        m_textField = search.found();
        return *m_textField;
    }
    if (search.hasEnded())
        return announced;
    return tl::unexpected(AccessibilityError::cannotComplete);
}

std::optional<bool> AtSpiFocusTracker::takesText(const AtSpiReference &object)
{
    const AtSpiStates states
        = AtSpiStates::of(m_applications.call(object, accessibleInterface, u"GetState"_s));
    if (!states.contains(AtSpiStates::focused))
        return std::nullopt;
    if (AtSpiRole::takesText(AtSpiRole::unknown, states))
        return true;
    const QDBusMessage role = m_applications.call(object, accessibleInterface, u"GetRole"_s);
    return AtSpiRole::takesText(role.arguments().value(0).toUInt(), states);
}

} // namespace Velloro

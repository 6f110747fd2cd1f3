#include "Platform/Linux/Accessibility/AtSpiFocusSearch.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Accessibility/AtSpiApplications.h"
#include "Platform/Linux/Accessibility/AtSpiBus.h"
#include "Platform/Linux/Accessibility/AtSpiRole.h"
#include "Platform/Linux/Accessibility/AtSpiStates.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QElapsedTimer>
#include <QMap>
#include <algorithm>
#include <utility>

namespace Velloro {

namespace {

const QString accessibleInterface = u"org.a11y.atspi.Accessible"_s;
/// Objects looked at in one walk, and questions under way at a time.
constexpr int mostVisited = 1500;
constexpr std::size_t mostQuestions = 16;

constexpr int matchAll = 1;
constexpr int canonicalOrder = 1;

/// What a collection is asked for: objects with the state "focused".
struct FocusedRule
{
};

QDBusArgument &operator<<(QDBusArgument &argument, const FocusedRule &)
{
    argument.beginStructure();
    argument << QList<int>{1 << AtSpiStates::focused, 0} << matchAll;
    argument << QMap<QString, QString>() << matchAll;
    argument << QList<int>() << matchAll;
    argument << QStringList() << matchAll;
    argument << false;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, FocusedRule &)
{
    return argument;
}

QList<AtSpiReference> references(const QDBusMessage &reply)
{
    QList<AtSpiReference> result;
    const QVariant value = reply.arguments().value(0);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != u"a(so)"
        || !value.canConvert<QDBusArgument>())
        return result;
    const auto argument = value.value<QDBusArgument>();
    argument.beginArray();
    while (!argument.atEnd()) {
        AtSpiReference reference;
        QDBusObjectPath path;
        argument.beginStructure();
        argument >> reference.service >> path;
        argument.endStructure();
        reference.path = path.path();
        if (!reference.isNull())
            result.append(reference);
    }
    argument.endArray();
    return result;
}

} // namespace
} // namespace Velloro

Q_DECLARE_METATYPE(Velloro::FocusedRule)

namespace Velloro {

AtSpiFocusSearch::AtSpiFocusSearch(AtSpiBus &bus, AtSpiApplications &applications,
                                   std::chrono::milliseconds timeout, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
    , m_applications(applications)
    , m_timeout(timeout)
{
    qDBusRegisterMetaType<QMap<QString, QString>>();
    qDBusRegisterMetaType<FocusedRule>();
}

AtSpiFocusSearch::~AtSpiFocusSearch() = default;

void AtSpiFocusSearch::searchWindow(const AtSpiReference &window)
{
    lookAtWindow(window);
}

void AtSpiFocusSearch::searchApplication(const QString &service)
{
    lookAtApplication({service, u"/org/a11y/atspi/accessible/root"_s});
}

void AtSpiFocusSearch::searchDesktop()
{
    const AtSpiReference desktop{u"org.a11y.atspi.Registry"_s,
                                 u"/org/a11y/atspi/accessible/root"_s};
    ask(desktop, accessibleInterface, u"GetChildren"_s, {}, [this](const QDBusMessage &reply) {
        for (const AtSpiReference &application : references(reply))
            lookAtApplication(application);
    });
}

void AtSpiFocusSearch::finish(std::chrono::milliseconds longest)
{
    QElapsedTimer total;
    total.start();
    while (!m_ended && !m_questions.empty() && total.elapsed() < longest.count()) {
        QDBusPendingCallWatcher *watcher = m_questions.front().watcher.get();
        const QString service = m_questions.front().service;
        QElapsedTimer timer;
        timer.start();
        watcher->QDBusPendingCall::waitForFinished();
        m_applications.spend(service, std::chrono::milliseconds(timer.elapsed()));
        if (m_applications.allowance().remaining().count() <= 0)
            return;
        take(watcher);
    }
}

void AtSpiFocusSearch::ask(const AtSpiReference &object, const QString &interface,
                           const QString &method, const QVariantList &arguments,
                           Continuation continuation)
{
    auto watcher = std::make_unique<QDBusPendingCallWatcher>(
        m_bus.send(object, interface, method, arguments, m_timeout));
    connect(watcher.get(), &QDBusPendingCallWatcher::finished, this, &AtSpiFocusSearch::take,
            Qt::QueuedConnection);
    m_questions.push_back({std::move(watcher), object.service, std::move(continuation)});
}

void AtSpiFocusSearch::take(QDBusPendingCallWatcher *watcher)
{
    const auto at = std::find_if(m_questions.begin(), m_questions.end(), [&](const Question &each) {
        return each.watcher.get() == watcher;
    });
    if (at == m_questions.end())
        return;
    const Question question = std::move(*at);
    m_questions.erase(at);
    const QDBusMessage reply = question.watcher->reply();
    if (!m_ended)
        question.continuation(reply);
    if (!m_ended)
        walk();
    if (!m_ended && m_questions.empty())
        end();
}

void AtSpiFocusSearch::lookAtApplication(const AtSpiReference &application)
{
    ask(application, accessibleInterface, u"GetChildren"_s, {}, [this](const QDBusMessage &reply) {
        for (const AtSpiReference &window : references(reply)) {
            ask(window, accessibleInterface, u"GetState"_s, {},
                [this, window](const QDBusMessage &state) {
                    if (!m_window && AtSpiStates::of(state).contains(AtSpiStates::active))
                        lookAtWindow(window);
                });
        }
    });
}

void AtSpiFocusSearch::lookAtWindow(const AtSpiReference &window)
{
    m_window = window;
    ask(window, u"org.a11y.atspi.Collection"_s, u"GetMatches"_s,
        {QVariant::fromValue(FocusedRule()), static_cast<uint>(canonicalOrder), 0, true},
        [this, window](const QDBusMessage &reply) {
            // Not every toolkit has collections.
            if (reply.type() != QDBusMessage::ReplyMessage)
                m_unvisited.append(window);
            // The innermost comes last.
            for (const AtSpiReference &match : references(reply)) {
                ask(match, accessibleInterface, u"GetState"_s, {},
                    [this, match](const QDBusMessage &state) {
                        consider(match, AtSpiStates::of(state));
                    });
            }
        });
}

/// Keeps a few questions of the walk under way.
void AtSpiFocusSearch::walk()
{
    while (!m_unvisited.isEmpty() && m_questions.size() < mostQuestions
           && m_visited < mostVisited) {
        ++m_visited;
        visit(m_unvisited.takeFirst());
    }
}

void AtSpiFocusSearch::visit(const AtSpiReference &object)
{
    ask(object, accessibleInterface, u"GetState"_s, {}, [this, object](const QDBusMessage &reply) {
        const AtSpiStates states = AtSpiStates::of(reply);
        if (object != m_window)
            consider(object, states);
        if (m_ended || !states.contains(AtSpiStates::showing)
            || states.contains(AtSpiStates::managesDescendants))
            return;
        ask(object, accessibleInterface, u"GetChildren"_s, {},
            [this](const QDBusMessage &children) { m_unvisited.append(references(children)); });
    });
}

void AtSpiFocusSearch::consider(const AtSpiReference &object, const AtSpiStates &states)
{
    if (!states.contains(AtSpiStates::focused))
        return;
    if (!states.contains(AtSpiStates::showing)) {
        prefer(object, Claim::outOfSight);
        return;
    }
    ask(object, accessibleInterface, u"GetRole"_s, {},
        [this, object, states](const QDBusMessage &role) {
            const bool takesText = AtSpiRole::takesText(role.arguments().value(0).toUInt(), states);
            prefer(object, takesText ? Claim::textField : Claim::inSight);
        });
}

void AtSpiFocusSearch::prefer(const AtSpiReference &object, Claim claim)
{
    if (claim < m_claim)
        return;
    m_claim = claim;
    m_found = object;
    if (claim == Claim::textField)
        end();
}

void AtSpiFocusSearch::end()
{
    m_ended = true;
    // Not from within a call: the receiver may delete this.
    QMetaObject::invokeMethod(this, &AtSpiFocusSearch::finished, Qt::QueuedConnection);
}

} // namespace Velloro

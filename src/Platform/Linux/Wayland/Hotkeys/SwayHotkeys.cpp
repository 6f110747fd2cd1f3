#include "Platform/Linux/Wayland/Hotkeys/SwayHotkeys.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Wayland/Sway/SwayConfig.h"
#include "Platform/Linux/Wayland/WaylandKeymap.h"
#include "Platform/Linux/X11/Keyboard/VirtualKeyMap.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QPointer>
#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

using Request = SwaySocket::Request;

/// For giving the combination back at the end.
constexpr int farewellPatience = 200; // ms

const QString pressCommand = u"nop velloro press"_s;
const QString releaseCommand = u"nop velloro release"_s;

/// In which nothing is bound but the way out of it, should the program end in the midst of it.
constexpr char ownMode[] = "velloro";
constexpr char enterOwnMode[]
    = "mode \"velloro\" bindsym Ctrl+Mod1+Shift+Escape mode default; mode \"velloro\"";
constexpr char leaveOwnMode[] = "mode \"default\"";

/// The combination in sway's words; empty for a key without a place.
QByteArray combinationText(KeyCombination combination)
{
    const auto keycode = VirtualKeyMap::keycode(combination.keyCode);
    if (!keycode)
        return {};
    QByteArray text;
    for (const auto &[mask, name] : {std::pair{ClassicMask::command, "Mod4+"},
                                     {ClassicMask::control, "Control+"},
                                     {ClassicMask::option, "Mod1+"},
                                     {ClassicMask::shift, "Shift+"}}) {
        if (combination.modifiers & mask)
            text += name;
    }
    return text + QByteArray::number(*keycode);
}

/// Whether sway has done each command of a line.
bool isDone(const QJsonDocument &answer)
{
    const QJsonArray results = answer.array();
    return !results.isEmpty() && std::ranges::all_of(results, [](const QJsonValue &result) {
        return result[u"success"_s].toBool();
    });
}

} // namespace

SwayHotkeys::SwayHotkeys(std::shared_ptr<const WaylandKeymap> keymap, QString socketPath)
    : m_keymap(std::move(keymap))
    , m_socketPath(std::move(socketPath))
    , m_key(0ms)
{
}

SwayHotkeys::~SwayHotkeys()
{
    if (!m_socket || m_bound.isEmpty())
        return;
    // Sway does not read what comes from a connection that is closed.
    bool isAnswered = false;
    sendUnbind([&](const QJsonDocument &) { isAnswered = true; });
    (void)m_socket->dispatchUntil([&] { return isAnswered; }, QDeadlineTimer(farewellPatience));
}

void SwayHotkeys::look(std::function<void(bool)> done)
{
    m_socket = SwaySocket::open(m_socketPath);
    if (!m_socket) {
        done(false);
        return;
    }
    connect(m_socket.get(), &SwaySocket::eventReceived, this, &SwayHotkeys::handleEvent);
    connect(m_socket.get(), &SwaySocket::ended, this, [this] {
        m_bound.clear();
        endPress();
    });
    connect(m_keymap.get(), &WaylandKeymap::changed, this, &SwayHotkeys::handleKeymap);
    m_socket->send(Request::getVersion, {}, [this](const QJsonDocument &answer) {
        m_configFolder = QFileInfo(answer[u"loaded_config_file_name"_s].toString()).path();
    });
    m_socket->send(Request::getBindingState, {}, [this](const QJsonDocument &answer) {
        // Left behind by one that was killed.
        if (answer[u"name"_s].toString() == QLatin1StringView(ownMode))
            m_socket->send(Request::runCommand, leaveOwnMode);
    });
    m_socket->subscribe({u"binding"_s, u"workspace"_s}, std::move(done));
}

void SwayHotkeys::bind(KeyCombination combination)
{
    unbind();
    m_wanted = combination;
    bindUnlessTaken();
}

void SwayHotkeys::unbind()
{
    m_wanted.reset();
    ++m_wantedNumber;
    sendUnbind();
    endPress();
}

void SwayHotkeys::sendUnbind(const SwaySocket::Reply &done)
{
    if (m_bound.isEmpty())
        return;
    const QByteArray bound = std::exchange(m_bound, {});
    m_socket->send(Request::runCommand,
                   "mode \"default\" unbindcode " + bound
                       + "; mode \"default\" unbindcode --release " + bound,
                   done);
}

void SwayHotkeys::bindUnlessTaken()
{
    m_socket->send(Request::getConfig, {},
                   [this, number = m_wantedNumber](const QJsonDocument &answer) {
                       if (number != m_wantedNumber)
                           return;
                       if (isTaken(answer[u"config"_s].toString()))
                           Q_EMIT statusChanged(HotkeyStatus::taken);
                       else
                           bindNow();
                   });
}

bool SwayHotkeys::isTaken(const QString &text) const
{
    const uint32_t modifiers = m_wanted->modifiers;
    const auto gives = [&](bool withShift, const QString &key) {
        const auto keysyms = m_keymap->keysyms(m_wanted->keyCode, withShift);
        const xkb_keysym_t keysym
            = xkb_keysym_from_name(key.toUtf8().constData(), XKB_KEYSYM_CASE_INSENSITIVE);
        return std::ranges::any_of(keysyms, [&](xkb_keysym_t given) {
            return given == keysym || xkb_keysym_to_lower(given) == keysym;
        });
    };
    const auto isSame = [&](const SwayConfig::Binding &binding) {
        if (binding.isKeycode) {
            return binding.modifiers == modifiers
                && binding.key.toUInt() == VirtualKeyMap::keycode(m_wanted->keyCode);
        }
        // Either way of writing it: Shift with the key's first symbol, or its second one alone.
        return (binding.modifiers == modifiers && gives(false, binding.key))
            || ((modifiers & ClassicMask::shift)
                && binding.modifiers == (modifiers & ~ClassicMask::shift)
                && gives(true, binding.key) && !gives(false, binding.key));
    };
    return std::ranges::any_of(SwayConfig(text, m_configFolder).bindings(), isSame);
}

void SwayHotkeys::bindNow()
{
    const QByteArray combination = combinationText(*m_wanted);
    if (combination.isEmpty()) {
        Q_EMIT statusChanged(HotkeyStatus::notOnKeyboard);
        return;
    }
    m_bound = combination;
    m_socket->send(Request::runCommand,
                   "mode \"default\" bindcode --no-repeat " + combination + ' '
                       + pressCommand.toLatin1()
                       + "; mode \"default\" bindcode --no-repeat --release " + combination + ' '
                       + releaseCommand.toLatin1(),
                   [this, number = m_wantedNumber](const QJsonDocument &answer) {
                       if (number == m_wantedNumber)
                           Q_EMIT statusChanged(isDone(answer) ? 0 : HotkeyStatus::unavailable);
                   });
}

void SwayHotkeys::handleEvent(SwaySocket::Event event, const QJsonObject &content)
{
    if (event == SwaySocket::Event::binding)
        handleBinding(content[u"binding"_s][u"command"_s].toString());
    else if (event == SwaySocket::Event::workspace && content[u"change"_s] == u"reload"_s)
        handleReload();
}

void SwayHotkeys::handleBinding(const QString &command)
{
    if (m_bound.isEmpty())
        return;
    if (command == pressCommand) {
        if (m_key.press() == HeldKey::Press::afterLostRelease)
            Q_EMIT released();
        Q_EMIT pressed();
    } else if (command == releaseCommand) {
        endPress();
    }
}

void SwayHotkeys::handleReload()
{
    // With its bindings, sway has forgotten that one of them is held.
    m_bound.clear();
    endPress();
    if (m_wanted)
        bindUnlessTaken();
}

void SwayHotkeys::handleKeymap()
{
    // What the user has bound by the names of keys is at other places now. A press goes on: a
    // second keyboard may be used meanwhile.
    if (m_wanted && !m_key.isHeld())
        bind(*m_wanted);
}

void SwayHotkeys::endPress()
{
    if (m_key.release())
        Q_EMIT released();
}

std::shared_ptr<void> SwayHotkeys::letShortcutsThrough()
{
    m_socket->send(Request::runCommand, enterOwnMode);
    return {this, [self = QPointer(this)](void *) {
                if (self)
                    self->m_socket->send(Request::runCommand, leaveOwnMode);
            }};
}

} // namespace Velloro

#include "Platform/Linux/Accessibility/AtSpiText.h"

#include "Base/Graphemes.h"
#include "Base/StringLiterals.h"
#include "Platform/Linux/Accessibility/AtSpiApplications.h"
#include "Platform/Linux/Accessibility/AtSpiRole.h"
#include "Platform/Linux/Desktop/DBusCall.h"

#include <QDBusError>
#include <algorithm>
#include <limits>
#include <utility>

namespace Velloro {

namespace {

const QString accessibleInterface = u"org.a11y.atspi.Accessible"_s;
const QString textInterface = u"org.a11y.atspi.Text"_s;
const QString editableTextInterface = u"org.a11y.atspi.EditableText"_s;

/// Stands in a text for an object that is embedded there.
constexpr QChar embeddedObject(QChar::ObjectReplacementCharacter);

tl::unexpected<AccessibilityError> failure(AccessibilityError error = AccessibilityError::failure)
{
    return tl::unexpected(error);
}

bool startsWithinPair(const QString &text, qsizetype at)
{
    return at > 0 && at < text.size() && text.at(at).isLowSurrogate()
        && text.at(at - 1).isHighSurrogate();
}

int codePoints(QStringView text)
{
    qsizetype count = text.size();
    for (qsizetype at = 1; at < text.size(); ++at) {
        if (text.at(at).isLowSurrogate() && text.at(at - 1).isHighSurrogate())
            --count;
    }
    return static_cast<int>(std::min<qsizetype>(count, std::numeric_limits<int>::max()));
}

} // namespace

AtSpiText::AtSpiText(AtSpiApplications &applications, AtSpiReference object)
    : m_applications(applications)
    , m_object(std::move(object))
    , m_turn(applications.allowance().turn())
{
}

AtSpiText::Result<QString> AtSpiText::content()
{
    m_content.reset();
    const Result<bool> secret = isSecret();
    if (!secret)
        return failure(secret.error());
    if (*secret)
        return failure(AccessibilityError::noValue);

    const auto reply = ask(textInterface, u"GetText"_s, {0, -1});
    if (!reply)
        return failure(reply.error());
    const QString text = reply->arguments().value(0).toString();
    const Result<int> count = number(u"CharacterCount"_s);
    if (!count)
        return failure(count.error());
    if (text.contains(embeddedObject))
        return failure();
    const int points = codePoints(text);
    if (*count != points && *count != text.size())
        return failure();
    if (points != text.size())
        m_unit = *count == points ? Unit::codePoint : Unit::codeUnit;
    else
        m_unit = unitByToolkit();
    m_content = text;
    m_count = *count;
    return text;
}

AtSpiText::Result<TextRange> AtSpiText::selection()
{
    const Result<QString> content = knownContent();
    if (!content)
        return failure(content.error());
    const Result<Offsets> offsets = selectionOffsets();
    if (!offsets)
        return failure(offsets.error());
    const int64_t start = Graphemes::indexAt(*content, toCodeUnits(offsets->start, *content));
    const int64_t end = Graphemes::indexAt(*content, toCodeUnits(offsets->end, *content));
    return TextRange{start, end - start};
}

AtSpiText::Result<void> AtSpiText::setContent(const QString &wanted)
{
    m_insertion.reset();
    const Result<QString> known = knownContent();
    if (!known)
        return failure(known.error());
    if (const Result<void> editable = requireEditable(); !editable)
        return editable;
    const QString current = *known;
    if (current == wanted) {
        m_insertion = {0, 0, {}, lengthOf(current), 0};
        return {};
    }

    const qsizetype shorter = std::min(current.size(), wanted.size());
    qsizetype prefix = 0;
    while (prefix < shorter && current.at(prefix) == wanted.at(prefix))
        ++prefix;
    if (startsWithinPair(current, prefix) || startsWithinPair(wanted, prefix))
        --prefix;
    qsizetype suffix = 0;
    while (suffix < shorter - prefix
           && current.at(current.size() - 1 - suffix) == wanted.at(wanted.size() - 1 - suffix))
        ++suffix;
    if (startsWithinPair(current, current.size() - suffix)
        || startsWithinPair(wanted, wanted.size() - suffix))
        --suffix;

    const qsizetype end = current.size() - suffix;
    const Result<void> replaced = replace({toOffset(prefix, current), toOffset(end, current)},
                                          current.mid(prefix, end - prefix),
                                          wanted.mid(prefix, wanted.size() - suffix - prefix));
    if (replaced)
        m_content = wanted;
    else
        m_content.reset();
    return replaced;
}

AtSpiText::Result<void> AtSpiText::setSelection(const TextRange &range)
{
    if (range.location < 0 || range.length < 0)
        return failure();
    const Result<QString> content = knownContent();
    if (!content)
        return failure(content.error());
    const int64_t count = Graphemes::count(*content);
    const int64_t first = std::min(range.location, count);
    const int64_t last = first + std::min(range.length, count - first);
    const int start = toOffset(Graphemes::offsetOf(*content, first), *content);
    const int end = toOffset(Graphemes::offsetOf(*content, last), *content);

    const Answer answer = select({start, end});
    if (m_insertion)
        m_insertion->caret = end;
    if (answer == Answer::yes)
        return {};
    return failure(answer == Answer::none ? AccessibilityError::cannotComplete
                                          : AccessibilityError::failure);
}

AtSpiText::Result<void> AtSpiText::replaceSelection(const QString &text)
{
    m_insertion.reset();
    const Result<bool> secret = isSecret();
    if (!secret)
        return failure(secret.error());
    if (const Result<void> editable = requireEditable(); !editable)
        return editable;
    const Result<Offsets> selected = selectionOffsets();
    if (!selected)
        return failure(selected.error());

    QString removed;
    if (*secret) {
        // What can't be read can't be put back if the insertion is refused.
        if (selected->start != selected->end)
            return failure();
        m_unit = unitByToolkit();
    } else if (const Result<QString> content = knownContent(); content) {
        const qsizetype start = toCodeUnits(selected->start, *content);
        removed = content->mid(start, toCodeUnits(selected->end, *content) - start);
    } else if (selected->start != selected->end
               || content.error() == AccessibilityError::cannotComplete) {
        return failure(content.error());
    } else {
        const auto before = ask(textInterface, u"GetText"_s, {0, -1});
        // Only a text without a value is left to the application; in one with other objects in it
        // the caret may be in one of those.
        if (before && before->arguments().value(0).toString().contains(embeddedObject))
            return failure();
        m_unit = unitByToolkit();
    }

    const Result<void> replaced = replace(*selected, removed, text);
    m_content.reset();
    if (replaced) {
        (void)tell(textInterface, u"SetCaretOffset"_s, {selected->start + lengthOf(text)});
    }
    return replaced;
}

AtSpiText::Result<QDBusMessage> AtSpiText::ask(const QString &interface, const QString &method,
                                               const QVariantList &arguments)
{
    QDBusMessage reply = m_applications.call(m_object, interface, method, arguments);
    if (reply.type() == QDBusMessage::ReplyMessage)
        return reply;
    switch (QDBusError(reply).type()) {
    case QDBusError::UnknownMethod:
    case QDBusError::UnknownInterface:
    case QDBusError::NotSupported:
        return failure(AccessibilityError::unsupported);
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
    case QDBusError::ServiceUnknown:
    case QDBusError::Disconnected:
    case QDBusError::UnknownObject:
        return failure(AccessibilityError::cannotComplete);
    default:
        return failure();
    }
}

/// Asks for an action that the application answers by whether it was done.
AtSpiText::Answer AtSpiText::tell(const QString &interface, const QString &method,
                                  const QVariantList &arguments)
{
    const auto reply = ask(interface, method, arguments);
    if (!reply)
        return reply.error() == AccessibilityError::cannotComplete ? Answer::none : Answer::no;
    return reply->arguments().value(0).toBool() ? Answer::yes : Answer::no;
}

AtSpiText::Result<int> AtSpiText::number(const QString &property)
{
    const auto reply = ask(DBusCall::properties, u"Get"_s, {textInterface, property});
    if (!reply)
        return failure(reply.error());
    bool ok = false;
    const int value = DBusCall::property(*reply).toInt(&ok);
    if (!ok || value < 0)
        return failure();
    return value;
}

AtSpiText::Result<bool> AtSpiText::isSecret()
{
    const auto reply = ask(accessibleInterface, u"GetRole"_s);
    if (!reply)
        return failure(reply.error());
    return reply->arguments().value(0).toUInt() == AtSpiRole::passwordText;
}

/// Some toolkits answer that they wrote into a field that can't be written to, and Gecko does so
/// for every field and writes into none. The engine of a page in a Qt window edits some time after
/// it has answered, which looks like a refusal.
AtSpiText::Result<void> AtSpiText::requireEditable()
{
    const QString toolkit = m_applications.toolkitOf(m_object.service);
    if (toolkit == u"Gecko" || (toolkit == u"Qt" && isInWebPage()))
        return failure(AccessibilityError::unsupported);
    const auto reply = ask(accessibleInterface, u"GetState"_s);
    if (!reply)
        return failure(reply.error());
    if (!AtSpiStates::of(*reply).isWritable())
        return failure(AccessibilityError::unsupported);
    return {};
}

AtSpiText::Result<QString> AtSpiText::knownContent()
{
    if (m_content)
        return *m_content;
    return content();
}

AtSpiText::Result<AtSpiText::Offsets> AtSpiText::selectionOffsets()
{
    const auto count = ask(textInterface, u"GetNSelections"_s);
    if (!count)
        return failure(count.error());
    if (count->arguments().value(0).toInt() > 0) {
        const auto selected = ask(textInterface, u"GetSelection"_s, {0});
        if (!selected)
            return failure(selected.error());
        const int one = selected->arguments().value(0).toInt();
        const int other = selected->arguments().value(1).toInt();
        if (selected->arguments().size() != 2 || one < 0 || other < 0)
            return failure();
        return Offsets{std::min(one, other), std::max(one, other)};
    }
    const Result<int> caret = number(u"CaretOffset"_s);
    if (!caret)
        return failure(caret.error());
    return Offsets{*caret, *caret};
}

/// For when the text itself does not show in what its toolkit counts.
AtSpiText::Unit AtSpiText::unitByToolkit()
{
    const QString toolkit = m_applications.toolkitOf(m_object.service);
    for (const QString &each : {u"Qt"_s, u"VCL"_s, u"J2SE-access-bridge"_s}) {
        if (toolkit == each)
            return Unit::codeUnit;
    }
    return Unit::codePoint;
}

int AtSpiText::toOffset(qsizetype codeUnits, const QString &content) const
{
    return lengthOf(content.left(codeUnits));
}

qsizetype AtSpiText::toCodeUnits(int offset, const QString &content) const
{
    if (m_unit == Unit::codeUnit)
        return std::min<qsizetype>(offset, content.size());
    qsizetype at = 0;
    for (int points = 0; points < offset && at < content.size(); ++points)
        at += startsWithinPair(content, at + 1) ? 2 : 1;
    return at;
}

int AtSpiText::lengthOf(const QString &text) const
{
    if (m_unit == Unit::codePoint)
        return codePoints(text);
    return static_cast<int>(std::min<qsizetype>(text.size(), std::numeric_limits<int>::max()));
}

AtSpiText::Answer AtSpiText::select(const Offsets &range)
{
    if (range.start == range.end)
        return tell(textInterface, u"SetCaretOffset"_s, {range.start});
    const Answer answer = tell(textInterface, u"SetSelection"_s, {0, range.start, range.end});
    if (answer != Answer::no)
        return answer;
    return tell(textInterface, u"AddSelection"_s, {range.start, range.end});
}

AtSpiText::Answer AtSpiText::insert(int offset, const QString &text)
{
    // The protocol does not say what the length is counted in. Qt cuts the text to so many code
    // units; all others take it for bytes.
    const qsizetype length
        = m_applications.toolkitOf(m_object.service) == u"Qt" ? text.size() : text.toUtf8().size();
    return tell(editableTextInterface, u"InsertText"_s, {offset, text, static_cast<int>(length)});
}

AtSpiText::Answer AtSpiText::remove(const Offsets &range)
{
    return tell(editableTextInterface, u"DeleteText"_s, {range.start, range.end});
}

/// Whether the toolkit makes an edit before it answers. Others may make it later, and what is not
/// there yet must not be inserted once more.
bool AtSpiText::answersWhenDone()
{
    const QString toolkit = m_applications.toolkitOf(m_object.service);
    return toolkit == u"gtk" || toolkit == u"Qt";
}

bool AtSpiText::isInWebPage()
{
    constexpr int deepest = 50;
    AtSpiReference object = m_object;
    for (int depth = 0; depth < deepest && !object.isNull(); ++depth) {
        const QDBusMessage role = m_applications.call(object, accessibleInterface, u"GetRole"_s);
        if (role.type() != QDBusMessage::ReplyMessage)
            return false;
        if (role.arguments().value(0).toUInt() == AtSpiRole::documentWeb)
            return true;
        object = m_applications.parentOf(object);
    }
    return false;
}

/// Whether the text certainly has this length and, where that is known, this content.
bool AtSpiText::isUnchanged(int count, const std::optional<QString> &content)
{
    const Result<int> now = number(u"CharacterCount"_s);
    if (!now || *now != count)
        return false;
    if (!content)
        return true;
    const auto reply = ask(textInterface, u"GetText"_s, {0, -1});
    return reply && reply->arguments().value(0).toString() == *content;
}

bool AtSpiText::shows(const Insertion &insertion)
{
    const Result<int> count = number(u"CharacterCount"_s);
    if (!count || *count != insertion.count)
        return false;
    if (!insertion.text.isEmpty()) {
        const auto text = ask(textInterface, u"GetText"_s, {insertion.start, insertion.end});
        if (!text || text->arguments().value(0).toString() != insertion.text)
            return false;
    }
    const Result<Offsets> selected = selectionOffsets();
    return selected && selected->start == insertion.caret && selected->end == insertion.caret;
}

AtSpiText::Result<void> AtSpiText::replace(const Offsets &range, const QString &removed,
                                           const QString &inserted)
{
    // Known where the content is.
    const Result<int> count = m_content ? m_count : number(u"CharacterCount"_s);
    if (!count)
        return failure(count.error());
    const std::optional<QString> before = std::exchange(m_content, std::nullopt);
    std::optional<QString> rest = before;
    if (rest)
        rest->remove(toCodeUnits(range.start, *before), removed.size());
    const int restCount = *count - (range.end - range.start);
    const bool removes = range.start != range.end;

    // An edit that was sent to an application that has just answered, but that it does not confirm
    // in time, waits there in order: it counts as done, or it would be made twice.
    if (removes && remove(range) == Answer::no)
        return failure();
    Answer answer = inserted.isEmpty() ? Answer::yes : insert(range.start, inserted);
    if (answer == Answer::yes && !inserted.isEmpty() && answersWhenDone()) {
        if (isUnchanged(*count, before))
            return failure();
        if (removes && isUnchanged(restCount, rest))
            answer = Answer::no;
    }
    if (answer == Answer::no) {
        if (removes && insert(range.start, removed) != Answer::no)
            (void)select(range);
        return failure();
    }
    const int length = lengthOf(inserted);
    const int end = range.start + length;
    m_count = restCount + length;
    m_insertion = {range.start, end, before ? inserted : QString(), restCount + length, end};
    return {};
}

} // namespace Velloro

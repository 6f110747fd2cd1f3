#include "Platform/Linux/Files/JsonSalvage.h"

#include <QJsonDocument>
#include <cctype>

namespace Velloro {

namespace {

/// Cuts the text into its members, and has each of them parsed for itself.
class Salvage
{
public:
    explicit Salvage(const QByteArray &text)
        : m_text(text)
    {
    }

    QJsonObject members()
    {
        qsizetype position = m_text.startsWith("\xEF\xBB\xBF") ? 3 : 0;
        while (position < m_text.size() && std::isspace(uchar(m_text[position])))
            ++position;
        if (position == m_text.size() || m_text[position] != '{')
            return {};
        begin(position + 1);
        for (++position; position < m_text.size(); ++position)
            position = read(position);
        // A number that breaks off may have been a longer one.
        if (const QByteArray rest = m_text.mid(m_begin).trimmed();
            m_nesting.isEmpty() && !rest.isEmpty() && !std::isdigit(uchar(rest.back())))
            end(m_text.size());
        return m_members;
    }

private:
    void begin(qsizetype position)
    {
        m_begin = position;
        m_nesting.clear();
        m_hasColon = false;
        m_hasValue = false;
    }

    void end(qsizetype position)
    {
        const QJsonObject member =
            QJsonDocument::fromJson('{' + m_text.mid(m_begin, position - m_begin) + '}').object();
        if (!member.isEmpty())
            m_members.insert(member.begin().key(), member.begin().value());
        begin(position + 1);
    }

    /// Takes what begins at `position`, and returns where that ends.
    qsizetype read(qsizetype position)
    {
        const char character = m_text[position];
        const bool isOutermost = m_nesting.isEmpty();
        switch (character) {
        case '"':
            // After a value comes a comma; here, it is missing.
            if (isOutermost && m_hasValue) {
                end(position);
                m_begin = position;
            }
            m_hasValue = m_hasColon;
            m_lastString = position;
            return readString(position);
        case ':':
            if (isOutermost) {
                m_hasColon = true;
            } else if (m_nesting.back() == '[') {
                // No list holds a colon: this one was never closed, and its member is lost.
                begin(m_lastString);
                m_hasColon = true;
            }
            break;
        case '{':
        case '[':
            m_nesting.append(character);
            m_hasValue = true;
            break;
        case ',':
        case '}':
        case ']':
            if (isOutermost)
                end(position);
            else if (character != ',')
                m_nesting.chop(1);
            break;
        default:
            m_hasValue |= m_hasColon && !std::isspace(uchar(character));
        }
        return position;
    }

    qsizetype readString(qsizetype position)
    {
        for (++position; position < m_text.size(); ++position) {
            if (m_text[position] == '\\') {
                ++position;
            } else if (m_text[position] == '"') {
                return position;
            } else if (m_text[position] == '\n') {
                // A string ends in its line: the quotation mark is missing.
                if (m_nesting.isEmpty())
                    begin(position + 1);
                return position;
            }
        }
        // It breaks off; so does the member.
        begin(m_text.size());
        return position;
    }

    const QByteArray &m_text;
    QJsonObject m_members;
    /// Where the present member began, the brackets that are open in it, and how far it has come.
    qsizetype m_begin = 0;
    QByteArray m_nesting;
    bool m_hasColon = false;
    bool m_hasValue = false;
    qsizetype m_lastString = 0;
};

} // namespace

QJsonObject salvageJsonMembers(const QByteArray &text)
{
    return Salvage(text).members();
}

} // namespace Velloro

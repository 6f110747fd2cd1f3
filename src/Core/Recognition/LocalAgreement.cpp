#include "Core/Recognition/LocalAgreement.h"

#include "Base/StringLiterals.h"

#include <QRegularExpression>
#include <algorithm>

namespace Velloro {

QStringList LocalAgreement::words(const QString &text)
{
    static const QRegularExpression blanks(u"[\\p{Zs}\\t]"_s);
    return text.trimmed().split(blanks, Qt::SkipEmptyParts);
}

void LocalAgreement::addPass(const QStringList &heard)
{
    const qsizetype count = std::min(m_previousWords.size(), heard.size());
    for (qsizetype at = 0; at < count; ++at) {
        if (m_previousWords.at(at).toLower() != heard.at(at).toLower())
            break;
        if (at >= m_confirmedWords.size())
            m_confirmedWords += heard.at(at);
    }
    m_previousWords = heard;
}

QStringList LocalAgreement::uncommittedWords() const
{
    return m_previousWords.mid(m_confirmedWords.size());
}

} // namespace Velloro

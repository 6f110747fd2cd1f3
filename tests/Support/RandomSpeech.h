#pragma once

#include "Base/StringLiterals.h"

#include <QByteArray>
#include <QStringList>
#include <algorithm>
#include <array>
#include <random>

namespace Velloro {

/// What a recogniser might hear of one speech, pass by pass: more at every pass, the last words
/// doubtful, now and then something else altogether. A seed always gives the same.
class RandomSpeech
{
public:
    explicit RandomSpeech(unsigned seed)
        : m_random(seed)
    {
        for (int count = 3 + below(20); count > 0; --count)
            m_words << word();
    }

    QByteArray nextPass()
    {
        m_heard = std::min<qsizetype>(m_words.size(), m_heard + below(5));
        QStringList heard = m_words.mid(0, m_heard);
        for (qsizetype at = std::max<qsizetype>(0, heard.size() - 3); at < heard.size(); ++at) {
            if (below(3) == 0)
                heard[at] = below(2) ? word() : heard[at].toUpper();
        }
        if (below(8) == 0)
            heard = heard.mid(below(3));
        return heard.join(below(4) ? u" "_s : u" \t\u00a0"_s).toUtf8();
    }

    QByteArray finalText() { return below(8) ? m_words.join(u' ').toUtf8() : QByteArray(); }

    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

private:
    QString word()
    {
        static constexpr std::array words = {"the",
                                             "word",
                                             "Zażółć",
                                             "e\u0301te\u0301",
                                             "👍🏽",
                                             "👩‍👩‍👧‍👦",
                                             "🇵🇱",
                                             "你好",
                                             "こんにちは",
                                             "がぎ",
                                             "שלום",
                                             "مَرْحَبًا",
                                             "नमस्ते",
                                             "ठीक",
                                             "한국어",
                                             "ff",
                                             "don't",
                                             "x\nb",
                                             "o\u0308\u0323",
                                             "…"};
        return QString::fromUtf8(words.at(below(static_cast<int>(words.size()))));
    }

    std::mt19937 m_random;
    QStringList m_words;
    qsizetype m_heard = 0;
};

} // namespace Velloro

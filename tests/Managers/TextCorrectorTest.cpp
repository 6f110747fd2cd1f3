#include "Managers/TextCorrector.h"

#include "Base/StringLiterals.h"
#include "Managers/CorrectionLanguages.h"

#include <QStringList>
#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <thread>
#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/regex.h>
#include <vector>

namespace Velloro {
namespace {

struct Case
{
    const char16_t *language;
    const char16_t *text;
    const char16_t *corrected;
};

QString correct(const QString &text, const char16_t *language)
{
    return TextCorrector::correct(text, QString::fromUtf16(language));
}

void expectCorrected(std::initializer_list<Case> cases)
{
    for (const Case &each : cases) {
        EXPECT_EQ(correct(QString::fromUtf16(each.text), each.language).toStdString(),
                  QString::fromUtf16(each.corrected).toStdString())
            << QString::fromUtf16(each.language).toStdString() << ": '"
            << QString::fromUtf16(each.text).toStdString() << "'";
    }
}

/// The recogniser's codes of languages that have no table are corrected like this.
constexpr CorrectionLanguage unknownLanguage{u"auto", false, CorrectionTables::englishFillers};

QString toQString(std::u16string_view text)
{
    return QStringView(text.data(), qsizetype(text.size())).toString();
}

/// The correction as plainly as it can be written: every pattern compiled when its turn comes, and
/// the engine's own search.
class PlainCorrector
{
public:
    static QString correct(const QString &text, const CorrectionLanguage &language)
    {
        PlainCorrector plain(text);
        plain.replace(
            uR"(\[(?:Music|Applause|Laughter|BLANK_AUDIO|inaudible|silence|cough|sneeze)"
            uR"(|noise|phone ringing|background noise|muzyka|applaus|śmiech|beifall|risas)"
            uR"(|rires|risate|risos|смех|音楽|拍手|\w+)\])",
            u"");
        plain.replace(
            uR"(\*(?:stutters?|laughs?|laughing|coughs?|coughing|sneezes?|sneezing|sighs?)"
            uR"(|sighing|clears throat|breaths?|breathing|pauses?|pausing|inaudible)"
            uR"(|silence|hesitates?|hesitating|mumbles?|mumbling|whispers?|whispering)"
            uR"(|chuckles?|chuckling|giggles?|giggling)\*)",
            u"");
        for (const std::u16string_view filler : language.fillers) {
            const std::u16string escaped(filler);
            plain.replace(uR"(\b)" + escaped + uR"(\b[,\s]*)", u" ");
            plain.replace(uR"(^\s*)" + escaped + uR"([,\s]+)", u" ");
            plain.replace(uR"([,\s]+)" + escaped + uR"(\s*$)", u" ");
        }
        plain.replace(uR"(\b(\w+)\s+\1\b)", u"$1");
        plain.replace(uR"(\s+([,\.!?;:]))", u"$1", 0);
        plain.replace(uR"(\s{2,})", u" ", 0);
        const QString trimmed = toQString(plain.m_text).trimmed();
        return language.capitalizes ? capitalized(trimmed) : trimmed;
    }

private:
    explicit PlainCorrector(const QString &text)
        : m_text(text.utf16(), static_cast<int32_t>(text.size()))
    {
    }

    void replace(const std::u16string &pattern, const char16_t *replacement,
                 uint32_t flags = UREGEX_CASE_INSENSITIVE)
    {
        UErrorCode status = U_ZERO_ERROR;
        icu::RegexMatcher matcher(icu::UnicodeString(pattern.c_str()), flags, status);
        matcher.reset(m_text);
        const icu::UnicodeString replaced = matcher.replaceAll(replacement, status);
        ASSERT_TRUE(U_SUCCESS(status)) << u_errorName(status);
        m_text = replaced;
    }

    static QString capitalized(const QString &text)
    {
        UErrorCode status = U_ZERO_ERROR;
        const std::unique_ptr<icu::BreakIterator> characters(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        const icu::UnicodeString all(text.utf16(), static_cast<int32_t>(text.size()));
        characters->setText(all);
        const int32_t end = characters->next();
        if (end == icu::BreakIterator::DONE)
            return text;
        const icu::UnicodeString first = all.tempSubString(0, end);
        const icu::UnicodeString upper = icu::UnicodeString(first).toUpper(icu::Locale::getRoot());
        if (upper == first || icu::UnicodeString(first).toLower(icu::Locale::getRoot()) != first)
            return text;
        return toQString(upper + all.tempSubString(end));
    }

    static QString toQString(const icu::UnicodeString &text)
    {
        return QString(reinterpret_cast<const QChar *>(text.getBuffer()), text.length());
    }

    icu::UnicodeString m_text;
};

/// Texts in which fillers, their look-alikes, doubled words, tags and oddities meet often.
class TextMaker
{
public:
    TextMaker(unsigned seed, const CorrectionLanguage &language)
        : m_random(seed)
    {
        for (const std::u16string_view filler : language.fillers)
            m_fillers << toQString(filler);
    }

    QString make()
    {
        QString text;
        for (int left = pick(0, 24); left > 0; --left) {
            QString piece;
            switch (pick(0, 7)) {
            case 0:
            case 1:
            case 2:
                piece = m_fillers[pick(0, static_cast<int>(m_fillers.size()) - 1)];
                break;
            case 3:
            case 4:
                piece = any(words);
                break;
            case 5:
                piece = m_last;
                break;
            case 6:
                piece = any(oddities);
                break;
            default:
                // A part of a filler, to meet one that another replacement completes.
                piece = m_fillers[pick(0, static_cast<int>(m_fillers.size()) - 1)];
                piece = piece.split(u' ')[0].left(pick(1, 4));
            }
            m_last = piece;
            switch (pick(0, 5)) {
            case 0:
                piece = piece.toUpper();
                break;
            case 1:
                piece = disguised(piece);
                break;
            default:
                break;
            }
            text += piece + any(separators);
        }
        return text;
    }

private:
    int pick(int first, int last)
    {
        return std::uniform_int_distribution<int>(first, last)(m_random);
    }

    QString any(const std::vector<QString> &choice)
    {
        return choice[static_cast<size_t>(pick(0, static_cast<int>(choice.size()) - 1))];
    }

    /// The text with some letters replaced by others that are equal when case is ignored.
    QString disguised(QString text)
    {
        text.replace(u'k', QChar(0x212A)).replace(u's', QChar(0x017F));
        text.replace(u"ss"_s, u"ß"_s).replace(u"weißt"_s, u"WEISST"_s);
        return text;
    }

    static const std::vector<QString> words;
    static const std::vector<QString> oddities;
    static const std::vector<QString> separators;

    std::mt19937 m_random;
    QStringList m_fillers;
    QString m_last;
};

const std::vector<QString> TextMaker::words{
    u"umbrella"_s, u"other"_s, u"The"_s,        u"the"_s,      u"ja"_s,   u"Straße"_s,
    u"STRASSE"_s,  u"élan"_s,  u"e\u0301lan"_s, u"работает"_s, u"東京"_s, u"2"_s,
    u"a_b"_s,      u"ﬁn"_s,    u"i"_s,          u"İ"_s,        u"ı"_s,    u"ΣΑΣ"_s,
    u"σας"_s,      u"ᾳ"_s,     u"𐐨𐐀"_s,         u"𐐀𐐨"_s,       u"ŉ"_s,    u"ǰ"_s,
};
const std::vector<QString> TextMaker::oddities{
    u"[Music]"_s,
    u"[MUSIC"_s,
    u"[phone ringing]"_s,
    u"[two words]"_s,
    u"[音楽]"_s,
    u"*Laughs*"_s,
    u"*laughs"_s,
    u"*clears throat*"_s,
    u"*x*"_s,
    u"[[x]]"_s,
    u"\u00AD"_s,
    u"\u200D"_s,
    u"\u0301"_s,
    u"\u0345"_s,
    u"\uFEFF"_s,
    u"👩\u200D👩"_s,
    u"😀"_s,
    QChar(0xD800),
    QChar(0xDC00),
    QChar(0),
    u"$1"_s,
    u"\\"_s,
    u"-"_s,
    u"'"_s,
};
const std::vector<QString> TextMaker::separators{
    u" "_s,       u" "_s,      u" "_s,  u", "_s,   u" , "_s,    u""_s,
    u"."_s,       u" ! "_s,    u"\n"_s, u"\r\n"_s, u"\u00A0"_s, u"\u3000"_s,
    u"\u2028 "_s, u"\u0085"_s, u",,"_s, u"\t"_s,   u"、"_s,     u":"_s,
};

TEST(TextCorrector, cleansTranscriptsInAllLanguages)
{
    expectCorrected({
        {u"en", u"[Music] um, so I think the the plan is good .", u"So I think the plan is good."},
        {u"pl", u"yyy, znaczy po prostu idziemy do domu", u"Idziemy do domu"},
        {u"de", u"äh, also das geht", u"Das geht"},
        {u"de", u"Weisst Du, es schneit", u"Es schneit"},
        {u"es", u"pues, o sea, básicamente vamos mañana", u"Vamos mañana"},
        {u"fr", u"euh bon, on y va", u"On y va"},
        {u"it", u"cioè, praticamente domani piove", u"Domani piove"},
        {u"pt", u"então, pois é, vamos embora, né", u"Pois vamos embora,"},
        {u"ru", u"ну, короче, это работает", u"Это работает"},
        {u"ja", u"えーと、 東京です", u"、 東京です"},
        {u"zh", u"嗯，那个 我们走", u"， 我们走"},
        {u"zh", u"我们嗯走，就是然后", u"我们嗯走，就是然后"},
        {u"auto", u"um hello", u"hello"},
        {u"", u"um hello", u"hello"},
        {u"EN", u"um hello", u"hello"},
    });
}

TEST(TextCorrector, appliesItsStepsInOrder)
{
    expectCorrected({
        // Tags and stage directions.
        {u"en", u"*laughs* That's great.", u"That's great."},
        {u"en", u"[LAUGHTER] [two words] [phone ringing] ok", u"[two words] ok"},
        {u"en", u"a [x] b *Clears Throat* c *dances* [] [a-b]", u"A b c *dances* [] [a-b]"},
        // Fillers.
        {u"en", u"um, uh", u""},
        {u"en", u"Well, like, you know, it works", u"Well, it works"},
        {u"en", u"I like it", u"I it"},
        {u"en", u"Turn right.", u"Turn."},
        {u"en", u"Hmm. umbrella", u". umbrella"},
        {u"en", u"you um, know that", u"You know that"},
        // The fillers go in the order of the table.
        {u"en", u"okay so yeah", u"Yeah"},
        {u"pl", u"no i wiesz co", u"I co"},
        // Repetitions.
        {u"en", u"I I I think", u"I I think"},
        {u"en", u"The the cat", u"The cat"},
        {u"de", u"straße STRASSE", u"Straße"},
        {u"en", u"over overt, then\nTHEN", u"Over overt, then"},
        // Blanks.
        {u"en", u"Hello , world !", u"Hello, world!"},
        {u"en", u"a\u00A0\u2003b\tc \u3002 )", u"A b\tc \u3002 )"},
        // Capital letters.
        {u"de", u"ß", u"SS"},
        {u"en", u"e\u0301 x", u"E\u0301 x"},
        {u"en", u"ǆ", u"Ǆ"},
        {u"en", u"ǅ", u"ǅ"},
        {u"en", u"3rd. next", u"3rd. next"},
        {u"ja", u"abc", u"abc"},
        {u"en", u" \u2029\n", u""},
        {u"en", u"", u""},
    });
}

/// Marks and foldings where random texts seldom have them.
const QStringList rareTexts{
    u"-\u0301ab ab"_s,
    u"\u0345\u0301a a"_s,
    u"a\u00ADb b a\u00AD a\u00AD"_s,
    u"um\u0301 um\u200D um\u00AD \u0301um"_s,
    u"\u212Aind of \u212Aurde ob\u017Fervation ob\u017Fer OB\u017FER"_s,
    u"WEISST DU, du weißt schon ẞ ss \u1E9E"_s,
    u"ﬁ fi FI ŉ ʼn ꙁ Ꙁ"_s,
};

TEST(TextCorrector, agreesWithCompilingEachPatternAtEachCall)
{
    QList<CorrectionLanguage> languages(correctionLanguages.begin(), correctionLanguages.end());
    languages << unknownLanguage;
    for (const CorrectionLanguage &language : languages) {
        const QString code = toQString(language.code);
        TextMaker maker(2024, language);
        for (int round = 0; round < 400; ++round) {
            const QString text = round < rareTexts.size() ? rareTexts[round] : maker.make();
            const QString expected = PlainCorrector::correct(text, language);
            ASSERT_EQ(TextCorrector::correct(text, code), expected)
                << code.toStdString() << ": '" << text.toStdString() << "'";
        }
    }
}

TEST(TextCorrector, takesTextsOfAnyLength)
{
    constexpr qsizetype length = 1 << 20;
    const auto repeated
        = [](const QString &piece) { return piece.repeated(length / piece.size()); };
    const QString blanks = repeated(u" "_s);
    const QString word = repeated(u"x"_s);
    const QString marks = repeated(u"a\u0301"_s);

    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(correct(blanks, u"en"), QString());
    EXPECT_EQ(correct(u'a' + blanks + u'b', u"en"), u"A b"_s);
    EXPECT_EQ(correct(u'a' + blanks + u".um"_s + blanks + u"um"_s, u"en"), u"A."_s);
    EXPECT_EQ(correct(word + u' ' + word, u"ja"), word);
    EXPECT_EQ(correct(u'[' + word + u']', u"ja"), QString());
    EXPECT_EQ(correct(marks + u"  "_s + marks, u"ja"), marks);
    EXPECT_EQ(correct(repeated(u"["_s), u"ja"), repeated(u"["_s));
    EXPECT_EQ(correct(repeated(u"um, "_s), u"en"), QString());
    EXPECT_EQ(correct(repeated(QString(QChar(0xDFFF))), u"en"), repeated(QString(QChar(0xDFFF))));
    EXPECT_EQ(correct(repeated(u"\u00AD"_s), u"ja"), repeated(u"\u00AD"_s));
    // Far more than it takes, and far less than steps that are quadratic in the length would.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

TEST(TextCorrector, runsOnSeveralThreadsAtOnce)
{
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (size_t index = 0; index < wrong.size(); ++index) {
        threads.emplace_back([&wrong, index] {
            for (int round = 0; round < 50; ++round) {
                wrong[index] += correct(u"эм, ну это  это работает"_s, u"ru") != u"Это работает"_s;
                wrong[index] += correct(u"uh, one one, two"_s, u"en") != u"One, two"_s;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, std::vector<int>(wrong.size(), 0));
}

} // namespace
} // namespace Velloro

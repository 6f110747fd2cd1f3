#include "Managers/TextCorrector.h"

#include "Base/Graphemes.h"
#include "Managers/CorrectionLanguages.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unicode/locid.h>
#include <unicode/regex.h>
#include <unicode/unistr.h>
#include <vector>

namespace Velloro {

namespace {

// In these patterns `\s` and `\w` stand in brackets where they are repeated. It means the same, but
// the engine repeats a set without remembering every single step of it, so that no length of text
// exhausts its memory.
constexpr std::u16string_view soundTagPattern
    = uR"(\[(?:Music|Applause|Laughter|BLANK_AUDIO|inaudible|silence|cough|sneeze|noise|phone ringing|)"
      uR"(background noise|muzyka|applaus|śmiech|beifall|risas|rires|risate|risos|смех|音楽|拍手|[\w]+)\])";
constexpr std::u16string_view stageDirectionPattern
    = uR"(\*(?:stutters?|laughs?|laughing|coughs?|coughing|sneezes?|sneezing|sighs?|sighing|)"
      uR"(clears throat|breaths?|breathing|pauses?|pausing|inaudible|silence|hesitates?|hesitating|)"
      uR"(mumbles?|mumbling|whispers?|whispering|chuckles?|chuckling|giggles?|giggling)\*)";
constexpr std::u16string_view repetitionPattern = uR"(\b([\w]+)[\s]+\1\b)";
// Only from the start of a run of blanks: a run that no punctuation follows is looked at once, not
// once more for each of its blanks.
constexpr std::u16string_view blanksBeforePunctuationPattern = uR"((?<!\s)[\s]+([,\.!?;:]))";
constexpr std::u16string_view blanksPattern = uR"([\s][\s]+)";

icu::UnicodeString toUnicodeString(std::u16string_view text)
{
    return {text.data(), static_cast<int32_t>(text.size())};
}

/// A compiled pattern and what is put in the place of its matches. Any thread.
class Replacement
{
public:
    Replacement(std::u16string_view pattern, std::u16string_view replacement, uint32_t flags)
        : m_replacement(toUnicodeString(replacement))
    {
        UErrorCode status = U_ZERO_ERROR;
        m_pattern.reset(icu::RegexPattern::compile(toUnicodeString(pattern), flags, status));
    }

    /// Replaces all matches; where the engine fails, the text stays as it is.
    void apply(icu::UnicodeString &text) const
    {
        if (!m_pattern)
            return;
        UErrorCode status = U_ZERO_ERROR;
        const std::unique_ptr<icu::RegexMatcher> matcher(m_pattern->matcher(text, status));
        if (U_FAILURE(status) || !matcher->find(status))
            return;
        icu::UnicodeString replaced = matcher->replaceAll(m_replacement, status);
        if (U_SUCCESS(status))
            text = std::move(replaced);
    }

private:
    std::unique_ptr<icu::RegexPattern> m_pattern;
    icu::UnicodeString m_replacement;
};

/// One filler expression, replaced together with the commas and blanks behind it.
///
/// That includes the fillers at the very start and the very end of the text: between them and the
/// commas, blanks and ends around them are word boundaries, too.
struct Filler
{
    explicit Filler(std::u16string_view text)
        : folded(toUnicodeString(text).foldCase())
        , removal(uR"(\b\Q)" + std::u16string(text) + uR"(\E\b[,\s]*)", u" ",
                  UREGEX_CASE_INSENSITIVE)
    {
    }

    /// What every text that contains it contains when case-folded.
    icu::UnicodeString folded;
    Replacement removal;
};

/// Those of one language, compiled when it is used first.
const std::vector<Filler> &fillersOf(size_t language)
{
    static std::array<std::once_flag, correctionLanguages.size()> once;
    static std::array<std::vector<Filler>, correctionLanguages.size()> fillers;
    std::call_once(once[language], [&] {
        for (const std::u16string_view text : correctionLanguages[language].fillers)
            fillers[language].emplace_back(text);
    });
    return fillers[language];
}

void removeFillers(icu::UnicodeString &text, const std::vector<Filler> &fillers)
{
    icu::UnicodeString folded = icu::UnicodeString(text).foldCase();
    for (const Filler &filler : fillers) {
        if (folded.indexOf(filler.folded) < 0)
            continue;
        filler.removal.apply(text);
        folded = icu::UnicodeString(text).foldCase();
    }
}

void applyPatterns(icu::UnicodeString &text, const std::vector<Filler> &fillers)
{
    static const Replacement soundTags(soundTagPattern, u"", UREGEX_CASE_INSENSITIVE);
    static const Replacement stageDirections(stageDirectionPattern, u"", UREGEX_CASE_INSENSITIVE);
    static const Replacement repetitions(repetitionPattern, u"$1", UREGEX_CASE_INSENSITIVE);
    static const Replacement blanksBeforePunctuation(blanksBeforePunctuationPattern, u"$1", 0);
    static const Replacement blanks(blanksPattern, u" ", 0);

    if (text.indexOf(u'[') >= 0)
        soundTags.apply(text);
    if (text.indexOf(u'*') >= 0)
        stageDirections.apply(text);
    removeFillers(text, fillers);
    repetitions.apply(text);
    blanksBeforePunctuation.apply(text);
    blanks.apply(text);
}

QString toQString(const icu::UnicodeString &text)
{
    return QString(reinterpret_cast<const QChar *>(text.getBuffer()), text.length());
}

QString capitalized(const QString &text)
{
    const QString first = Graphemes::prefix(text, 1);
    const icu::UnicodeString character(first.utf16(), static_cast<int32_t>(first.size()));
    const icu::Locale &root = icu::Locale::getRoot();
    const icu::UnicodeString upper = icu::UnicodeString(character).toUpper(root);
    if (upper == character || icu::UnicodeString(character).toLower(root) != character)
        return text;
    return toQString(upper) + text.mid(first.size());
}

} // namespace

QString TextCorrector::correct(const QString &text, const QString &language)
{
    const std::u16string code = language.toStdU16String();
    const auto known = std::ranges::find(correctionLanguages, code, &CorrectionLanguage::code);
    const size_t fillers = known == correctionLanguages.end()
        ? 0
        : static_cast<size_t>(known - correctionLanguages.begin());

    QString corrected = text;
    // The engine counts code units in 32 bits.
    if (text.size() < std::numeric_limits<int32_t>::max()) {
        icu::UnicodeString patterned(text.utf16(), static_cast<int32_t>(text.size()));
        applyPatterns(patterned, fillersOf(fillers));
        corrected = toQString(patterned);
    }
    corrected = corrected.trimmed();
    return known != correctionLanguages.end() && known->capitalizes ? capitalized(corrected)
                                                                    : corrected;
}

} // namespace Velloro

#include "Managers/TextCorrector.h"

#include "Base/Graphemes.h"
#include "Managers/CorrectionLanguages.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <unicode/locid.h>
#include <unicode/regex.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unordered_map>
#include <vector>

namespace Velloro {

namespace {

using namespace std::string_view_literals;

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
constexpr std::u16string_view blanksBeforePunctuationPattern = uR"([\s]+([,\.!?;:]))";
constexpr std::u16string_view blanksPattern = uR"([\s][\s]+)";

// Characters, as the engine's \w, \b and \s see them.

constexpr std::array<bool, 0x80> asciiWords = [] {
    std::array<bool, 0x80> words{};
    for (char16_t c = 0; c < words.size(); ++c) {
        words[c] = (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9')
            || c == u'_';
    }
    return words;
}();

char16_t asciiLower(char16_t c)
{
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + (u'a' - u'A')) : c;
}

bool isWord(char32_t c)
{
    if (c < 0x80)
        return asciiWords[c];
    return u_hasBinaryProperty(static_cast<UChar32>(c), UCHAR_ALPHABETIC)
        || (U_MASK(u_charType(static_cast<UChar32>(c)))
            & (U_GC_M_MASK | U_GC_ND_MASK | U_GC_PC_MASK))
        != 0
        || c == 0x200C || c == 0x200D;
}

/// Whether the search for a word boundary looks through the character to the one before.
bool isTransparent(char32_t c)
{
    if (c < 0x80)
        return false;
    return u_hasBinaryProperty(static_cast<UChar32>(c), UCHAR_GRAPHEME_EXTEND)
        || u_charType(static_cast<UChar32>(c)) == U_FORMAT_CHAR;
}

/// All white space is in the basic plane, so that a code unit is enough.
bool isBlank(char16_t c)
{
    if (c > u' ' && c < 0x80)
        return false;
    return c == u' ' || (c >= u'\t' && c <= u'\r') || (c >= 0x80 && u_isUWhiteSpace(c));
}

char32_t characterAt(std::u16string_view text, size_t at)
{
    UChar32 c = 0;
    U16_GET(text.data(), 0, at, text.size(), c);
    return static_cast<char32_t>(c);
}

char32_t characterBefore(std::u16string_view text, size_t at)
{
    UChar32 c = 0;
    U16_PREV(text.data(), 0, at, c);
    return static_cast<char32_t>(c);
}

std::u16string_view view(const QString &text)
{
    return {reinterpret_cast<const char16_t *>(text.constData()), static_cast<size_t>(text.size())};
}

/// The full case folding of one character, which is what the engine compares.
class Folding
{
public:
    explicit Folding(char32_t c)
    {
        if (c < 0x80) {
            m_units[0] = asciiLower(static_cast<char16_t>(c));
            m_length = 1;
        } else if (c < frequent) {
            m_units[0] = frequentFoldings()[c];
            m_length = 1;
            if (m_units[0] == 0)
                fold(c);
        } else if ((c >= 0x2E80 && c < 0xA640) || (c >= 0xAC00 && c < 0xE000)) {
            // East Asian scripts and lone surrogates have no case.
            m_units[0] = static_cast<char16_t>(c);
            m_length = 1;
        } else {
            fold(c);
        }
    }

    [[nodiscard]] std::u16string_view units() const { return {m_units.data(), m_length}; }

private:
    /// Latin, Greek and Cyrillic letters end before this one.
    static constexpr char32_t frequent = 0x530;

    void fold(char32_t c)
    {
        char16_t source[U16_MAX_LENGTH];
        int32_t length = 0;
        U16_APPEND_UNSAFE(source, length, c);
        UErrorCode status = U_ZERO_ERROR;
        const int32_t folded = u_strFoldCase(m_units.data(), static_cast<int32_t>(m_units.size()),
                                             source, length, U_FOLD_CASE_DEFAULT, &status);
        m_length = U_SUCCESS(status) ? static_cast<size_t>(folded) : 0;
    }

    /// The foldings that are a single code unit; 0 for the others.
    static const std::array<char16_t, frequent> &frequentFoldings()
    {
        static const std::array<char16_t, frequent> table = [] {
            std::array<char16_t, frequent> made{};
            for (char32_t c = 0x80; c < frequent; ++c) {
                Folding folding(U'a');
                folding.fold(c);
                made[c] = folding.m_length == 1 ? folding.m_units[0] : u'\0';
            }
            return made;
        }();
        return table;
    }

    std::array<char16_t, 8> m_units;
    size_t m_length = 0;
};

std::u16string folded(std::u16string_view text)
{
    std::u16string result;
    for (size_t at = 0; at < text.size();) {
        const char32_t c = characterAt(text, at);
        result += Folding(c).units();
        at += U16_LENGTH(c);
    }
    return result;
}

constexpr size_t none = std::u16string_view::npos;

/// Where a text ends that reads from `at` on as `folding`, or `none`. When that is within the
/// folding of a character, it is the character's end.
size_t endOfFolding(std::u16string_view text, size_t at, std::u16string_view folding)
{
    while (!folding.empty()) {
        if (at == text.size())
            return none;
        if (text[at] < 0x80) {
            if (asciiLower(text[at]) != folding.front())
                return none;
            folding.remove_prefix(1);
            ++at;
            continue;
        }
        const char32_t c = characterAt(text, at);
        const Folding next(c);
        const size_t common = std::min(next.units().size(), folding.size());
        if (next.units().substr(0, common) != folding.substr(0, common))
            return none;
        folding.remove_prefix(common);
        at += U16_LENGTH(c);
    }
    return at;
}

using Pattern = std::unique_ptr<icu::RegexPattern>;

/// Null when it can't be compiled.
Pattern compile(std::u16string_view expression, uint32_t flags)
{
    UErrorCode status = U_ZERO_ERROR;
    Pattern pattern(icu::RegexPattern::compile(
        icu::UnicodeString(expression.data(), static_cast<int32_t>(expression.size())), flags,
        status));
    return U_SUCCESS(status) ? std::move(pattern) : nullptr;
}

/// One filler expression with its three patterns.
struct Filler
{
    explicit Filler(std::u16string_view text)
        : folding(folded(text))
    {
        const std::u16string literal = uR"(\Q)" + std::u16string(text) + uR"(\E)";
        anywhere = compile(uR"(\b)" + literal + uR"(\b[,\s]*)", UREGEX_CASE_INSENSITIVE);
        atStart = compile(uR"(^[\s]*)" + literal + uR"([,\s]+)", UREGEX_CASE_INSENSITIVE);
        atEnd = compile(uR"([,\s]+)" + literal + uR"([\s]*$)", UREGEX_CASE_INSENSITIVE);
    }

    std::u16string folding;
    Pattern anywhere;
    Pattern atStart;
    Pattern atEnd;
};

/// A place in the text where a filler may stand.
struct Occurrence
{
    uint32_t filler;
    size_t position;
};

/// The fillers of a language, and where they may occur in a text.
class FillerSet
{
public:
    explicit FillerSet(std::span<const std::u16string_view> texts)
    {
        for (const std::u16string_view text : texts) {
            m_fillers.emplace_back(text);
            const uint32_t bit = 1U << (m_fillers.size() - 1);
            const std::u16string &folding = m_fillers.back().folding;
            m_byFirstUnit[slot(folding[0])] |= bit;
            if (folding.size() > 1)
                m_bySecondUnit[slot(folding[1])] |= bit;
            else
                std::ranges::for_each(m_bySecondUnit, [&](uint32_t &mask) { mask |= bit; });
        }
    }

    [[nodiscard]] const std::vector<Filler> &fillers() const { return m_fillers; }

    /// Every place at which one of the patterns of a filler can find it, in ascending order, and
    /// few others: where the case-folded text reads as the folded filler, and neither neighbour is
    /// a word character that makes a word boundary impossible (blanks, commas and the ends of the
    /// text, which the patterns for the start and the end ask for, are none).
    void findOccurrences(std::u16string_view text, std::vector<Occurrence> &occurrences) const
    {
        occurrences.clear();
        bool wordBefore = false;
        for (size_t at = 0; at < text.size();) {
            const char16_t unit = text[at];
            if (unit < 0x80) {
                if (!wordBefore)
                    findOccurrencesAt(text, at, asciiLower(unit), occurrences);
                wordBefore = asciiWords[unit];
                ++at;
                continue;
            }
            const char32_t c = characterAt(text, at);
            const bool impossible = wordBefore;
            wordBefore = isWord(c) && !isTransparent(c);
            if (!impossible) {
                const Folding folding(c);
                if (!folding.units().empty())
                    findOccurrencesAt(text, at, folding.units().front(), occurrences);
            }
            at += U16_LENGTH(c);
        }
    }

private:
    /// `first` is the first unit of the folding of the character at `at`.
    void findOccurrencesAt(std::u16string_view text, size_t at, char16_t first,
                           std::vector<Occurrence> &occurrences) const
    {
        uint32_t mask = m_byFirstUnit[slot(first)];
        if (at + 1 < text.size() && text[at] < 0x80 && text[at + 1] < 0x80)
            mask &= m_bySecondUnit[slot(asciiLower(text[at + 1]))];
        for (; mask != 0; mask &= mask - 1) {
            const auto index = static_cast<uint32_t>(std::countr_zero(mask));
            const size_t end = endOfFolding(text, at, m_fillers[index].folding);
            if (end != none && !(end < text.size() && isWord(characterAt(text, end))))
                occurrences.push_back({index, at});
        }
    }

    static size_t slot(char16_t unit) { return unit & 0xFF; }

    std::vector<Filler> m_fillers;
    /// Bit i of an entry: the first code unit of filler i has this low byte.
    std::array<uint32_t, 256> m_byFirstUnit{};
    /// The same for the second one; all bits of a filler that has none.
    std::array<uint32_t, 256> m_bySecondUnit{};
};

const FillerSet &fillerSet(size_t language)
{
    static std::array<std::once_flag, correctionLanguages.size()> once;
    static std::array<std::unique_ptr<const FillerSet>, correctionLanguages.size()> sets;
    std::call_once(once[language], [&] {
        sets[language] = std::make_unique<const FillerSet>(correctionLanguages[language].fillers);
    });
    return *sets[language];
}

/// This thread's matcher of a pattern; null when it can't be had.
icu::RegexMatcher *matcherFor(const Pattern &pattern)
{
    // Patterns live as long as the process and are shared; matchers have state.
    thread_local std::unordered_map<const icu::RegexPattern *, std::unique_ptr<icu::RegexMatcher>>
        matchers;
    if (!pattern)
        return nullptr;
    auto &matcher = matchers[pattern.get()];
    if (!matcher) {
        UErrorCode status = U_ZERO_ERROR;
        matcher.reset(pattern->matcher(status));
        if (U_FAILURE(status))
            matcher.reset();
    }
    return matcher.get();
}

enum class Template { empty, blank, firstGroup };

/// Replaces all matches from left to right, as the engine's own search would find them.
///
/// The engine would try every position; here it tries those that `nextStart(from)` yields: the
/// first position at or after `from` at which a match can start, or `none`. Where it can't run, the
/// text stays as it is. Returns whether anything was replaced.
template <typename NextStart>
bool replaceAll(QString &text, const Pattern &pattern, Template replacement, NextStart nextStart)
{
    size_t start = nextStart(size_t{0});
    if (start == none)
        return false;
    icu::RegexMatcher *matcher = matcherFor(pattern);
    if (!matcher)
        return false;
    const icu::UnicodeString input(false, view(text).data(), static_cast<int32_t>(text.size()));
    matcher->reset(input);

    QString result;
    result.reserve(text.size());
    qsizetype copied = 0;
    UErrorCode status = U_ZERO_ERROR;
    while (start != none) {
        if (!matcher->lookingAt(static_cast<int64_t>(start), status)) {
            if (U_FAILURE(status))
                return false;
            start = nextStart(start + 1);
            continue;
        }
        const qsizetype end = matcher->end(status);
        result += QStringView(text).mid(copied, static_cast<qsizetype>(start) - copied);
        if (replacement == Template::blank) {
            result += u' ';
        } else if (replacement == Template::firstGroup) {
            const qsizetype group = matcher->start(1, status);
            result += QStringView(text).mid(group, matcher->end(1, status) - group);
        }
        copied = end;
        start = nextStart(static_cast<size_t>(end));
    }
    if (U_FAILURE(status) || copied == 0)
        return false;
    result += QStringView(text).mid(copied);
    text = result;
    return true;
}

void removeStartingWith(QString &text, QChar first, const Pattern &pattern)
{
    // -1, the answer for "nowhere", is `none`.
    replaceAll(text, pattern, Template::empty, [&](size_t from) {
        return static_cast<size_t>(text.indexOf(first, static_cast<qsizetype>(from)));
    });
}

void removeFillers(QString &text, const FillerSet &set)
{
    thread_local std::vector<Occurrence> occurrences;
    const auto search = [&] { set.findOccurrences(view(text), occurrences); };
    search();
    for (uint32_t index = 0; index < set.fillers().size() && !occurrences.empty(); ++index) {
        const Filler &filler = set.fillers()[index];
        const auto isOfFiller = [&](const Occurrence &each) { return each.filler == index; };
        const auto occurs = [&] { return std::ranges::any_of(occurrences, isOfFiller); };

        if (!occurs())
            continue;
        auto next = occurrences.cbegin();
        const auto nextOccurrence = [&](size_t from) {
            next = std::find_if(next, occurrences.cend(), [&](const Occurrence &each) {
                return isOfFiller(each) && each.position >= from;
            });
            return next == occurrences.cend() ? none : next->position;
        };
        if (replaceAll(text, filler.anywhere, Template::blank, nextOccurrence))
            search();

        if (!occurs())
            continue;
        const auto startOfText = [](size_t from) { return from == 0 ? from : none; };
        if (replaceAll(text, filler.atStart, Template::blank, startOfText))
            search();

        if (!occurs())
            continue;
        // A filler at the end is the last one; the match starts with the commas and blanks before.
        const auto last = std::find_if(occurrences.crbegin(), occurrences.crend(), isOfFiller);
        size_t blanks = last->position;
        while (blanks > 0 && (text[blanks - 1] == u',' || isBlank(text[blanks - 1].unicode())))
            --blanks;
        const auto blanksBeforeLast = [&](size_t from) { return from <= blanks ? blanks : none; };
        if (replaceAll(text, filler.atEnd, Template::blank, blanksBeforeLast))
            search();
    }
}

/// False when `text` certainly does not start with `word`, case ignored.
bool mayRepeat(std::u16string_view word, std::u16string_view text)
{
    for (size_t at = 0; at < word.size(); ++at) {
        if (at == text.size())
            return false;
        if (word[at] >= 0x80 || text[at] >= 0x80) {
            // From here on the two may fold to different lengths; the first units have to agree.
            const Folding left(characterAt(word, at));
            const Folding right(characterAt(text, at));
            return left.units().substr(0, 1) == right.units().substr(0, 1);
        }
        if (asciiLower(word[at]) != asciiLower(text[at]))
            return false;
    }
    return true;
}

/// The first position at or after `from` at which a word starts that may be followed by itself.
size_t nextRepetition(std::u16string_view text, size_t from)
{
    size_t at = from;
    if (at > 0 && at < text.size() && U16_IS_TRAIL(text[at]) && U16_IS_LEAD(text[at - 1]))
        ++at;
    while (at < text.size()) {
        if (text[at] < 0x80 && !asciiWords[text[at]]) {
            ++at;
            continue;
        }
        const char32_t c = characterAt(text, at);
        if (!isWord(c)) {
            at += U16_LENGTH(c);
            continue;
        }
        // A run of word characters holds at most one place where a match can start: the first
        // character that is not transparent, if no word character stands before it.
        size_t before = at;
        bool wordBefore = false;
        while (before > 0) {
            if (text[before - 1] < 0x80) {
                wordBefore = asciiWords[text[before - 1]];
                break;
            }
            const char32_t previous = characterBefore(text, before);
            if (!isTransparent(previous)) {
                wordBefore = isWord(previous);
                break;
            }
            before -= U16_LENGTH(previous);
        }
        size_t start = none;
        size_t end = at;
        while (end < text.size()) {
            if (text[end] < 0x80) {
                if (!asciiWords[text[end]])
                    break;
                start = std::min(start, end++);
                continue;
            }
            const char32_t each = characterAt(text, end);
            if (!isWord(each))
                break;
            if (start == none && !isTransparent(each))
                start = end;
            end += U16_LENGTH(each);
        }
        size_t second = end;
        while (second < text.size() && isBlank(text[second]))
            ++second;
        if (start != none && !wordBefore && second > end
            && mayRepeat(text.substr(start, end - start), text.substr(second)))
            return start;
        at = second > end ? second : end;
    }
    return none;
}

/// The first position at or after `from` at which a run of blanks starts for which `isWanted`,
/// asked with the run's start and end, is true. A match of blanks that does not succeed at the
/// start of a run does not succeed later in it either.
template <typename Predicate>
size_t nextBlanks(std::u16string_view text, size_t from, Predicate isWanted)
{
    for (size_t at = from; at < text.size(); ++at) {
        if (!isBlank(text[at]))
            continue;
        size_t end = at + 1;
        while (end < text.size() && isBlank(text[end]))
            ++end;
        if ((at == 0 || !isBlank(text[at - 1])) && isWanted(at, end))
            return at;
        at = end;
    }
    return none;
}

void capitalize(QString &text)
{
    const QString first = Graphemes::prefix(text, 1);
    const icu::UnicodeString character(first.utf16(), static_cast<int32_t>(first.size()));
    const icu::Locale &root = icu::Locale::getRoot();
    const icu::UnicodeString upper = icu::UnicodeString(character).toUpper(root);
    if (upper == character || icu::UnicodeString(character).toLower(root) != character)
        return;
    text.replace(0, first.size(),
                 QString(reinterpret_cast<const QChar *>(upper.getBuffer()), upper.length()));
}

void applyPatterns(QString &text, const FillerSet &fillers)
{
    static const Pattern soundTag = compile(soundTagPattern, UREGEX_CASE_INSENSITIVE);
    static const Pattern stageDirection = compile(stageDirectionPattern, UREGEX_CASE_INSENSITIVE);
    static const Pattern repetition = compile(repetitionPattern, UREGEX_CASE_INSENSITIVE);
    static const Pattern blanksBeforePunctuation = compile(blanksBeforePunctuationPattern, 0);
    static const Pattern blanks = compile(blanksPattern, 0);

    removeStartingWith(text, u'[', soundTag);
    removeStartingWith(text, u'*', stageDirection);
    removeFillers(text, fillers);
    replaceAll(text, repetition, Template::firstGroup,
               [&](size_t from) { return nextRepetition(view(text), from); });
    replaceAll(text, blanksBeforePunctuation, Template::firstGroup, [&](size_t from) {
        return nextBlanks(view(text), from, [&](size_t, size_t end) {
            return end < view(text).size() && u",.!?;:"sv.find(view(text)[end]) != none;
        });
    });
    replaceAll(text, blanks, Template::blank, [&](size_t from) {
        return nextBlanks(view(text), from,
                          [](size_t start, size_t end) { return end - start > 1; });
    });
}

} // namespace

QString TextCorrector::correct(const QString &text, const QString &language)
{
    const auto known
        = std::ranges::find(correctionLanguages, view(language), &CorrectionLanguage::code);
    const size_t fillers = known == correctionLanguages.end()
        ? 0
        : static_cast<size_t>(known - correctionLanguages.begin());

    QString corrected = text;
    // The engine counts code units in 32 bits.
    if (corrected.size() < std::numeric_limits<int32_t>::max())
        applyPatterns(corrected, fillerSet(fillers));
    corrected = corrected.trimmed();
    if (known != correctionLanguages.end() && known->capitalizes && !corrected.isEmpty())
        capitalize(corrected);
    return corrected;
}

} // namespace Velloro

#include "Managers/TextCorrector.h"

#include "Base/StringLiterals.h"

#include <QStringList>
#include <benchmark/benchmark.h>
#include <unicode/regex.h>

namespace {

/// A dictation of 200 words with the hesitations of a real one.
const QString &transcript()
{
    static const QString text = [] {
        const QString sentence
            = u"[BLANK_AUDIO] Um, so I wanted to write down the the main points of this morning's "
              "meeting before I forget them. The other team has finished their part, you know, and "
              "they hope to see ours next week . We should, uh, probably start with the summary, "
              "because everybody will read that first, and then go on "_s;
        QStringList words;
        while (words.size() < 200)
            words += sentence.split(u' ', Qt::SkipEmptyParts);
        return words.first(200).join(u' ');
    }();
    return text;
}

void correct(benchmark::State &state)
{
    const QString language = u"en"_s;
    for ([[maybe_unused]] auto iteration : state)
        benchmark::DoNotOptimize(Velloro::TextCorrector::correct(transcript(), language));
}

/// What it would cost to compile the English patterns at every call and to scan with each.
void compileAtEachCall(benchmark::State &state)
{
    static const char16_t *const fillers[] = {
        u"um",        u"uh",       u"eh",       u"ah",        u"er",       u"uhm",    u"umm",
        u"uhh",       u"hmm",      u"hm",       u"mm",        u"mmm",      u"like",   u"basically",
        u"literally", u"actually", u"honestly", u"obviously", u"you know", u"i mean", u"kind of",
        u"sort of",   u"right",    u"okay so",  u"so yeah",
    };
    for ([[maybe_unused]] auto iteration : state) {
        icu::UnicodeString text(transcript().utf16(), static_cast<int32_t>(transcript().size()));
        const auto replace = [&](const icu::UnicodeString &pattern, const char16_t *replacement) {
            UErrorCode status = U_ZERO_ERROR;
            icu::RegexMatcher matcher(pattern, UREGEX_CASE_INSENSITIVE, status);
            matcher.reset(text);
            const icu::UnicodeString replaced = matcher.replaceAll(replacement, status);
            text = replaced;
        };
        replace(uR"(\[(?:Music|Applause|Laughter|BLANK_AUDIO|inaudible|silence|cough|sneeze|noise)"
                uR"(|phone ringing|background noise|muzyka|applaus|śmiech|beifall|risas|rires)"
                uR"(|risate|risos|смех|音楽|拍手|\w+)\])",
                u"");
        replace(uR"(\*(?:stutters?|laughs?|laughing|coughs?|coughing|sneezes?|sneezing|sighs?)"
                uR"(|sighing|clears throat|breaths?|breathing|pauses?|pausing|inaudible|silence)"
                uR"(|hesitates?|hesitating|mumbles?|mumbling|whispers?|whispering|chuckles?)"
                uR"(|chuckling|giggles?|giggling)\*)",
                u"");
        for (const char16_t *filler : fillers) {
            const icu::UnicodeString literal(filler);
            replace(icu::UnicodeString(uR"(\b)") + literal + uR"(\b[,\s]*)", u" ");
            replace(icu::UnicodeString(uR"(^\s*)") + literal + uR"([,\s]+)", u" ");
            replace(icu::UnicodeString(uR"([,\s]+)") + literal + uR"(\s*$)", u" ");
        }
        replace(uR"(\b(\w+)\s+\1\b)", u"$1");
        replace(uR"(\s+([,\.!?;:]))", u"$1");
        replace(uR"(\s{2,})", u" ");
        benchmark::DoNotOptimize(text.length());
    }
}

BENCHMARK(correct);
BENCHMARK(compileAtEachCall);

} // namespace

BENCHMARK_MAIN();

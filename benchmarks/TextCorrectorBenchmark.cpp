#include "Managers/TextCorrector.h"

#include "Base/StringLiterals.h"

#include <QStringList>
#include <benchmark/benchmark.h>

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

BENCHMARK(correct);

} // namespace

BENCHMARK_MAIN();

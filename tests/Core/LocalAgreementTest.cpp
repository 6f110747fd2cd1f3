#include "Core/Recognition/LocalAgreement.h"

#include "Base/StringLiterals.h"
#include "Support/RandomSpeech.h"

#include <gtest/gtest.h>
#include <vector>

namespace Velloro {
namespace {

TEST(LocalAgreementTest, ConfirmsWordByWordWhatTwoPassesAgreeOn)
{
    struct Case
    {
        const char *what;
        std::vector<const char *> passes;
        const char *confirmed;
        const char *uncommitted;
    };
    const Case cases[] = {
        {"nothing heard", {""}, "", ""},
        {"one pass confirms nothing", {"Hello world this"}, "", "Hello world this"},
        {"what follows a difference waits",
         {"Hello world this", "hello world, this is"},
         "hello",
         "world, this is"},
        {"the rest is confirmed later",
         {"Hello world this", "hello world, this is", "Hello world, this is a test"},
         "hello world, this is",
         "a test"},
        {"case differs, also beyond ASCII", {"The ÉTÉ", "the été"}, "the été", ""},
        {"comma differs", {"world", "world,"}, "", "world,"},
        {"accent differs", {"cafe", "café"}, "", "café"},
        {"width differs", {"２", "2"}, "", "2"},
        {"first form stays", {"Go", "go now", "GO NOW please"}, "go NOW", "please"},
        {"fewer words than confirmed", {"a b c", "a b c", "z"}, "a b c", ""},
        {"confirmed words are not compared with", {"a", "a", "z b", "z b"}, "a b", ""},
        {"silence between", {"a b", "", "a b"}, "", "a b"},
    };
    for (const Case &item : cases) {
        SCOPED_TRACE(item.what);
        LocalAgreement agreement;
        for (const char *pass : item.passes)
            agreement.addPass(LocalAgreement::words(QString::fromUtf8(pass)));
        EXPECT_EQ(agreement.confirmedWords().join(u' '), QString::fromUtf8(item.confirmed));
        EXPECT_EQ(agreement.uncommittedWords().join(u' '), QString::fromUtf8(item.uncommitted));
    }
}

TEST(LocalAgreementTest, SplitsAtSpacesOfAnyWidthAndTabs)
{
    EXPECT_EQ(LocalAgreement::words(u"\u00a0a\u00a0b\tc\u2003d\u3000e  f\u202f"_s),
              QStringList({u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s, u"f"_s}));
    // A line break in the middle is part of a word.
    EXPECT_EQ(LocalAgreement::words(u"\n a\nb \r\n"_s), QStringList(u"a\nb"_s));
    EXPECT_EQ(LocalAgreement::words(u" \t\n"_s), QStringList());
}

TEST(LocalAgreementTest, ConfirmedWordsStay)
{
    qsizetype confirmed = 0;
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        RandomSpeech speech(seed);
        LocalAgreement agreement;
        for (int pass = 0; pass < 12; ++pass) {
            const QStringList before = agreement.confirmedWords();
            agreement.addPass(LocalAgreement::words(QString::fromUtf8(speech.nextPass())));
            EXPECT_EQ(agreement.confirmedWords().mid(0, before.size()), before);
        }
        confirmed += agreement.confirmedWords().size();
    }
    EXPECT_GT(confirmed, 40);
}

} // namespace
} // namespace Velloro

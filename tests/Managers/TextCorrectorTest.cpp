#include "Managers/TextCorrector.h"

#include "Base/StringLiterals.h"

#include <gtest/gtest.h>
#include <thread>
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

TEST(TextCorrector, removesTagsAndStageDirections)
{
    expectCorrected({
        {u"en", u"[LAUGHTER] [two words] [phone ringing] ok", u"[two words] ok"},
        {u"en", u"[Music] [music_2] [音楽] [смех] [background noise]", u""},
        {u"en", u"a [x] b [] [a-b] [background  noise] [x", u"A b [] [a-b] [background noise] [x"},
        {u"en", u"*laughs* That's great.", u"That's great."},
        {u"en", u"*Sigh* *SIGHS* *clears throat* x *clear throat*", u"X *clear throat*"},
        {u"en", u"c *dances* * laughs * **coughs**", u"C *dances* * laughs * **"},
    });
}

TEST(TextCorrector, removesFillers)
{
    expectCorrected({
        {u"en", u"um, uh", u""},
        {u"en", u"I like it", u"I it"},
        {u"en", u"Well, like, you know, it works", u"Well, it works"},
        {u"en", u"it's, You Know , fine", u"It's, fine"},
        // At the start and at the end of the text.
        {u"en", u"  Um hello", u"Hello"},
        {u"en", u"  ,um, hello", u", hello"},
        {u"en", u"hello ,, UM  ", u"Hello,,"},
        {u"en", u"Turn right.", u"Turn."},
        {u"en", u"Hmm. umbrella", u". umbrella"},
        // Only whole words, with the blanks between them as they are written.
        {u"en", u"umbrella, album um-um", u"Umbrella, album -"},
        {u"en", u"you, know you  know", u"You, know you know"},
        // Each leaves a blank, not only where it stood in front of one.
        {u"en", u"you um, know that", u"You know that"},
        {u"en", u"you ummknow", u"You ummknow"},
        // In the order of the table.
        {u"en", u"okay so yeah", u"Yeah"},
        {u"pl", u"no i wiesz co", u"I co"},
        {u"pl", u"no nie wiesz", u"Nie"},
        // Case is ignored as Unicode folds it: with marks, and with one letter for two.
        {u"pl", u"WŁAŚCIWIE, NO WIESZ co", u"Co"},
        {u"en", u"\u212Aind of ob\u017Fervation", u"Ob\u017Fervation"},
        {u"de", u"WEISST DU, du weißt schon, ja", u"Ja"},
        // Marks belong to the letter before them.
        {u"en", u"um\u0301 um\u200D um\u00AD x", u"Um\u0301 um\u200D um\u00AD x"},
    });
}

TEST(TextCorrector, removesImmediateRepetitions)
{
    expectCorrected({
        {u"en", u"The the cat", u"The cat"},
        {u"en", u"I I I think", u"I I think"},
        {u"en", u"over overt, then\nTHEN", u"Over overt, then"},
        {u"en", u"a a_a a a1", u"A a_a a a1"},
        {u"en", u"two, two two-two", u"Two, two-two"},
        {u"de", u"straße STRASSE über ÜBER", u"Straße über"},
        {u"en", u"a\u00ADb b a\u00AD a\u00AD", u"A\u00ADb b a\u00AD a\u00AD"},
        {u"ru", u"это  Это так", u"Это так"},
    });
}

TEST(TextCorrector, tidiesBlanks)
{
    expectCorrected({
        {u"en", u"Hello , world !", u"Hello, world!"},
        {u"en", u"a ;b :c ?d\n.", u"A;b:c?d."},
        {u"en", u"(hello ) 東京 。 x", u"(hello ) 東京 。 x"},
        {u"en", u"a\u00A0\u2003b\tc \u3002 )", u"A b\tc \u3002 )"},
        {u"en", u"one\n\ntwo\nthree", u"One two\nthree"},
        {u"en", u" \u2029\n", u""},
        {u"en", u"", u""},
    });
}

TEST(TextCorrector, capitalizesTheFirstLetter)
{
    expectCorrected({
        {u"de", u"ß", u"SS"},
        {u"en", u"e\u0301 x", u"E\u0301 x"},
        {u"en", u"ǆ", u"Ǆ"},
        {u"en", u"ǅ", u"ǅ"},
        {u"en", u"3rd. next", u"3rd. next"},
        {u"fr", u"\"été\"", u"\"été\""},
        {u"pl", u"żółw. idzie", u"Żółw. idzie"},
        {u"ja", u"abc", u"abc"},
        {u"zh", u"abc", u"abc"},
    });
}

TEST(TextCorrector, takesTextsOfAnyLength)
{
    constexpr qsizetype length = 1 << 20;
    const auto repeated
        = [](const QString &piece) { return piece.repeated(length / piece.size()); };
    const QString blanks = repeated(u" "_s);
    const QString word = repeated(u"x"_s);
    const QString marks = repeated(u"a\u0301"_s);

    // Steps that are quadratic in the length would not end.
    EXPECT_EQ(correct(blanks, u"en"), QString());
    EXPECT_EQ(correct(u'a' + blanks + u'b', u"en"), u"A b"_s);
    EXPECT_EQ(correct(u'a' + blanks + u".um"_s + blanks + u"um"_s, u"en"), u"A."_s);
    EXPECT_EQ(correct(u"a "_s + word + blanks + u"b"_s, u"ja"), u"a "_s + word + u" b"_s);
    EXPECT_EQ(correct(word + u' ' + word, u"ja"), word);
    EXPECT_EQ(correct(u'[' + word + u']', u"ja"), QString());
    EXPECT_EQ(correct(marks + u"  "_s + marks, u"ja"), marks);
    EXPECT_EQ(correct(repeated(u"["_s), u"ja"), repeated(u"["_s));
    EXPECT_EQ(correct(repeated(u"um, "_s), u"en"), QString());
    EXPECT_EQ(correct(repeated(QString(QChar(0xDFFF))), u"en"), repeated(QString(QChar(0xDFFF))));
    EXPECT_EQ(correct(repeated(u"\u00AD"_s), u"ja"), repeated(u"\u00AD"_s));
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

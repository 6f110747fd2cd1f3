#include "Platform/Linux/Wayland/Clipboard/WaylandPasteboard.h"

#include "Base/StringLiterals.h"
#include "Platform/OtherWaylandProgram.h"
#include "Support/SwayCompositor.h"
#include "Support/WaitUntil.h"

#include <QElapsedTimer>
#include <csignal>
#include <gmock/gmock.h>

namespace Velloro {
namespace {

using testing::Contains;
using testing::IsEmpty;

/// Milliseconds: far more than anything here takes.
constexpr qint64 hangGuard = 8'000;

const QStringList ofPrimary{u"--primary"_s};

/// What another program gets, as text unless the arguments say otherwise.
QByteArray paste(const QStringList &arguments = {})
{
    return SwayCompositor::run(u"wl-paste"_s, QStringList{u"--no-newline"_s} + arguments);
}

class WaylandPasteboardTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (const auto missing = SwayCompositor::missing({u"wl-paste"_s}); !missing.isEmpty())
            GTEST_SKIP() << missing.join(u", "_s).toStdString() << " not installed";
        // The program does the same.
        std::signal(SIGPIPE, SIG_IGN);
        ASSERT_TRUE(sway.start());
        pasteboard = std::make_unique<WaylandPasteboard>(std::make_shared<PasteCoordinator>());
        program = std::make_unique<OtherWaylandProgram>();
    }
    void TearDown() override
    {
        program.reset();
        pasteboard.reset();
    }
    [[nodiscard]] bool beginPaste() { return pasteboard->beginPaste({.window = 1}); }

    SwayCompositor sway;
    std::unique_ptr<WaylandPasteboard> pasteboard;
    std::unique_ptr<OtherWaylandProgram> program;
};

TEST_F(WaylandPasteboardTest, carriesTextToOtherPrograms)
{
    const QString texts[] = {
        u"Zażółć gęślą jaźń, 你好 👩‍👩‍👧\n\tsecond line\r\n"_s,
        // More than fits into a pipe.
        u"łąka "_s.repeated(5 * 1024 * 1024 / 7),
    };
    for (const QString &text : texts) {
        pasteboard->setString(text);
        EXPECT_TRUE(paste() == text.toUtf8());
    }
    const auto types = paste({u"--list-types"_s}).split('\n');
    for (const char *type : {"text/plain;charset=utf-8", "text/plain", "UTF8_STRING"})
        EXPECT_THAT(types, Contains(QByteArray(type)));
}

TEST_F(WaylandPasteboardTest, givesBackEveryFormThatTheUserHadCopied)
{
    const MimeContent copied{{
        {"text/html", "<b>picture</b>"},
        {"text/plain;charset=utf-8", "picture"},
        {"image/png", "\x89PNG" + QByteArray(5 * 1024 * 1024, '\0')},
        {"x-special/gnome-copied-files", "copy\nfile:///a%20b"},
        {"application/x-empty", ""},
    }};
    program->own(copied);
    const QByteArray types = paste({u"--list-types"_s});
    for (const bool isFollowed : {true, false}) {
        SCOPED_TRACE(isFollowed);
        if (isFollowed)
            pasteboard->follow();
        pasteboard->borrow(u"words"_s);
        EXPECT_EQ(paste(), "words");
        EXPECT_EQ(paste({u"--type"_s, u"x-kde-passwordManagerHint"_s}), "secret");
        // Once more: what was there before the first time counts.
        pasteboard->borrow(u"more words"_s);
        EXPECT_EQ(paste(), "more words");
        pasteboard->giveBack();
        pasteboard->unfollow();
        EXPECT_TRUE(waitUntil([&] { return paste() == "picture"; }));
        EXPECT_TRUE(program->read() == copied.forms);
        EXPECT_EQ(paste({u"--list-types"_s}), types) << "in its owner's order";
    }
}

TEST_F(WaylandPasteboardTest, followsWhatTheUserCopiesMeanwhile)
{
    pasteboard->follow();
    for (const int fetches : {1, 2}) {
        program->own({{{"text/plain", "copied " + QByteArray::number(fetches)}}});
        ASSERT_TRUE(waitUntil([&] { return program->fetches() == fetches; }));
    }
    // What has been read does not end with its owner.
    program.reset();
    pasteboard->borrow(u"words"_s);
    pasteboard->giveBack();
    EXPECT_TRUE(waitUntil([&] { return paste() == "copied 2"; }));
}

TEST_F(WaylandPasteboardTest, putsNothingBackOverWhatAnotherProgramHasTaken)
{
    program->own(MimeContent::ofText(u"before"_s));
    pasteboard->borrow(u"words"_s);
    program->own(MimeContent::ofText(u"meanwhile"_s));
    pasteboard->giveBack();
    // Everything that was told before this has been done when it is there.
    pasteboard->follow();
    pasteboard->lendToPrimarySelection();
    EXPECT_EQ(paste(), "meanwhile");
}

TEST_F(WaylandPasteboardTest, keepsTheTextWhereNothingWasBefore)
{
    pasteboard->borrow(u"words"_s);
    pasteboard->giveBack();
    (void)pasteboard->awaitPaste();
    EXPECT_EQ(paste(), "words");
}

TEST_F(WaylandPasteboardTest, waitsForABusyOwnerOnlySoLongAndGivesBackWhatItStillSends)
{
    const MimeContent copied{{{"text/plain", "slow"}, {"image/png", "picture"}}};
    program->own(copied);
    program->hangAt("text/plain");
    QElapsedTimer clock;
    clock.start();
    pasteboard->borrow(u"words"_s);
    EXPECT_LT(clock.elapsed(), hangGuard);
    program->awaitHanging();
    EXPECT_EQ(paste(), "words");
    pasteboard->giveBack();
    program->goOn();
    EXPECT_TRUE(waitUntil([&] { return paste() == "slow"; }));
    EXPECT_TRUE(program->read() == copied.forms);
}

TEST_F(WaylandPasteboardTest, knowsWhetherTheTextWasFetched)
{
    program->own(MimeContent::ofText(u"before"_s));
    pasteboard->borrow(u"words"_s);
    // Before the stroke it says nothing.
    EXPECT_EQ(paste(), "words");
    EXPECT_FALSE(pasteboard->awaitPaste());
    ASSERT_TRUE(beginPaste());
    // What is not the text is fetched by somebody else.
    EXPECT_EQ(paste({u"--type"_s, u"x-kde-passwordManagerHint"_s}), "secret");
    QElapsedTimer clock;
    clock.start();
    EXPECT_FALSE(pasteboard->awaitPaste());
    EXPECT_LT(clock.elapsed(), hangGuard);

    ASSERT_TRUE(beginPaste());
    // It stays until it is fetched.
    pasteboard->giveBack();
    EXPECT_EQ(paste(), "words");
    EXPECT_TRUE(pasteboard->awaitPaste());
    EXPECT_TRUE(waitUntil([&] { return paste() == "before"; }));
}

TEST_F(WaylandPasteboardTest, takesTheTextBackBeforeThePasteAndSendsNoneThatIsContested)
{
    pasteboard->borrow(u"words"_s);
    program->own(MimeContent::ofText(u"meanwhile"_s));
    EXPECT_TRUE(beginPaste());
    EXPECT_FALSE(pasteboard->wasPasteRefused());
    EXPECT_EQ(paste(), "words");
    pasteboard->giveBack();
    EXPECT_TRUE(waitUntil([&] { return paste() == "meanwhile"; }));

    pasteboard->borrow(u"words"_s);
    // As a clipboard manager takes it over.
    program->own(MimeContent::ofText(u"words"_s));
    EXPECT_TRUE(beginPaste());

    pasteboard->borrow(u"words"_s);
    program->insistOn(MimeContent::ofText(u"mine"_s));
    EXPECT_FALSE(beginPaste());
    EXPECT_TRUE(pasteboard->wasPasteRefused());
}

TEST_F(WaylandPasteboardTest, lendsThePrimarySelectionAsWell)
{
    OtherWaylandProgram selecting(DataControl::Selection::primary);
    selecting.own(MimeContent::ofText(u"selected"_s));
    pasteboard->borrow(u"words"_s);
    EXPECT_EQ(paste(ofPrimary), "selected");
    pasteboard->lendToPrimarySelection();
    EXPECT_EQ(paste(ofPrimary), "words");
    ASSERT_TRUE(beginPaste());
    pasteboard->giveBack();
    EXPECT_EQ(paste(ofPrimary), "words");
    EXPECT_TRUE(waitUntil([&] { return paste(ofPrimary) == "selected"; }));
}

TEST_F(WaylandPasteboardTest, livesWithoutACompositor)
{
    pasteboard->borrow(u"words"_s);
    sway.kill();
    pasteboard->setString(u"text"_s);
    pasteboard->borrow(u"words"_s);
    pasteboard->giveBack();
    EXPECT_FALSE(pasteboard->awaitPaste());

    WaylandPasteboard nowhere(std::make_shared<PasteCoordinator>(), "/nonexistent");
    nowhere.borrow(u"words"_s);
    EXPECT_FALSE(nowhere.awaitPaste());
}

} // namespace
} // namespace Velloro

#include "Platform/Linux/X11/Clipboard/X11Pasteboard.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/X11/Clipboard/X11Selections.h"
#include "Platform/Linux/X11/XcbReply.h"
#include "Platform/OtherProgram.h"
#include "Support/WaitUntil.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QWindow>
#include <gmock/gmock.h>
#include <thread>

namespace Velloro {
namespace {

using testing::Contains;

/// Another program that owns a selection until it loses it, or ends.
class Owner : public QProcess
{
public:
    Owner(const QByteArray &content, const QString &selection, const QString &program = u"xclip"_s)
    {
        start(program,
              {u"-quiet"_s, u"-in"_s, u"-selection"_s, selection, u"-target"_s, u"UTF8_STRING"_s});
        write(content);
        closeWriteChannel();
    }
    ~Owner() override
    {
        kill();
        waitForFinished();
    }
};

/// What another program gets; nothing when it is refused.
std::optional<QByteArray> paste(const QString &selection, const QString &target = u"UTF8_STRING"_s,
                                const QString &program = u"xclip"_s)
{
    QProcess reader;
    reader.start(program, {u"-out"_s, u"-selection"_s, selection, u"-target"_s, target});
    if (!reader.waitForFinished() || reader.exitCode() != 0)
        return std::nullopt;
    return reader.readAllStandardOutput();
}

const QString clipboard = u"clipboard"_s;
const QString primary = u"primary"_s;

/// Milliseconds: far more than anything here takes. What waits for longer than it has to is done so
/// often that it takes longer.
constexpr qint64 hangGuard = 8'000;
constexpr int often = 10;

class X11PasteboardTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!X11Connection::open())
            GTEST_SKIP() << "there is no X server";
        if (QProcess::execute(u"xclip"_s, {u"-version"_s}) != 0)
            GTEST_SKIP() << "xclip is not installed";
        pasteboard = std::make_unique<X11Pasteboard>(std::make_shared<PasteCoordinator>());
        program = std::make_unique<OtherProgram>();
    }
    static bool clipboardBecomes(const QByteArray &text)
    {
        return waitUntil([&] { return paste(clipboard) == text; });
    }

    std::unique_ptr<X11Pasteboard> pasteboard;
    std::unique_ptr<OtherProgram> program;
};

TEST_F(X11PasteboardTest, carriesTextToOtherPrograms)
{
    const QString texts[] = {
        u"Zażółć gęślą jaźń, 你好 👩‍👩‍👧\n\tsecond line\r\n"_s,
        // More than the server takes in one request.
        u"łąka "_s.repeated(5 * 1024 * 1024 / 7),
    };
    for (const QString &text : texts) {
        pasteboard->setString(text);
        EXPECT_TRUE(paste(clipboard) == text.toUtf8());
    }
    pasteboard->setString(u"café"_s);
    for (const auto &target : {u"UTF8_STRING"_s, u"text/plain;charset=utf-8"_s, u"text/plain"_s})
        EXPECT_EQ(paste(clipboard, target), "caf\xc3\xa9") << target.toStdString();
    for (const auto &target : {u"STRING"_s, u"TEXT"_s})
        EXPECT_EQ(paste(clipboard, target), "caf\xe9") << target.toStdString();
    EXPECT_EQ(paste(clipboard, u"image/png"_s), std::nullopt);
    const auto targets = paste(clipboard, u"TARGETS"_s).value_or(QByteArray()).split('\n');
    for (const char *target : {"TARGETS", "TIMESTAMP", "MULTIPLE", "UTF8_STRING", "STRING", "TEXT"})
        EXPECT_THAT(targets, Contains(QByteArray(target)));
    pasteboard->setString(QString());
    EXPECT_EQ(paste(clipboard), QByteArray());
}

TEST_F(X11PasteboardTest, givesBackEveryFormThatTheUserHadCopied)
{
    SelectionContent copied = program->text(u"picture"_s);
    copied.forms.insert(copied.forms.begin(),
                        program->form("text/html", "text/html", 8, "<b>picture</b>"));
    copied.forms.push_back(
        program->form("image/png", "image/png", 8, "\x89PNG" + QByteArray(5 * 1024 * 1024, '\0')));
    copied.forms.push_back(program->form("x-special/gnome-copied-files",
                                         "x-special/gnome-copied-files", 8, "copy\nfile:///a%20b"));
    copied.forms.push_back(program->form("NUMBERS", "INTEGER", 32, QByteArray(300'000, 'n')));
    SelectionContent offered = copied;
    // What can't be handed on: an action, and what ends with its owner.
    offered.forms.insert(
        offered.forms.begin() + 1,
        {program->form("DELETE", "NULL", 8, {}),
         program->form("PIXMAP", "PIXMAP", 32, QByteArray(4, 'x')),
         program->form("too large", "data", 8, QByteArray(65 * 1024 * 1024, 'x'))});
    program->own(offered);

    pasteboard->follow();
    ASSERT_TRUE(waitUntil([&] { return program->hasGiven("NUMBERS"); }));
    EXPECT_FALSE(program->hasGiven("DELETE"));
    pasteboard->borrow(u"dictated"_s);
    EXPECT_EQ(paste(clipboard), "dictated");
    EXPECT_EQ(paste(clipboard, u"text/html"_s), std::nullopt);
    // The sign to clipboard histories.
    EXPECT_EQ(paste(clipboard, u"x-kde-passwordManagerHint"_s), "secret");

    pasteboard->giveBack();
    ASSERT_TRUE(clipboardBecomes("picture"));
    EXPECT_TRUE(program->read() == copied.forms);
    EXPECT_TRUE(paste(clipboard, u"image/png"_s) == copied.form(program->atom("image/png"))->data);
}

TEST_F(X11PasteboardTest, aBusyOwnerLosesNothing)
{
    const auto form = [&](const char *target, const QByteArray &data) {
        return program->form(target, target, 8, data);
    };
    const SelectionContent copied{{form("text/html", "<i>copied</i>"), form("image/png", "\x89PNG"),
                                   form("STRING", "copied"), form("text/uri-list", "file:///a"),
                                   form("UTF8_STRING", "copied")}};
    // Busy since the recording started, since the reading was half done, and only then.
    for (const char *hangsAt : {"TARGETS", "image/png", ""}) {
        SCOPED_TRACE(hangsAt);
        SelectionContent offered = copied;
        // Not asked for before the paste, and not of us after it.
        if (hangsAt == QByteArray("TARGETS"))
            offered.forms.push_back(form("text/plain", "copied"));
        program->own(offered);
        if (*hangsAt) {
            program->hangAt(hangsAt);
            pasteboard->follow();
            program->awaitHanging();
        } else {
            pasteboard->follow();
            ASSERT_TRUE(waitUntil([&] { return program->hasGiven("text/uri-list"); }));
            program->hang();
        }
        pasteboard->borrow(u"dictated"_s);
        EXPECT_EQ(paste(clipboard), "dictated");
        pasteboard->borrow(u"more"_s);
        pasteboard->giveBack();
        EXPECT_TRUE(clipboardBecomes(*hangsAt ? "more" : "copied"));
        program->goOn();
        EXPECT_TRUE(waitUntil([&] { return program->read() == copied.forms; }));
        pasteboard->unfollow();
    }
}

TEST_F(X11PasteboardTest, whatWasCopiedIsReadOnce)
{
    // On this thread, so that the news of what was copied is still waiting when `follow` comes.
    X11Selections selections(X11Connection::open());
    program->own(program->text(u"copied"_s));
    program->own(program->text(u"copied again"_s));
    selections.follow();
    ASSERT_TRUE(waitUntil([&] { return program->hasGiven("STRING"); }));
    selections.borrow(u"dictated"_s);
    EXPECT_EQ(program->timesAsked("TARGETS"), 1U);
    EXPECT_EQ(program->timesAsked("STRING"), 1U);
}

TEST_F(X11PasteboardTest, whatTheUserCopiesMeanwhileCounts)
{
    OtherProgram later;
    program->own(program->text(u"before"_s));
    pasteboard->follow();
    later.own(later.text(u"while recording"_s));
    ASSERT_TRUE(waitUntil([&] { return later.hasGiven("STRING"); }));
    later.hang();
    pasteboard->borrow(u"dictated"_s);
    pasteboard->giveBack();
    EXPECT_TRUE(clipboardBecomes("while recording"));
    later.goOn();
    pasteboard->unfollow();

    pasteboard->borrow(u"dictated"_s);
    program->own(program->text(u"after the paste"_s));
    pasteboard->giveBack();
    // Answers when the giving back is over.
    EXPECT_FALSE(pasteboard->awaitPaste());
    EXPECT_EQ(paste(clipboard), "after the paste");
}

TEST_F(X11PasteboardTest, theTextStaysWhereNothingWas)
{
    program->own(program->text(u"gone"_s));
    program.reset();
    pasteboard->borrow(u"dictated"_s);
    pasteboard->giveBack();
    EXPECT_FALSE(pasteboard->awaitPaste());
    EXPECT_EQ(paste(clipboard), "dictated");
    X11Pasteboard withoutServer(std::make_shared<PasteCoordinator>(), ":99999");
    withoutServer.borrow(u"dictated"_s);
    EXPECT_FALSE(withoutServer.awaitPaste());
}

TEST_F(X11PasteboardTest, theToolkitsOwnTextComesBack)
{
    // An event that tells the toolkit the time.
    QWindow window;
    window.show();
    ASSERT_TRUE(waitUntil([&] { return window.isExposed(); }));
    QGuiApplication::clipboard()->setText(u"of a field of ours"_s);
    pasteboard->borrow(u"dictated"_s);
    EXPECT_EQ(paste(clipboard), "dictated");
    pasteboard->giveBack();
    EXPECT_TRUE(clipboardBecomes("of a field of ours"));
}

TEST_F(X11PasteboardTest, anOwnerThatDoesNotAnswerCostsLittleTime)
{
    OtherProgram selected("PRIMARY");
    QElapsedTimer elapsed;
    elapsed.start();
    for (int tries = 0; tries < often; ++tries) {
        for (OtherProgram *each : {program.get(), &selected}) {
            each->own(each->text(u"theirs"_s));
            each->hang();
        }
        pasteboard->borrow(u"dictated"_s);
        pasteboard->lendToPrimarySelection();
        program->goOn();
        selected.goOn();
    }
    EXPECT_GE(elapsed.elapsed(), often * 240);
    EXPECT_LT(elapsed.elapsed(), hangGuard);
}

TEST_F(X11PasteboardTest, lendsItsContentToThePrimarySelection)
{
    const auto primaryBecomes = [](const std::optional<QByteArray> &expected) {
        return waitUntil([&] { return paste(primary) == expected; });
    };
    Owner other("selected", primary);
    ASSERT_TRUE(primaryBecomes("selected"));
    // Twice in a row, as streaming does it.
    for (const char *text : {"dictated", "dictated, too"}) {
        pasteboard->borrow(QString::fromLatin1(text));
        pasteboard->lendToPrimarySelection();
        EXPECT_EQ(paste(primary), text);
    }
    pasteboard->giveBack();
    EXPECT_TRUE(primaryBecomes("selected"));

    // What the user selects meanwhile stays.
    pasteboard->borrow(u"dictated"_s);
    pasteboard->lendToPrimarySelection();
    Owner later("selected later", primary);
    ASSERT_TRUE(primaryBecomes("selected later"));
    pasteboard->giveBack();
    EXPECT_FALSE(pasteboard->awaitPaste());
    EXPECT_EQ(paste(primary), "selected later");

    // Nothing was selected before.
    later.kill();
    later.waitForFinished();
    ASSERT_TRUE(primaryBecomes(std::nullopt));
    pasteboard->borrow(u"dictated"_s);
    pasteboard->lendToPrimarySelection();
    EXPECT_EQ(paste(primary), "dictated");
    pasteboard->giveBack();
    EXPECT_TRUE(primaryBecomes(std::nullopt));
}

TEST_F(X11PasteboardTest, whoWatchesTheClipboardHasNoticedBeforeTheStroke)
{
    OtherProgram desktop;
    desktop.watch();
    // Not always where the machine is slow, but by and large.
    int pastes = 0;
    int noticed = 0;
    while (pastes < often || (noticed <= pastes / 2 && pastes < 5 * often)) {
        const int before = desktop.readings();
        pasteboard->borrow(u"dictated"_s);
        ++pastes;
        noticed += desktop.readings() > before;
        ASSERT_TRUE(waitUntil([&] { return desktop.readings() > before; }));
    }
    EXPECT_GT(noticed, pastes / 2);
    // Nothing in between that would look like an empty clipboard.
    EXPECT_EQ(desktop.changes(), pastes);
}

TEST_F(X11PasteboardTest, aPasteGetsItsOwnTextHoweverLateItIs)
{
    program->own(program->text(u"copied"_s));
    pasteboard->borrow(u"first"_s);
    EXPECT_TRUE(pasteboard->beginPaste({program->window()}));
    pasteboard->borrow(u"second"_s);
    EXPECT_EQ(paste(clipboard), "second");
    EXPECT_EQ(program->readText(), "first");
    // Once.
    EXPECT_EQ(program->readText(), "second");

    // The giving back waits for the paste, and not without end.
    for (const bool isRead : {true, false}) {
        pasteboard->borrow(u"dictated"_s);
        EXPECT_TRUE(pasteboard->beginPaste({program->window()}));
        pasteboard->giveBack();
        EXPECT_EQ(paste(clipboard), "dictated");
        if (isRead) {
            EXPECT_EQ(program->readText(), "dictated");
        }
        EXPECT_TRUE(clipboardBecomes("copied"));
    }
}

TEST_F(X11PasteboardTest, aPasteGetsTheDictatedTextAlthoughAnotherTookTheClipboard)
{
    OtherProgram selected("PRIMARY");
    for (OtherProgram *thief : {program.get(), &selected}) {
        pasteboard->follow();
        pasteboard->borrow(u"dictated"_s);
        pasteboard->lendToPrimarySelection();
        thief->own(thief->text(u"copied meanwhile"_s));
        EXPECT_TRUE(pasteboard->beginPaste({program->window()}));
        EXPECT_FALSE(pasteboard->wasPasteRefused());
        EXPECT_EQ(program->readText(), "dictated");
        EXPECT_TRUE(pasteboard->awaitPaste());
        EXPECT_EQ(paste(clipboard), "dictated");
        EXPECT_EQ(paste(primary), "dictated");
        // It is the user's.
        pasteboard->giveBack();
        const QString &selection = thief == &selected ? primary : clipboard;
        EXPECT_TRUE(waitUntil([&] { return paste(selection) == "copied meanwhile"; }));
        pasteboard->unfollow();
    }
}

TEST_F(X11PasteboardTest, pastesNoOtherText)
{
    pasteboard->borrow(u"dictated"_s);
    program->insistOn(program->text(u"of another program"_s));
    EXPECT_TRUE(waitUntil([&] { return !pasteboard->beginPaste({program->window()}); }));
    EXPECT_TRUE(pasteboard->wasPasteRefused());
    pasteboard->giveBack();
    EXPECT_EQ(paste(clipboard), "of another program");

    // A clipboard manager that keeps everything itself.
    OtherProgram manager;
    program.reset();
    pasteboard->borrow(u"dictated, too"_s);
    EXPECT_FALSE(pasteboard->wasPasteRefused());
    manager.own(manager.text(u"dictated, too"_s));
    EXPECT_EQ(manager.readText(), "dictated, too"); // and has met its own change
    const int changes = manager.changes();
    EXPECT_TRUE(pasteboard->beginPaste({manager.window()}));
    EXPECT_EQ(manager.readText(), "dictated, too");
    EXPECT_EQ(manager.changes(), changes) << "nobody is fought";
    EXPECT_FALSE(pasteboard->awaitPaste()) << "the manager does not tell who has fetched it";
}

TEST_F(X11PasteboardTest, waitsForThePasteAndNotWithoutEnd)
{
    pasteboard->borrow(u"words"_s);
    const auto beginPaste = [&] {
        EXPECT_EQ(program->readText(), "words"); // and is done with the one before
        EXPECT_TRUE(pasteboard->beginPaste({program->window()}));
    };
    QElapsedTimer timer;
    timer.start();
    for (int tries = 0; tries < often; ++tries) {
        beginPaste();
        program->readLater();
        EXPECT_TRUE(pasteboard->awaitPaste());
    }
    EXPECT_LT(timer.elapsed(), hangGuard);
    // Asked again, as each stroke does.
    EXPECT_TRUE(pasteboard->awaitPaste());
    // Another connection of the same process reads it.
    beginPaste();
    EXPECT_EQ(OtherProgram().readText(), "words");
    EXPECT_TRUE(pasteboard->awaitPaste());

    // A field of this program's own reads it when nobody waits any more.
    timer.start();
    for (int tries = 0; tries < often; ++tries) {
        EXPECT_TRUE(pasteboard->beginPaste({program->window(), true}));
        EXPECT_FALSE(pasteboard->awaitPaste());
    }
    EXPECT_LT(timer.elapsed(), hangGuard);
    EXPECT_EQ(program->readText(), "words");
    EXPECT_TRUE(pasteboard->awaitPaste());

    // Another program's reading is not the paste.
    timer.start();
    beginPaste();
    EXPECT_EQ(paste(clipboard), "words");
    EXPECT_FALSE(pasteboard->awaitPaste());
    EXPECT_GE(timer.elapsed(), 1000);
    EXPECT_LT(timer.elapsed(), hangGuard);
}

TEST_F(X11PasteboardTest, anotherProcessPastesInWineOnly)
{
    const QTemporaryDir directory;
    const QString other = QStandardPaths::findExecutable(u"xclip"_s);
    const QString wine = directory.filePath(u"wine-preloader"_s);
    const QString wine64 = directory.filePath(u"wine64-preloader"_s);
    ASSERT_TRUE(QFile::copy(other, wine) && QFile::copy(other, wine64));
    const auto connection = X11Connection::open();
    const struct
    {
        QString application;
        QString reader;
        bool arrives;
    } cases[]
        = {{wine, wine64, true}, {wine, other, false}, {other, wine, false}, {other, other, false}};
    for (const auto &[application, reader, arrives] : cases) {
        SCOPED_TRACE((application + u" and "_s + reader).toStdString());
        const Owner window("selected", primary, application);
        ASSERT_TRUE(waitUntil([] { return paste(primary) == "selected"; }));
        const XcbReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
            connection->xcb(), xcb_get_selection_owner(connection->xcb(), XCB_ATOM_PRIMARY),
            nullptr));
        const auto hasArrived = [&] {
            pasteboard->borrow(u"dictated"_s);
            EXPECT_TRUE(pasteboard->beginPaste({owner->owner}));
            EXPECT_EQ(paste(clipboard, u"UTF8_STRING"_s, reader), "dictated");
            return pasteboard->awaitPaste();
        };
        // A reader that starts late misses its second.
        EXPECT_EQ(arrives ? waitUntil(hasArrived) : hasArrived(), arrives);
    }
}

/// A clipboard manager that takes over the text of a program that ends.
class ClipboardManager
{
public:
    explicit ClipboardManager(bool answers)
        : m_connection(X11Connection::open())
    {
        xcb_connection_t *xcb = m_connection->xcb();
        m_window = xcb_generate_id(xcb);
        xcb_create_window(xcb, 0, m_window, m_connection->root(), 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_set_selection_owner(xcb, m_window, m_connection->atom("CLIPBOARD_MANAGER"),
                                XCB_CURRENT_TIME);
        for (const char *name :
             {"CLIPBOARD", "MULTIPLE", "UTF8_STRING", "ATOM_PAIR", "PAIRS", "SAVED"})
            (void)m_connection->atom(name);
        if (answers)
            m_thread = std::thread([this] { serve(); });
    }
    ~ClipboardManager()
    {
        if (m_thread.joinable())
            m_thread.join();
    }
    /// What it has taken over, once it has.
    QByteArray saved()
    {
        m_thread.join();
        return m_saved;
    }

private:
    void serve()
    {
        xcb_connection_t *xcb = m_connection->xcb();
        const auto wait = [&](uint8_t type) {
            for (;;) {
                XcbReply<xcb_generic_event_t> event(xcb_wait_for_event(xcb));
                if (!event || (event->response_type & 0x7f) == type)
                    return event;
            }
        };
        const auto asked = wait(XCB_SELECTION_REQUEST);
        const auto &request = *reinterpret_cast<xcb_selection_request_event_t *>(asked.get());

        const xcb_atom_t pairs[] = {m_connection->atom("UTF8_STRING"), m_connection->atom("SAVED"),
                                    m_connection->atom("PAIRS"), m_connection->atom("PAIRS")};
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, m_window, m_connection->atom("PAIRS"),
                            m_connection->atom("ATOM_PAIR"), 32, 4, pairs);
        xcb_convert_selection(xcb, m_window, m_connection->atom("CLIPBOARD"),
                              m_connection->atom("MULTIPLE"), m_connection->atom("PAIRS"),
                              XCB_CURRENT_TIME);
        xcb_flush(xcb);
        (void)wait(XCB_SELECTION_NOTIFY);
        const XcbReply<xcb_get_property_reply_t> text(xcb_get_property_reply(
            xcb, xcb_get_property(xcb, 0, m_window, pairs[1], XCB_ATOM_ANY, 0, 1000), nullptr));
        const XcbReply<xcb_get_property_reply_t> marks(xcb_get_property_reply(
            xcb, xcb_get_property(xcb, 0, m_window, pairs[2], XCB_ATOM_ANY, 0, 1000), nullptr));
        // The second pair names no form of text and must be marked so.
        if (static_cast<xcb_atom_t *>(xcb_get_property_value(marks.get()))[3] == XCB_ATOM_NONE) {
            m_saved = QByteArray(static_cast<char *>(xcb_get_property_value(text.get())),
                                 xcb_get_property_value_length(text.get()));
        }

        union {
            xcb_selection_notify_event_t event;
            char bytes[32];
        } answer{};
        answer.event = {XCB_SELECTION_NOTIFY, 0,
                        request.sequence,     request.time,
                        request.requestor,    request.selection,
                        request.target,       request.property};
        xcb_send_event(xcb, 0, request.requestor, 0, answer.bytes);
        xcb_flush(xcb);
    }

    std::shared_ptr<X11Connection> m_connection;
    xcb_window_t m_window;
    std::thread m_thread;
    QByteArray m_saved;
};

TEST_F(X11PasteboardTest, leavesItsContentToTheClipboardManager)
{
    // Of a program that sends it in many pieces when it is no longer busy, too.
    for (const bool isBusy : {false, true}) {
        pasteboard = std::make_unique<X11Pasteboard>(std::make_shared<PasteCoordinator>());
        SelectionContent copied = program->text(u"to keep"_s);
        copied.forms.push_back(
            program->form("image/png", "image/png", 8, QByteArray(16 * 1024 * 1024, 'x')));
        program->own(copied);
        if (isBusy)
            program->hang();
        pasteboard->borrow(u"dictated"_s);
        ClipboardManager manager(true);
        if (isBusy)
            program->goOn();
        pasteboard.reset();
        EXPECT_EQ(manager.saved(), "to keep") << isBusy;
    }

    ClipboardManager silent(false);
    pasteboard = std::make_unique<X11Pasteboard>(std::make_shared<PasteCoordinator>());
    pasteboard->setString(u"to lose"_s);
    QElapsedTimer elapsed;
    elapsed.start();
    pasteboard.reset();
    // The end waits for no program for long.
    pasteboard = std::make_unique<X11Pasteboard>(std::make_shared<PasteCoordinator>());
    program->own(program->text(u"to lose"_s));
    program->hang();
    pasteboard->borrow(u"dictated"_s);
    pasteboard.reset();
    EXPECT_LT(elapsed.elapsed(), hangGuard);
    program->goOn();
}

} // namespace
} // namespace Velloro

#include "Platform/Linux/X11/X11Pasteboard.h"

#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Linux/X11/X11Selections.h"
#include "Platform/Linux/X11/XcbReply.h"
#include "Support/WaitUntil.h"

#include <QElapsedTimer>
#include <QProcess>
#include <csignal>
#include <gmock/gmock.h>
#include <thread>

namespace Velloro {
namespace {

/// Another program that owns a selection until it loses it, or ends.
class Owner : public QProcess
{
public:
    Owner(const QByteArray &content, const QString &selection, const QString &target = u"UTF8_STRING"_qs)
    {
        start(u"xclip"_qs, {u"-quiet"_qs, u"-in"_qs, u"-selection"_qs, selection, u"-target"_qs, target});
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
std::optional<QByteArray> paste(const QString &selection, const QString &target = u"UTF8_STRING"_qs)
{
    QProcess reader;
    reader.start(u"xclip"_qs, {u"-out"_qs, u"-selection"_qs, selection, u"-target"_qs, target});
    if (!reader.waitForFinished() || reader.exitCode() != 0)
        return std::nullopt;
    return reader.readAllStandardOutput();
}

const QString clipboard = u"clipboard"_qs;
const QString primary = u"primary"_qs;

/// Milliseconds: far more than anything here takes unless it waits without a bound.
constexpr qint64 hangGuard = 10'000;

class X11PasteboardTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!X11Connection::open())
            GTEST_SKIP() << "there is no X server";
        if (QProcess::execute(u"xclip"_qs, {u"-version"_qs}) != 0)
            GTEST_SKIP() << "xclip is not installed";
        pasteboard = std::make_unique<X11Pasteboard>();
    }
    bool waitForContent(const std::optional<QString> &expected)
    {
        return waitUntil([&] { return pasteboard->string() == expected; });
    }

    std::unique_ptr<X11Pasteboard> pasteboard;
};

TEST_F(X11PasteboardTest, carriesTextToAndFromOtherPrograms)
{
    const QString texts[] = {
        u"plain"_qs,
        u"Zażółć gęślą jaźń, 你好 👩‍👩‍👧\n\tsecond line\r\n"_qs,
        // More than the server takes in one request.
        u"łąka "_qs.repeated(5 * 1024 * 1024 / 7),
    };
    for (const QString &text : texts) {
        SCOPED_TRACE(text.left(10).toStdString());
        pasteboard->setString(text);
        EXPECT_TRUE(pasteboard->string() == text);
        EXPECT_TRUE(paste(clipboard) == text.toUtf8());

        Owner other(text.toUtf8() + '.', clipboard);
        EXPECT_TRUE(waitForContent(text + u'.'));
    }
}

TEST_F(X11PasteboardTest, takesWhatFormsTheOwnerHas)
{
    {
        Owner other("caf\xe9", clipboard, u"STRING"_qs);
        EXPECT_TRUE(waitForContent(u"café"_qs));
    }
    {
        Owner other("a\xff\xc3z", clipboard);
        EXPECT_TRUE(waitForContent(u"a\uFFFD\uFFFDz"_qs));
    }
    Owner other("\x89PNG", clipboard, u"image/png"_qs);
    ASSERT_TRUE(waitUntil([] { return paste(clipboard, u"image/png"_qs).has_value(); }));
    EXPECT_EQ(pasteboard->string(), std::nullopt);
}

TEST_F(X11PasteboardTest, offersEveryFormOfText)
{
    pasteboard->setString(u"café"_qs);
    for (const auto &target : {u"UTF8_STRING"_qs, u"text/plain;charset=utf-8"_qs, u"text/plain"_qs})
        EXPECT_EQ(paste(clipboard, target), "caf\xc3\xa9") << target.toStdString();
    for (const auto &target : {u"STRING"_qs, u"TEXT"_qs})
        EXPECT_EQ(paste(clipboard, target), "caf\xe9") << target.toStdString();
    EXPECT_EQ(paste(clipboard, u"image/png"_qs), std::nullopt);
    const auto targets = paste(clipboard, u"TARGETS"_qs).value_or(QByteArray()).split('\n');
    for (const char *target : {"TARGETS", "TIMESTAMP", "MULTIPLE", "UTF8_STRING", "STRING", "TEXT"})
        EXPECT_THAT(targets, ::testing::Contains(QByteArray(target)));
}

TEST_F(X11PasteboardTest, anEmptyTextIsNotAnEmptyPasteboard)
{
    Owner other("theirs", clipboard);
    ASSERT_TRUE(waitForContent(u"theirs"_qs));
    pasteboard->clearContents();
    EXPECT_EQ(pasteboard->string(), std::nullopt);
    EXPECT_EQ(paste(clipboard), std::nullopt);
    pasteboard->setString(QString());
    EXPECT_EQ(pasteboard->string(), QString());
    EXPECT_EQ(paste(clipboard), QByteArray());
    EXPECT_EQ(X11Pasteboard(":99999").string(), std::nullopt);
}

TEST_F(X11PasteboardTest, anOwnerThatDoesNotAnswerCostsLittleTime)
{
    Owner other("theirs", clipboard);
    Owner selection("selected", primary);
    ASSERT_TRUE(waitForContent(u"theirs"_qs));
    ASSERT_TRUE(waitUntil([] { return paste(primary) == "selected"; }));
    kill(static_cast<pid_t>(other.processId()), SIGSTOP);
    kill(static_cast<pid_t>(selection.processId()), SIGSTOP);
    QElapsedTimer elapsed;
    elapsed.start();
    EXPECT_EQ(pasteboard->string(), std::nullopt);
    EXPECT_GE(elapsed.elapsed(), 110);

    // Its late answers are not taken for later ones.
    kill(static_cast<pid_t>(other.processId()), SIGCONT);
    EXPECT_TRUE(waitForContent(u"theirs"_qs));
    // All that a paste asks of the owners.
    kill(static_cast<pid_t>(other.processId()), SIGSTOP);
    EXPECT_EQ(pasteboard->string(), std::nullopt);
    pasteboard->setString(u"dictated"_qs);
    pasteboard->lendToPrimarySelection();
    EXPECT_LT(elapsed.elapsed(), hangGuard);
    kill(static_cast<pid_t>(selection.processId()), SIGCONT);
    kill(static_cast<pid_t>(other.processId()), SIGCONT);
    Owner next("next", clipboard);
    EXPECT_TRUE(waitForContent(u"next"_qs));
}

TEST_F(X11PasteboardTest, lendsItsContentToThePrimarySelection)
{
    pasteboard->setString(u"dictated"_qs);
    const auto primaryBecomes = [](const std::optional<QByteArray> &expected) {
        return waitUntil([&] { return paste(primary) == expected; });
    };

    Owner other("selected", primary);
    ASSERT_TRUE(primaryBecomes("selected"));
    pasteboard->lendToPrimarySelection();
    EXPECT_EQ(paste(primary), "dictated");
    // Twice in a row, as streaming does it.
    pasteboard->setString(u"dictated, too"_qs);
    pasteboard->lendToPrimarySelection();
    EXPECT_EQ(paste(primary), "dictated, too");
    EXPECT_TRUE(primaryBecomes("selected"));
    EXPECT_EQ(paste(clipboard), "dictated, too");

    // What the user selects meanwhile stays.
    pasteboard->lendToPrimarySelection();
    Owner later("selected later", primary);
    ASSERT_TRUE(primaryBecomes("selected later"));
    EXPECT_FALSE(waitUntil([&] { return paste(primary) != "selected later"; },
                           std::chrono::milliseconds(700)));

    // Nothing was selected before.
    later.kill();
    later.waitForFinished();
    ASSERT_TRUE(primaryBecomes(std::nullopt));
    pasteboard->lendToPrimarySelection();
    EXPECT_EQ(paste(primary), "dictated, too");
    EXPECT_TRUE(primaryBecomes(std::nullopt));
}

/// Another program, which reads the clipboard from a window of its own.
struct Reader
{
    std::shared_ptr<X11Connection> connection = X11Connection::open();
    std::unique_ptr<X11Selections> selections = std::make_unique<X11Selections>(connection);
    xcb_window_t window = xcb_generate_id(connection->xcb());
};

TEST_F(X11PasteboardTest, aPasteGetsItsOwnTextHoweverLateItIs)
{
    Reader editor;
    Reader clipboardHistory;
    pasteboard->setString(u"first"_qs);
    pasteboard->beginPaste(editor.window);
    pasteboard->clearContents();
    pasteboard->setString(u"the user's own"_qs);

    EXPECT_EQ(clipboardHistory.selections->string(), u"the user's own"_qs);
    EXPECT_EQ(editor.selections->string(), u"first"_qs);
    // Once: what the user pastes next is his own.
    EXPECT_EQ(editor.selections->string(), u"the user's own"_qs);
    EXPECT_TRUE(pasteboard->awaitPaste());
    EXPECT_FALSE(pasteboard->awaitPaste());
}

TEST_F(X11PasteboardTest, waitsForThePasteAndNotWithoutEnd)
{
    Reader editor;
    pasteboard->setString(u"words"_qs);

    // Another program's reading is not the paste.
    pasteboard->beginPaste(editor.window);
    Reader clipboardHistory;
    EXPECT_EQ(clipboardHistory.selections->string(), u"words"_qs);
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(pasteboard->awaitPaste());
    EXPECT_GE(timer.elapsed(), 500);
    EXPECT_LT(timer.elapsed(), hangGuard);
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
        for (const char *name : {"CLIPBOARD", "MULTIPLE", "UTF8_STRING", "ATOM_PAIR", "PAIRS", "SAVED"})
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
        answer.event = {XCB_SELECTION_NOTIFY, 0,                request.sequence,
                        request.time,         request.requestor, request.selection,
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
    pasteboard->setString(u"to keep"_qs);
    ClipboardManager manager(true);
    pasteboard.reset();
    EXPECT_EQ(manager.saved(), "to keep");

    ClipboardManager silent(false);
    pasteboard = std::make_unique<X11Pasteboard>();
    pasteboard->setString(u"to lose"_qs);
    QElapsedTimer elapsed;
    elapsed.start();
    pasteboard.reset();
    EXPECT_LT(elapsed.elapsed(), hangGuard);
}

} // namespace
} // namespace Velloro

#include "Platform/Linux/X11/X11Pasteboard.h"

#include "Platform/Linux/X11/X11Selections.h"

#include <QElapsedTimer>
#include <gtest/gtest.h>

using namespace Velloro;

namespace {

/// Another program, which reads the clipboard.
struct Reader
{
    std::shared_ptr<X11Connection> connection = X11Connection::open();
    std::unique_ptr<X11Selections> selections = std::make_unique<X11Selections>(connection);
    xcb_window_t window = xcb_generate_id(connection->xcb());
};

TEST(X11PasteTest, APasteGetsItsOwnTextHoweverLateItIs)
{
    X11Pasteboard pasteboard;
    Reader editor;
    Reader clipboardHistory;
    pasteboard.setString(QStringLiteral("first"));
    pasteboard.beginPaste(editor.window);
    pasteboard.clearContents();
    pasteboard.setString(QStringLiteral("the user's own"));

    EXPECT_EQ(clipboardHistory.selections->string(), QStringLiteral("the user's own"));
    EXPECT_EQ(editor.selections->string(), QStringLiteral("first"));
    // Once: what the user pastes next is his own.
    EXPECT_EQ(editor.selections->string(), QStringLiteral("the user's own"));
}

TEST(X11PasteTest, WaitsForThePasteAndNoLongerThanASecond)
{
    X11Pasteboard pasteboard;
    Reader editor;
    pasteboard.setString(QStringLiteral("words"));

    // Another program's reading is not the paste.
    pasteboard.beginPaste(editor.window);
    Reader clipboardHistory;
    EXPECT_EQ(clipboardHistory.selections->string(), QStringLiteral("words"));
    QElapsedTimer timer;
    timer.start();
    pasteboard.awaitPaste();
    EXPECT_GE(timer.elapsed(), 500);
    EXPECT_LT(timer.elapsed(), 3000);

    pasteboard.beginPaste(editor.window);
    EXPECT_EQ(editor.selections->string(), QStringLiteral("words"));
    timer.start();
    pasteboard.awaitPaste();
    EXPECT_LT(timer.elapsed(), 500);
}

} // namespace

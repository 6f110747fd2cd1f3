#include "Platform/Linux/X11/X11Pasteboard.h"

#include "Platform/Linux/X11/X11Selections.h"

#include <QClipboard>
#include <QGuiApplication>

namespace Velloro {

namespace {

/// Whether this program's own toolkit owns the clipboard; it could not answer while the main thread
/// waits for it.
bool toolkitOwnsClipboard()
{
    return qobject_cast<QGuiApplication *>(QCoreApplication::instance())
        && QGuiApplication::clipboard()->ownsClipboard();
}

} // namespace

X11Pasteboard::X11Pasteboard(const QByteArray &displayName)
{
    m_thread.setObjectName(QStringLiteral("Pasteboard"));
    m_receiver.moveToThread(&m_thread);
    m_thread.start();
    QMetaObject::invokeMethod(
        &m_receiver,
        [&] {
            if (auto connection = X11Connection::open(displayName))
                m_selections = std::make_unique<X11Selections>(std::move(connection));
        },
        Qt::BlockingQueuedConnection);
}

X11Pasteboard::~X11Pasteboard()
{
    QMetaObject::invokeMethod(
        &m_receiver, [this] { m_selections.reset(); }, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

template <typename Work>
void X11Pasteboard::withSelections(Work work)
{
    QMetaObject::invokeMethod(
        &m_receiver,
        [&] {
            if (m_selections)
                work(*m_selections);
        },
        Qt::BlockingQueuedConnection);
}

std::optional<QString> X11Pasteboard::string()
{
    if (toolkitOwnsClipboard()) {
        const QString text = QGuiApplication::clipboard()->text();
        return text.isEmpty() ? std::nullopt : std::optional(text);
    }
    std::optional<QString> text;
    withSelections([&](X11Selections &selections) { text = selections.string(); });
    return text;
}

void X11Pasteboard::clearContents()
{
    withSelections([](X11Selections &selections) { selections.clearContents(); });
}

void X11Pasteboard::setString(const QString &text)
{
    withSelections([&](X11Selections &selections) { selections.setString(text); });
}

void X11Pasteboard::lendToPrimarySelection()
{
    withSelections([](X11Selections &selections) { selections.lendToPrimarySelection(); });
}

void X11Pasteboard::beginPaste(uint32_t window)
{
    withSelections([&](X11Selections &selections) { selections.beginPaste(window); });
}

bool X11Pasteboard::awaitPaste()
{
    bool served = false;
    withSelections([&](X11Selections &selections) { served = selections.awaitPaste(); });
    return served;
}

} // namespace Velloro

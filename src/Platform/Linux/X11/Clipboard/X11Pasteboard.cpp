#include "Platform/Linux/X11/Clipboard/X11Pasteboard.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/X11/Clipboard/X11Selections.h"

namespace Velloro {

X11Pasteboard::X11Pasteboard(std::shared_ptr<PasteCoordinator> pasting,
                             const QByteArray &displayName)
    : m_pasting(std::move(pasting))
{
    m_pasting->join(*this);
    m_thread.setObjectName(u"Pasteboard"_s);
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
    m_pasting->leave(*this);
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

template <typename Work>
void X11Pasteboard::withSelectionsLater(Work work)
{
    QMetaObject::invokeMethod(
        &m_receiver,
        [this, work] {
            if (m_selections)
                work(*m_selections);
        },
        Qt::QueuedConnection);
}

void X11Pasteboard::setString(const QString &text)
{
    withSelections([&](X11Selections &selections) { selections.setString(text); });
}

void X11Pasteboard::follow()
{
    withSelectionsLater([](X11Selections &selections) { selections.follow(); });
}

void X11Pasteboard::unfollow()
{
    withSelectionsLater([](X11Selections &selections) { selections.unfollow(); });
}

void X11Pasteboard::borrow(const QString &text)
{
    m_wasPasteRefused = false;
    withSelections([&](X11Selections &selections) { selections.borrow(text); });
}

void X11Pasteboard::giveBack()
{
    withSelectionsLater([](X11Selections &selections) { selections.giveBack(); });
}

void X11Pasteboard::lendToPrimarySelection()
{
    withSelections([](X11Selections &selections) { selections.lendToPrimarySelection(); });
}

bool X11Pasteboard::beginPaste(const PasteTarget &target)
{
    bool mayPaste = true;
    withSelections([&](X11Selections &selections) {
        mayPaste = selections.beginPaste(xcb_window_t(target.window), target.isOwn);
    });
    m_wasPasteRefused = !mayPaste;
    return mayPaste;
}

bool X11Pasteboard::awaitPaste()
{
    bool arrived = false;
    withSelections([&](X11Selections &selections) { arrived = selections.awaitPaste(); });
    return arrived;
}

} // namespace Velloro

#include "Platform/Linux/Clipboard/ThreadedPasteboard.h"

#include "Base/StringLiterals.h"

namespace Velloro {

ThreadedPasteboard::ThreadedPasteboard(std::shared_ptr<PasteCoordinator> pasting,
                                       const MakeSelections &makeSelections)
    : m_pasting(std::move(pasting))
{
    m_pasting->join(*this);
    m_thread.setObjectName(u"Pasteboard"_s);
    m_receiver.moveToThread(&m_thread);
    m_thread.start();
    QMetaObject::invokeMethod(
        &m_receiver, [&] { m_selections = makeSelections(); }, Qt::BlockingQueuedConnection);
}

ThreadedPasteboard::~ThreadedPasteboard()
{
    m_pasting->leave(*this);
    QMetaObject::invokeMethod(
        &m_receiver, [this] { m_selections.reset(); }, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

template <typename Work>
void ThreadedPasteboard::withSelections(Work work)
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
void ThreadedPasteboard::withSelectionsLater(Work work)
{
    QMetaObject::invokeMethod(
        &m_receiver,
        [this, work] {
            if (m_selections)
                work(*m_selections);
        },
        Qt::QueuedConnection);
}

void ThreadedPasteboard::setString(const QString &text)
{
    withSelections([&](Selections &selections) { selections.setString(text); });
}

void ThreadedPasteboard::follow()
{
    withSelectionsLater([](Selections &selections) { selections.follow(); });
}

void ThreadedPasteboard::unfollow()
{
    withSelectionsLater([](Selections &selections) { selections.unfollow(); });
}

void ThreadedPasteboard::borrow(const QString &text)
{
    m_wasPasteRefused = false;
    withSelections([&](Selections &selections) { selections.borrow(text); });
}

void ThreadedPasteboard::giveBack()
{
    withSelectionsLater([](Selections &selections) { selections.giveBack(); });
}

void ThreadedPasteboard::lendToPrimarySelection()
{
    withSelections([](Selections &selections) { selections.lendToPrimarySelection(); });
}

bool ThreadedPasteboard::beginPaste(const PasteTarget &target)
{
    bool mayPaste = true;
    withSelections([&](Selections &selections) { mayPaste = selections.beginPaste(target); });
    m_wasPasteRefused = !mayPaste;
    return mayPaste;
}

bool ThreadedPasteboard::awaitPaste()
{
    bool arrived = false;
    withSelections([&](Selections &selections) { arrived = selections.awaitPaste(); });
    return arrived;
}

} // namespace Velloro

#include "Platform/Linux/PasteCoordinator.h"

namespace Velloro {

namespace {

template <typename Part>
void remove(Part *&part, const Part &leaving)
{
    if (part == &leaving)
        part = nullptr;
}

} // namespace

void PasteCoordinator::leave(const Lender &lender)
{
    remove(m_lender, lender);
}

void PasteCoordinator::leave(const Typist &typist)
{
    remove(m_typist, typist);
}

void PasteCoordinator::leave(const Reader &reader)
{
    remove(m_reader, reader);
}

bool PasteCoordinator::isTerminalFocused() const
{
    return m_reader && m_reader->isTerminalFocused();
}

bool PasteCoordinator::beginPaste(const PasteTarget &target, bool takesPrimarySelection) const
{
    if (!m_lender)
        return true;
    if (takesPrimarySelection)
        m_lender->lendToPrimarySelection();
    return m_lender->beginPaste(target);
}

void PasteCoordinator::awaitPaste() const
{
    if (m_lender)
        m_lender->awaitPaste();
}

bool PasteCoordinator::awaitStrokes() const
{
    return !m_typist || m_typist->awaitReceipt();
}

} // namespace Velloro

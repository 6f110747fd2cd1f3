#include "Views/Settings/Models/ModelGroupViewModel.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Velloro {

ModelGroupViewModel::ModelGroupViewModel(ModelSize size, QList<CatalogModelRowViewModel *> rows,
                                         ModelCategory category, QObject *parent)
    : QObject(parent)
    , m_size(size)
    , m_allRows(std::move(rows))
{
    setCategory(category);
}

QString ModelGroupViewModel::countText() const
{
    return tr("%1 models").arg(m_rows.size());
}

void ModelGroupViewModel::setOpen(bool open)
{
    if (std::exchange(m_isOpen, open) != open)
        Q_EMIT isOpenChanged();
}

void ModelGroupViewModel::setCategory(ModelCategory category)
{
    QList<CatalogModelRowViewModel *> rows;
    std::ranges::copy_if(m_allRows, std::back_inserter(rows),
                         [=](const auto *row) { return row->info().category == category; });
    if (std::exchange(m_rows, rows) != rows)
        Q_EMIT rowsChanged();
}

} // namespace Velloro

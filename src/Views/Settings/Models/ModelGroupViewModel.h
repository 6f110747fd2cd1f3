#pragma once

#include "Views/Settings/Models/CatalogModelRowViewModel.h"

#include <QList>
#include <QObject>
#include <QQmlListProperty>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// The catalogue's rows of one size and the category that is shown. Main thread only.
class ModelGroupViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the models pane's model")
    Q_PROPERTY(QString title READ title CONSTANT)
    /// "3 models"
    Q_PROPERTY(QString countText READ countText NOTIFY rowsChanged)
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY isOpenChanged)
    Q_PROPERTY(
        QQmlListProperty<Velloro::CatalogModelRowViewModel> rows READ rowList NOTIFY rowsChanged)

public:
    /// `rows` are all rows of the size, of either category; they outlive the group.
    ModelGroupViewModel(ModelSize size, QList<CatalogModelRowViewModel *> rows,
                        ModelCategory category, QObject *parent = nullptr);

    [[nodiscard]] QString title() const { return displayName(m_size); }
    [[nodiscard]] QString countText() const;
    [[nodiscard]] bool isOpen() const { return m_isOpen; }
    [[nodiscard]] const QList<CatalogModelRowViewModel *> &rows() const { return m_rows; }
    [[nodiscard]] ModelSize size() const { return m_size; }

    void setOpen(bool open);
    void setCategory(ModelCategory category);

Q_SIGNALS:
    void rowsChanged();
    void isOpenChanged();

private:
    [[nodiscard]] QQmlListProperty<CatalogModelRowViewModel> rowList() { return {this, &m_rows}; }

    ModelSize m_size;
    /// Of either category, and of the one that is shown.
    QList<CatalogModelRowViewModel *> m_allRows;
    QList<CatalogModelRowViewModel *> m_rows;
    bool m_isOpen = false;
};

} // namespace Velloro

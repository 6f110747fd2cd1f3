#pragma once

#include "Core/State/AppState.h"
#include "Platform/Pasteboard.h"

#include <QAbstractListModel>
#include <QLocale>
#include <QSet>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// Behind the history pane: the entries as rows, newest first. Main thread only.
///
/// Roles: `preview` (the text's beginning, more than three lines of it), `time` (of the day, short,
/// in the user's manner) and `copied` (for 1.5 s after it was copied).
class HistoryViewModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the settings' model")
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY isEmptyChanged)

public:
    enum Role { PreviewRole = Qt::UserRole, TimeRole, CopiedRole };

    /// `appState` and `pasteboard` outlive the model.
    HistoryViewModel(AppState &appState, Pasteboard &pasteboard,
                     const QLocale &locale = QLocale::system(), QObject *parent = nullptr);

    [[nodiscard]] bool isEmpty() const { return m_items.isEmpty(); }

    /// Puts the whole text of an entry on the pasteboard.
    Q_INVOKABLE void copy(int row);
    /// Removes all entries.
    Q_INVOKABLE void clear();

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void isEmptyChanged();

private:
    [[nodiscard]] QString time(QTime time) const;
    void update();
    void setCopied(const QUuid &id, bool copied);

    AppState &m_appState;
    Pasteboard &m_pasteboard;
    QLocale m_locale;
    QList<TranscriptionHistoryItem> m_items;
    QSet<QUuid> m_copied;
};

} // namespace Velloro

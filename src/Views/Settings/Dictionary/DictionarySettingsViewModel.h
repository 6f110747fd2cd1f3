#pragma once

#include "Core/State/AppState.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// Behind the dictionary pane: the words as rows (role `word`), the entry field and the
/// suggestions. Main thread only.
class DictionarySettingsViewModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the settings' model")
    /// The text of the entry field.
    Q_PROPERTY(QString newWord READ newWord WRITE setNewWord NOTIFY newWordChanged)
    /// Whether the entry field holds more than blanks, and not too much.
    Q_PROPERTY(bool canAdd READ canAdd NOTIFY newWordChanged)
    /// What keeps the word in the entry field from being added; empty when nothing does.
    Q_PROPERTY(QString problem READ problem NOTIFY newWordChanged)
    Q_PROPERTY(QString title READ title NOTIFY wordsChanged)
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY wordsChanged)
    Q_PROPERTY(QStringList suggestions READ suggestions CONSTANT)
    /// For each suggestion, whether it is not in the dictionary yet.
    Q_PROPERTY(QList<bool> suggestionsAvailable READ suggestionsAvailable NOTIFY wordsChanged)

public:
    enum Role { WordRole = Qt::UserRole };

    /// `appState` outlives the model.
    explicit DictionarySettingsViewModel(AppState &appState, QObject *parent = nullptr);

    [[nodiscard]] const QString &newWord() const { return m_newWord; }
    void setNewWord(const QString &word);
    [[nodiscard]] bool canAdd() const;
    [[nodiscard]] QString problem() const;
    [[nodiscard]] QString title() const;
    [[nodiscard]] bool isEmpty() const { return m_words.isEmpty(); }
    [[nodiscard]] static QStringList suggestions();
    [[nodiscard]] QList<bool> suggestionsAvailable() const;

    /// Adds the text of the entry field, without the blanks around it, and empties the field.
    /// An empty word, one that is too long and one that is there already change nothing.
    Q_INVOKABLE void addWord();
    /// Adds a suggestion, unless it is there already.
    Q_INVOKABLE void quickAdd(const QString &word);
    /// Removes every entry that equals the word.
    Q_INVOKABLE void removeWord(const QString &word);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void newWordChanged();
    void wordsChanged();

private:
    bool append(const QString &word);
    void update();

    AppState &m_appState;
    QStringList m_words;
    QString m_newWord;
};

} // namespace Velloro

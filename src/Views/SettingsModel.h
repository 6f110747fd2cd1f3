#pragma once

#include "Views/DictionarySettingsModel.h"
#include "Views/GeneralSettingsModel.h"
#include "Views/HistoryModel.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// Behind the settings window: the models of its panes. Main thread only.
class SettingsModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the settings window")
    Q_PROPERTY(Velloro::GeneralSettingsModel *general READ general CONSTANT)
    Q_PROPERTY(Velloro::DictionarySettingsModel *dictionary READ dictionary CONSTANT)
    Q_PROPERTY(Velloro::HistoryModel *history READ history CONSTANT)

public:
    /// Both outlive the model.
    SettingsModel(Platform &platform, AppState &appState, QObject *parent = nullptr);

    [[nodiscard]] GeneralSettingsModel *general() { return &m_general; }
    [[nodiscard]] DictionarySettingsModel *dictionary() { return &m_dictionary; }
    [[nodiscard]] HistoryModel *history() { return &m_history; }

    /// Asks for the window to be closed.
    Q_INVOKABLE void close() { Q_EMIT closeRequested(); }

Q_SIGNALS:
    void closeRequested();

private:
    GeneralSettingsModel m_general;
    DictionarySettingsModel m_dictionary;
    HistoryModel m_history;
};

} // namespace Velloro

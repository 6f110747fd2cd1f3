#pragma once

#include "Views/Settings/Dictionary/DictionarySettingsViewModel.h"
#include "Views/Settings/General/GeneralSettingsViewModel.h"
#include "Views/Settings/History/HistoryViewModel.h"
#include "Views/Settings/Models/ModelSettingsViewModel.h"
#include "Views/Settings/Privacy/PrivacySettingsViewModel.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// Behind the settings window: the models of its panes. Main thread only.
class SettingsViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the settings window")
    Q_PROPERTY(Velloro::GeneralSettingsViewModel *general READ general CONSTANT)
    Q_PROPERTY(Velloro::ModelSettingsViewModel *models READ models CONSTANT)
    Q_PROPERTY(Velloro::DictionarySettingsViewModel *dictionary READ dictionary CONSTANT)
    Q_PROPERTY(Velloro::HistoryViewModel *history READ history CONSTANT)
    Q_PROPERTY(Velloro::PrivacySettingsViewModel *privacy READ privacy CONSTANT)

public:
    /// All of these outlive the model.
    SettingsViewModel(Platform &platform, AppState &appState, HotkeyManager &hotkeyManager,
                      QObject *parent = nullptr);

    [[nodiscard]] GeneralSettingsViewModel *general() { return &m_general; }
    [[nodiscard]] ModelSettingsViewModel *models() { return &m_models; }
    [[nodiscard]] DictionarySettingsViewModel *dictionary() { return &m_dictionary; }
    [[nodiscard]] HistoryViewModel *history() { return &m_history; }
    [[nodiscard]] PrivacySettingsViewModel *privacy() { return &m_privacy; }

    /// Asks for the window to be closed.
    Q_INVOKABLE void close() { Q_EMIT closeRequested(); }

Q_SIGNALS:
    void closeRequested();

private:
    GeneralSettingsViewModel m_general;
    ModelSettingsViewModel m_models;
    DictionarySettingsViewModel m_dictionary;
    HistoryViewModel m_history;
    PrivacySettingsViewModel m_privacy;
};

} // namespace Velloro

#pragma once

#include "Views/Settings/Dictionary/DictionarySettingsViewModel.h"
#include "Views/Settings/General/GeneralSettingsViewModel.h"
#include "Views/Settings/History/HistoryViewModel.h"
#include "Views/Settings/Models/ModelSettingsViewModel.h"
#include "Views/Settings/Privacy/PermissionHelpViewModel.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// Behind the settings window: the application state and the models of its panes. Main thread only.
class SettingsViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the settings window")
    Q_PROPERTY(Velloro::AppState *appState READ appState CONSTANT)
    Q_PROPERTY(Velloro::GeneralSettingsViewModel *general READ general CONSTANT)
    Q_PROPERTY(Velloro::ModelSettingsViewModel *models READ models CONSTANT)
    Q_PROPERTY(Velloro::DictionarySettingsViewModel *dictionary READ dictionary CONSTANT)
    Q_PROPERTY(Velloro::HistoryViewModel *history READ history CONSTANT)
    Q_PROPERTY(Velloro::PermissionHelpViewModel *permissionHelp READ permissionHelp CONSTANT)

public:
    /// All of these outlive the model.
    SettingsViewModel(Platform &platform, AppState &appState, HotkeyManager &hotkeyManager,
                      QObject *parent = nullptr);

    [[nodiscard]] AppState *appState() const { return &m_appState; }
    [[nodiscard]] GeneralSettingsViewModel *general() { return &m_general; }
    [[nodiscard]] ModelSettingsViewModel *models() { return &m_models; }
    [[nodiscard]] DictionarySettingsViewModel *dictionary() { return &m_dictionary; }
    [[nodiscard]] HistoryViewModel *history() { return &m_history; }
    [[nodiscard]] PermissionHelpViewModel *permissionHelp() { return &m_permissionHelp; }

    /// Asks for the window to be closed.
    Q_INVOKABLE void close() { Q_EMIT closeRequested(); }

Q_SIGNALS:
    void closeRequested();

private:
    AppState &m_appState;
    GeneralSettingsViewModel m_general;
    ModelSettingsViewModel m_models;
    DictionarySettingsViewModel m_dictionary;
    HistoryViewModel m_history;
    PermissionHelpViewModel m_permissionHelp;
};

} // namespace Velloro

#pragma once

#include "Views/DictionarySettingsModel.h"
#include "Views/GeneralSettingsModel.h"
#include "Views/HistoryModel.h"
#include "Views/ModelSettingsModel.h"
#include "Views/PrivacySettingsModel.h"

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
    Q_PROPERTY(Velloro::ModelSettingsModel *models READ models CONSTANT)
    Q_PROPERTY(Velloro::DictionarySettingsModel *dictionary READ dictionary CONSTANT)
    Q_PROPERTY(Velloro::HistoryModel *history READ history CONSTANT)
    Q_PROPERTY(Velloro::PrivacySettingsModel *privacy READ privacy CONSTANT)

public:
    /// All of these outlive the model.
    SettingsModel(Platform &platform, AppState &appState, HotkeyManager &hotkeyManager,
                  QObject *parent = nullptr);

    [[nodiscard]] GeneralSettingsModel *general() { return &m_general; }
    [[nodiscard]] ModelSettingsModel *models() { return &m_models; }
    [[nodiscard]] DictionarySettingsModel *dictionary() { return &m_dictionary; }
    [[nodiscard]] HistoryModel *history() { return &m_history; }
    [[nodiscard]] PrivacySettingsModel *privacy() { return &m_privacy; }

    /// Asks for the window to be closed.
    Q_INVOKABLE void close() { Q_EMIT closeRequested(); }

Q_SIGNALS:
    void closeRequested();

private:
    GeneralSettingsModel m_general;
    ModelSettingsModel m_models;
    DictionarySettingsModel m_dictionary;
    HistoryModel m_history;
    PrivacySettingsModel m_privacy;
};

} // namespace Velloro

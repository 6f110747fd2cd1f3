#pragma once

#include "Core/AppState.h"
#include "Managers/HotkeyManager.h"

#include <QCoroTask>
#include <QObject>
#include <QSet>

namespace Velloro {

/// Sees to it that the model that the user chose for the selected preset is the one that is loaded.
///
/// It acts at launch, when a preset is picked or reassigned, when the download of the selected
/// preset's model ends, when a load for a dictation that overtook its own has ended, and when the
/// hotkey is pressed while no model is loaded. A model is loaded only if its file is there, no
/// recording is under way (else when it has ended) and it is not the loaded one already. Main thread
/// only.
class PresetModelLoader : public QObject
{
    Q_OBJECT

public:
    /// Both outlive the loader.
    PresetModelLoader(AppState &appState, HotkeyManager &hotkeyManager, QObject *parent = nullptr);

    /// Loads the selected preset's model in the background if that is called for.
    void loadPresetModel();

private:
    void modelStateChanged(const QString &modelId);
    void hotkeyPressedChanged();
    QCoro::Task<void> load(QString modelId);
    void makeUpForOvertaken();

    AppState &m_appState;
    HotkeyManager &m_hotkeyManager;
    /// The models whose download has been seen under way.
    QSet<QString> m_downloading;
    /// The model whose load is under way; empty when none is.
    QString m_loadingModelId;
    /// Our load gave way to another one, whose end it awaits.
    bool m_wasOvertaken = false;
    /// A load was called for while a recording was under way.
    bool m_isWaitingForIdle = false;
};

} // namespace Velloro

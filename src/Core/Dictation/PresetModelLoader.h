#pragma once

#include "Core/Dictation/DictationController.h"

#include <QObject>
#include <QSet>

namespace Velloro {

/// Sees to it that the model that the user chose for the selected preset is the one that is loaded.
///
/// It acts at launch, when a preset is picked or reassigned, when the download of the selected
/// preset's model ends, and when a dictation or a refused press has left no model loaded. From a
/// press until the controller is idle again the models are the controller's: what falls into that
/// time is made up for at its end. A model is loaded only if its file is there and it is neither
/// loaded nor being loaded already. Main thread only.
class PresetModelLoader : public QObject
{
    Q_OBJECT

public:
    /// Both outlive the loader.
    PresetModelLoader(AppState &appState, DictationController &controller,
                      QObject *parent = nullptr);

    /// Loads the one model that the launch reads: the selected preset's, else the one that the
    /// controller looks for.
    void loadAtLaunch();
    /// Loads the selected preset's model in the background if that is called for.
    void loadPresetModel();

private:
    /// Whether a model is loaded or on its way.
    [[nodiscard]] bool hasModel() const;
    void controllerBecameIdle();
    void modelStateChanged(const QString &modelId);

    AppState &m_appState;
    DictationController &m_controller;
    /// The models whose download has been seen under way.
    QSet<QString> m_downloading;
    /// A load was called for while the controller was busy.
    bool m_isWaitingForIdle = false;
};

} // namespace Velloro

#include "Views/Onboarding/ModelDownloadStepViewModel.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Views/Shared/StatusText.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto pause = 500ms;

} // namespace

ModelDownloadStepViewModel::ModelDownloadStepViewModel(AppState &appState, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
{
    m_watcher.setInterval(pause);
    connect(&m_watcher, &QTimer::timeout, this, &ModelDownloadStepViewModel::watch);
    connect(&appState, &AppState::downloadedModelsChanged, this,
            &ModelDownloadStepViewModel::isReadyChanged);
    connect(&appState, &AppState::downloadProgressChanged, this,
            &ModelDownloadStepViewModel::progressChanged);
    connect(&appState, &AppState::presetMappingsChanged, this,
            &ModelDownloadStepViewModel::explanationChanged);
}

bool ModelDownloadStepViewModel::isReady() const
{
    return m_appState.downloadedModels().contains(ModelPreset::medium);
}

QString ModelDownloadStepViewModel::percentText() const
{
    return Velloro::percentText(m_appState.downloadProgress());
}

QString ModelDownloadStepViewModel::explanation() const
{
    const WhisperModelInfo *model
        = ModelCatalog::modelById(m_appState.modelId(ModelPreset::medium));
    const QString size = model ? u" (~%1)"_s.arg(model->fileSizeFormatted()) : QString();
    return tr("Velloro needs to download a voice model to transcribe your speech. This is a "
              "one-time download%1.")
        .arg(size);
}

QString ModelDownloadStepViewModel::advice() const
{
    const QFileInfo file(m_appState.whisperManager().modelURL(m_modelId));
    if (m_failure.isEmpty() || file.filePath().isEmpty())
        return {};
    return tr("Check your internet connection and press \"Download Now\" again. You can also put "
              "the file %1 into the folder %2 yourself before you press it.")
        .arg(file.fileName(), QDir::toNativeSeparators(file.path()));
}

void ModelDownloadStepViewModel::shown()
{
    if (!isReady())
        QTimer::singleShot(pause, this, &ModelDownloadStepViewModel::startDownload);
}

void ModelDownloadStepViewModel::startDownload()
{
    if (m_appState.isDownloadingModel())
        return;
    setFailure({});
    m_appState.setIsDownloadingModel(true);
    m_appState.setDownloadProgress(0);
    m_modelId = m_appState.modelId(ModelPreset::medium);
    m_watcher.start();
    m_appState.whisperManager().refreshModelStates();
    m_appState.whisperManager().downloadModel(
        m_modelId, [state = QPointer<AppState>(&m_appState)](double progress) {
            if (state)
                state->setDownloadProgress(progress);
        });
    if (!m_appState.whisperManager().modelStates().contains(m_modelId)) {
        m_watcher.stop();
        setFailure(tr("There is no model named \"%1\".").arg(m_modelId));
        m_appState.setIsDownloadingModel(false);
    }
}

void ModelDownloadStepViewModel::watch()
{
    const ModelDownloadState state = m_appState.whisperManager().modelStates().value(m_modelId);
    if (const auto *downloading = std::get_if<ModelDownloadState::Downloading>(&state.value)) {
        m_appState.setDownloadProgress(downloading->progress);
    } else if (const auto *failed = std::get_if<ModelDownloadState::Failed>(&state.value)) {
        Log::line(u"Onboarding", u"Download failed: "_s + failed->error);
        setFailure(failed->error);
        m_appState.setIsDownloadingModel(false);
    } else if (state.isDownloaded()) {
        AppState::PresetSet downloaded = m_appState.downloadedModels();
        downloaded.insert(ModelPreset::medium);
        m_appState.setDownloadedModels(downloaded);
        m_appState.setIsDownloadingModel(false);
    }
    if (!m_appState.isDownloadingModel())
        m_watcher.stop();
}

void ModelDownloadStepViewModel::setFailure(const QString &failure)
{
    if (std::exchange(m_failure, failure) != failure)
        Q_EMIT failureChanged();
}

} // namespace Velloro

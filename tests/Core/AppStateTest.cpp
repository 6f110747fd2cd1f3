#include "Core/State/AppState.h"
#include "Base/StringLiterals.h"
#include "Support/InMemoryPlatform.h"
#include "Support/LogRecorder.h"

#include <functional>
#include <gtest/gtest.h>

namespace Velloro {
namespace {

const QString historyKey = u"velloro.transcriptionHistory"_s;

class AppStateTest : public ::testing::Test
{
protected:
    [[nodiscard]] std::unique_ptr<AppState> start()
    {
        return std::make_unique<AppState>(m_platform.platform);
    }

    void store(const char16_t *property, const DefaultsValue &value)
    {
        defaults().values.insert(u"velloro."_s + QString::fromUtf16(property), value);
    }

    [[nodiscard]] InMemoryUserDefaults &defaults() { return *m_platform.userDefaults; }

    LogRecorder m_log;
    InMemoryPlatform m_platform;
};

/// One assignment to a property that changes it, and what it stores.
struct Assignment
{
    const char *property;
    void (AppState::*changed)();
    std::function<void(AppState &)> assign;
    /// Nothing for a property that is not persisted.
    std::optional<DefaultsValue> stored;
};

std::vector<Assignment> assignments()
{
    const auto text
        = [](const char16_t *value) { return DefaultsValue(QString::fromUtf16(value)); };
    using Map = AppState::StringMap;
    return {
        {"transcriptionState",
         &AppState::transcriptionStateChanged,
         [](AppState &s) { s.setTranscriptionState(TranscriptionState::listening); },
         {}},
        {"partialTranscript",
         &AppState::partialTranscriptChanged,
         [](AppState &s) { s.setPartialTranscript(u"x"_s); },
         {}},
        {"lastTranscript",
         &AppState::lastTranscriptChanged,
         [](AppState &s) { s.setLastTranscript(u"x"_s); },
         {}},
        {"recordingDuration",
         &AppState::recordingDurationChanged,
         [](AppState &s) { s.setRecordingDuration(0.05); },
         {}},
        {"audioLevel",
         &AppState::audioLevelChanged,
         [](AppState &s) { s.setAudioLevel(0.5F); },
         {}},
        {"recordingMode", &AppState::recordingModeChanged,
         [](AppState &s) { s.setRecordingMode(RecordingMode::toggle); }, text(u"Toggle")},
        {"selectedModel", &AppState::selectedModelChanged,
         [](AppState &s) { s.setSelectedModel(ModelPreset::large); }, text(u"Large")},
        {"selectedLanguage", &AppState::selectedLanguageChanged,
         [](AppState &s) { s.setSelectedLanguage(WhisperLanguage::auto_); }, text(u"auto")},
        {"playSounds", &AppState::playSoundsChanged, [](AppState &s) { s.setPlaySounds(false); },
         false},
        {"launchAtLogin", &AppState::launchAtLoginChanged,
         [](AppState &s) { s.setLaunchAtLogin(true); }, true},
        {"insertAsPlainText", &AppState::insertAsPlainTextChanged,
         [](AppState &s) { s.setInsertAsPlainText(false); }, false},
        {"enableRealtimeStreaming", &AppState::enableRealtimeStreamingChanged,
         [](AppState &s) { s.setEnableRealtimeStreaming(true); }, true},
        {"enableTextCorrection", &AppState::enableTextCorrectionChanged,
         [](AppState &s) { s.setEnableTextCorrection(false); }, false},
        {"hasCompletedOnboarding", &AppState::hasCompletedOnboardingChanged,
         [](AppState &s) { s.setHasCompletedOnboarding(true); }, true},
        {"requireTextFieldFocus", &AppState::requireTextFieldFocusChanged,
         [](AppState &s) { s.setRequireTextFieldFocus(false); }, false},
        {"customDictionary", &AppState::customDictionaryChanged,
         [](AppState &s) { s.setCustomDictionary({u" b"_s, u"a"_s, u"a"_s}); },
         QStringList{u" b"_s, u"a"_s, u"a"_s}},
        {"presetMappings", &AppState::presetMappingsChanged,
         [](AppState &s) { s.setModelId(u"tiny"_s, ModelPreset::small); },
         Map{{u"Small"_s, u"tiny"_s}}},
        {"hasMicrophonePermission",
         &AppState::hasMicrophonePermissionChanged,
         [](AppState &s) { s.setHasMicrophonePermission(true); },
         {}},
        {"hasAccessibilityPermission",
         &AppState::hasAccessibilityPermissionChanged,
         [](AppState &s) { s.setHasAccessibilityPermission(true); },
         {}},
        {"downloadedModels", &AppState::downloadedModelsChanged,
         [](AppState &s) { s.setDownloadedModels({ModelPreset::large, ModelPreset::small}); },
         QStringList{u"Small"_s, u"Large"_s}},
        {"isDownloadingModel",
         &AppState::isDownloadingModelChanged,
         [](AppState &s) { s.setIsDownloadingModel(true); },
         {}},
        {"downloadProgress",
         &AppState::downloadProgressChanged,
         [](AppState &s) { s.setDownloadProgress(0.5); },
         {}},
    };
}

TEST_F(AppStateTest, startsWithItsInitialValuesOnAFreshStore)
{
    const auto state = start();
    EXPECT_EQ(state->transcriptionState(), TranscriptionState::idle);
    EXPECT_EQ(state->recordingMode(), RecordingMode::holdToTalk);
    EXPECT_EQ(state->selectedModel(), ModelPreset::medium);
    EXPECT_EQ(state->selectedLanguage(), WhisperLanguage::english);
    EXPECT_TRUE(state->playSounds());
    EXPECT_FALSE(state->launchAtLogin());
    EXPECT_TRUE(state->insertAsPlainText());
    EXPECT_FALSE(state->enableRealtimeStreaming());
    EXPECT_TRUE(state->enableTextCorrection());
    EXPECT_FALSE(state->hasCompletedOnboarding());
    EXPECT_TRUE(state->requireTextFieldFocus());
    EXPECT_TRUE(state->customDictionary().isEmpty());
    EXPECT_TRUE(state->presetMappings().isEmpty());
    EXPECT_TRUE(state->downloadedModels().empty());
    EXPECT_TRUE(state->transcriptionHistory().isEmpty());
    EXPECT_FALSE(state->hasMicrophonePermission() || state->hasAccessibilityPermission());
    EXPECT_EQ(m_log.messages(u"AppState"_s),
              QStringList{u"Loaded settings: model=Medium, language=en, streaming=false, "
                          "textCorrection=true"_s});
    EXPECT_TRUE(defaults().written.isEmpty()) << "what was never set is not stored";
}

TEST_F(AppStateTest, storesEveryAssignmentAndTellsOfChangesAlone)
{
    for (const Assignment &each : assignments()) {
        SCOPED_TRACE(each.property);
        const auto state = start();
        const QString key = u"velloro."_s + QString::fromLatin1(each.property);
        int changes = 0;
        QObject::connect(state.get(), each.changed, [&] { ++changes; });

        defaults().written.clear();
        each.assign(*state);
        EXPECT_EQ(defaults().value(key), each.stored);
        EXPECT_EQ(changes, 1);

        each.assign(*state);
        EXPECT_EQ(changes, 1) << "nothing has changed";
        EXPECT_EQ(defaults().written, each.stored ? QStringList(2, key) : QStringList());
        defaults().values.clear();
    }
}

TEST_F(AppStateTest, keepsItsSettingsOverARestart)
{
    const auto before = start();
    for (const Assignment &each : assignments())
        each.assign(*before);
    before->addToHistory(u"first"_s);
    before->addToHistory(u"second"_s);
    const auto stored = defaults().values;

    const auto after = start();
    EXPECT_EQ(after->recordingMode(), RecordingMode::toggle);
    EXPECT_EQ(after->selectedModel(), ModelPreset::large);
    EXPECT_EQ(after->selectedLanguage(), WhisperLanguage::auto_);
    EXPECT_FALSE(after->playSounds());
    EXPECT_TRUE(after->launchAtLogin());
    EXPECT_FALSE(after->insertAsPlainText());
    EXPECT_TRUE(after->enableRealtimeStreaming());
    EXPECT_FALSE(after->enableTextCorrection());
    EXPECT_TRUE(after->hasCompletedOnboarding());
    EXPECT_FALSE(after->requireTextFieldFocus());
    EXPECT_EQ(after->customDictionary(), before->customDictionary());
    EXPECT_EQ(after->presetMappings(), before->presetMappings());
    EXPECT_EQ(after->downloadedModels(), before->downloadedModels());
    EXPECT_EQ(after->transcriptionHistory(), before->transcriptionHistory());
    EXPECT_TRUE(after->lastTranscript().isEmpty());
    EXPECT_EQ(
        m_log.messages(u"AppState"_s).last(),
        u"Loaded settings: model=Large, language=auto, streaming=true, textCorrection=false"_s);
    EXPECT_EQ(defaults().values, stored);
}

TEST_F(AppStateTest, takesWhatItDoesNotUnderstandAsAbsent)
{
    store(u"recordingMode", int64_t(1));
    store(u"selectedModel", u"large"_s);
    store(u"selectedLanguage", u"xx"_s);
    store(u"playSounds", u"false"_s);
    store(u"enableTextCorrection", int64_t(0));
    store(u"downloadedModels", QStringList{u"Small"_s, u"Tiny"_s, u"Large"_s});
    store(u"customDictionary", u"word"_s);
    store(u"presetMappings", QStringList{u"Small"_s});
    store(u"transcriptionHistory", QByteArray("[{\"id\":"));
    const auto state = start();
    EXPECT_EQ(state->recordingMode(), RecordingMode::holdToTalk);
    EXPECT_EQ(state->selectedModel(), ModelPreset::medium);
    EXPECT_EQ(state->selectedLanguage(), WhisperLanguage::english);
    EXPECT_TRUE(state->playSounds());
    EXPECT_TRUE(state->enableTextCorrection());
    EXPECT_EQ(state->downloadedModels(),
              (AppState::PresetSet{ModelPreset::small, ModelPreset::large}));
    EXPECT_TRUE(state->customDictionary().isEmpty());
    EXPECT_TRUE(state->presetMappings().isEmpty());
    EXPECT_TRUE(state->transcriptionHistory().isEmpty());
    EXPECT_EQ(defaults().get<QByteArray>(historyKey), QByteArray("[{\"id\":"));
    EXPECT_EQ(defaults().written, QStringList{u"velloro.downloadedModels"_s});
    EXPECT_EQ(m_log.messages(u"AppState"_s).size(), 1);

    const QString keptKey = historyKey + u".unreadable"_s;
    state->addToHistory(u"new"_s);
    EXPECT_EQ(defaults().get<QByteArray>(keptKey), QByteArray("[{\"id\":")) << "nothing is lost";
    EXPECT_EQ(start()->transcriptionHistory().size(), 1);
    state->clearHistory();
    EXPECT_FALSE(defaults().value(keptKey)) << "cleared means cleared";
}

TEST_F(AppStateTest, knowsTheModelOfAPreset)
{
    const auto state = start();
    EXPECT_EQ(state->modelId(ModelPreset::small), u"base"_s);
    EXPECT_EQ(state->modelId(ModelPreset::medium), u"small-q8_0"_s);
    EXPECT_EQ(state->modelId(ModelPreset::large), u"small"_s);
    state->setModelId(u"large-v3"_s, ModelPreset::large);
    state->setModelId(u"no such model"_s, ModelPreset::small);
    EXPECT_EQ(state->modelId(ModelPreset::large), u"large-v3"_s);
    EXPECT_EQ(state->modelId(ModelPreset::small), u"no such model"_s);
    EXPECT_EQ(state->modelId(ModelPreset::medium), u"small-q8_0"_s);
}

TEST_F(AppStateTest, addsOnlyTextsOfTwoCharactersAndMoreToTheHistory)
{
    const auto state = start();
    int changes = 0;
    QObject::connect(state.get(), &AppState::transcriptionHistoryChanged, [&] { ++changes; });
    // One character each, in the eyes of a reader.
    for (const QString &text : {u""_s, u" \n"_s, u" a\n"_s, u"e\u0301"_s, u"👩‍👩‍👧"_s})
        state->addToHistory(text);
    EXPECT_EQ(changes, 0);
    EXPECT_TRUE(defaults().written.isEmpty());
    EXPECT_TRUE(state->lastTranscript().isEmpty());

    state->addToHistory(u"\u2028 ok\u00A0\n"_s);
    ASSERT_EQ(state->transcriptionHistory().size(), 1);
    EXPECT_EQ(state->transcriptionHistory()[0].text, u"ok"_s);
    EXPECT_EQ(state->lastTranscript(), u"ok"_s);
    EXPECT_EQ(changes, 1);
}

TEST_F(AppStateTest, keepsTheLatestFiftyTranscripts)
{
    const auto state = start();
    int storedAtSignal = 0;
    QObject::connect(state.get(), &AppState::transcriptionHistoryChanged, [&] {
        storedAtSignal += defaults().get<QByteArray>(historyKey)
            == encodeHistory(state->transcriptionHistory());
    });
    for (int number = 1; number <= 51; ++number)
        state->addToHistory(u"text %1"_s.arg(number));
    EXPECT_EQ(state->transcriptionHistory().size(), 50);
    EXPECT_EQ(state->transcriptionHistory().first().text, u"text 51"_s);
    EXPECT_EQ(state->transcriptionHistory().last().text, u"text 2"_s);
    EXPECT_EQ(storedAtSignal, 51) << "each entry is stored before anybody hears of it";

    defaults().hasKeptCopies = true;
    state->clearHistory();
    EXPECT_FALSE(defaults().hasKeptCopies) << "cleared from every file";
    EXPECT_TRUE(state->transcriptionHistory().isEmpty());
    EXPECT_EQ(defaults().get<QByteArray>(historyKey), QByteArray("[]"));
    EXPECT_EQ(state->lastTranscript(), u"text 51"_s);
    EXPECT_TRUE(start()->transcriptionHistory().isEmpty());
}

} // namespace
} // namespace Velloro

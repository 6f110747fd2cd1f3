#pragma once

#include "Base/SerialExecutor.h"
#include "Base/StringLiterals.h"
#include "Core/Dictation/DictationController.h"
#include "Support/FakeWhisper.h"
#include "Support/InMemoryPlatform.h"
#include "Support/LogRecorder.h"
#include "Support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gmock/gmock.h>

namespace Velloro {

inline QStringList strings(std::initializer_list<const char *> texts)
{
    QStringList result;
    for (const char *text : texts)
        result << QString::fromUtf8(text);
    return result;
}

/// A pill that tells when it is on screen.
class RecordedPill : public RecordingPill
{
public:
    using Listener = std::function<void(const QString &call)>;

    explicit RecordedPill(Listener listener)
        : m_listener(std::move(listener))
    {
    }
    void show(AppState &) override { m_listener(u"show"_s); }
    void hide() override { m_listener(u"hide"_s); }

private:
    Listener m_listener;
};

/// A controller on a desktop in memory: a focused text field, a microphone, the scripted
/// recogniser, and real (empty) model files.
class DictationControllerTestBase : public ::testing::Test
{
protected:
    DictationControllerTestBase()
    {
        FakeWhisper::reset();
        memory.fileSystem->supportDirectory = directory.path();
        memory.accessibility->focusText(QString(), {0, 0});
    }

    ~DictationControllerTestBase() override
    {
        // What still runs on the executor uses the log and the scripted recogniser.
        controller.reset();
        state.reset();
        EXPECT_TRUE(SerialExecutor::finishAll(std::chrono::seconds(20)));
    }

    void launch()
    {
        hotkeys = std::make_unique<HotkeyManager>(memory.platform);
        state = std::make_unique<AppState>(memory.platform);
        controller
            = std::make_unique<DictationController>(*state, memory.platform, *hotkeys, [this] {
                  ++pillsMade;
                  return std::make_unique<RecordedPill>(
                      [this](const QString &call) { pill << call; });
              });
        hotkeys->registerHotkey();
        controller->updatePermissionStatus();
        log.clear();
    }

    void addModel(const QString &id)
    {
        const QString path = directory.path() + u"/Velloro/Models/ggml-%1.bin"_s.arg(id);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        memory.fileSystem->files.insert(path);
    }

    /// The models that have been read so far, as far as reading them has begun.
    [[nodiscard]] static QStringList readModels()
    {
        QStringList ids;
        for (const FakeWhisper::Load &load : FakeWhisper::loads())
            ids << QFileInfo(load.path).completeBaseName().mid(u"ggml-"_s.size());
        return ids;
    }
    [[nodiscard]] bool waitForModel(const QString &id)
    {
        const WhisperManager &manager = state->whisperManager();
        return waitUntil(
            [&] { return manager.isModelLoaded() && manager.selectedModelId() == id; });
    }

    /// Launches with the model of the selected preset loaded.
    void launchWithModel()
    {
        addModel(u"small"_s);
        launch();
        controller->loadSelectedModelIfNeeded();
        ASSERT_TRUE(waitUntil([&] { return state->whisperManager().isModelLoaded(); }));
        log.clear();
    }

    void press() { memory.hotkeyRegistration->press(); }
    void release() { memory.hotkeyRegistration->release(); }

    [[nodiscard]] bool waitForState(TranscriptionState expected)
    {
        return waitUntil([&] { return state->transcriptionState() == expected; });
    }
    [[nodiscard]] bool waitForMessage(const QString &start)
    {
        return waitUntil([&] {
            const QStringList messages = log.messages(u"Dictation"_s);
            return std::any_of(messages.begin(), messages.end(),
                               [&](const QString &message) { return message.startsWith(start); });
        });
    }

    void speak(int samples) { memory.audioEngine->deliver({std::vector<float>(samples, 0.5F)}); }

    /// One dictation with the hotkey held, from start to end.
    void dictate()
    {
        press();
        ASSERT_TRUE(waitForState(TranscriptionState::listening));
        speak(4096);
        release();
        ASSERT_TRUE(waitForState(TranscriptionState::idle));
    }

    [[nodiscard]] QStringList messages() const { return log.messages(u"Dictation"_s); }
    [[nodiscard]] QString typed() const { return *memory.accessibility->focused->value; }

    QTemporaryDir directory;
    LogRecorder log;
    InMemoryPlatform memory;
    QStringList pill;
    int pillsMade = 0;
    std::unique_ptr<HotkeyManager> hotkeys;
    std::unique_ptr<AppState> state;
    std::unique_ptr<DictationController> controller;
};

} // namespace Velloro

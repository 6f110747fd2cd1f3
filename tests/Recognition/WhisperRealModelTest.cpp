#include "Core/Log.h"
#include "Core/WhisperContext.h"
#include "Support/InMemoryProcessInfo.h"

#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>
#include <gmock/gmock.h>

namespace Velloro {
namespace {

using ::testing::HasSubstr;

/// A context with real models, next to whisper.cpp's own program.
class WhisperRealModelTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const QString folder = qEnvironmentVariable("VELLORO_MODEL_DIR");
        if (folder.isEmpty())
            GTEST_SKIP() << "VELLORO_MODEL_DIR names no folder with speech models";
        models = QDir(folder).entryInfoList({QStringLiteral("ggml-*.bin")}, QDir::Files, QDir::Size);
        if (models.isEmpty())
            GTEST_SKIP() << "no speech model in " << folder.toStdString();
        QFile file(QStringLiteral(VOICE_RECORDING));
        if (!file.open(QIODevice::ReadOnly))
            GTEST_SKIP() << "no recording of a voice at " VOICE_RECORDING;
        const QByteArray wav = file.readAll();
        const qsizetype chunk = wav.indexOf("data");
        ASSERT_GT(chunk, 0);
        recording = wav.sliced(chunk + 8);
        Log::setSink([](const QString &) {});
    }

    void TearDown() override { Log::setSink({}); }

    /// 16-bit samples as the command-line program reads them.
    static std::vector<float> samplesOf(const QByteArray &data)
    {
        std::vector<float> samples;
        for (qsizetype offset = 0; offset + 1 < data.size(); offset += 2)
            samples.push_back(qFromLittleEndian<qint16>(data.constData() + offset) / 32768.0F);
        return samples;
    }

    /// A sound file of 16-bit samples.
    static QByteArray wavOf(const QByteArray &data)
    {
        QByteArray wav;
        QDataStream stream(&wav, QIODevice::WriteOnly);
        stream.setByteOrder(QDataStream::LittleEndian);
        const auto size = static_cast<quint32>(data.size());
        stream.writeRawData("RIFF", 4);
        stream << quint32(size + 36);
        stream.writeRawData("WAVEfmt ", 8);
        // Plain samples, one channel; rate, bytes per second, bytes and bits per sample.
        stream << quint32(16) << quint16(1) << quint16(1) << quint32(16'000) << quint32(32'000)
               << quint16(2) << quint16(16);
        stream.writeRawData("data", 4);
        stream << size;
        return wav + data;
    }

    static void makeFile(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(file.write(content), content.size());
    }

    /// What the command-line program hears, its segments put together.
    std::string heardByProgram(const QString &model, const QByteArray &data, const QString &prompt)
    {
        const QString base = directory.filePath(QStringLiteral("voice"));
        const QString input = base + QStringLiteral(".wav");
        makeFile(input, wavOf(data));
        QStringList arguments = {
            QStringLiteral("-m"),  model,                // with the model's
            QStringLiteral("-f"),  input,                // hearing of the same samples,
            QStringLiteral("-t"),  QStringLiteral("1"),  // as many threads,
            QStringLiteral("-bs"), QStringLiteral("1"),  // greedy sampling
            QStringLiteral("-bo"), QStringLiteral("5"),  // with the library's candidates
            QStringLiteral("-fa"),                       // and flash attention
            QStringLiteral("-np"), QStringLiteral("-otxt"), QStringLiteral("-of"), base};
        if (!prompt.isEmpty())
            arguments << QStringLiteral("--prompt") << prompt;
        QProcess program;
        program.start(QStringLiteral(WHISPER_CLI), arguments);
        EXPECT_TRUE(program.waitForFinished(240'000)) << program.errorString().toStdString();
        EXPECT_EQ(program.exitCode(), 0);
        QFile text(base + QStringLiteral(".txt"));
        EXPECT_TRUE(text.open(QIODevice::ReadOnly));
        return text.readAll().replace('\n', "").trimmed().toStdString();
    }

    QTemporaryDir directory;
    QFileInfoList models;
    /// The samples of the voice, 16-bit, mono, 16 kHz.
    QByteArray recording;
    /// One thread: several spin while they wait for each other, and starve on a busy machine.
    InMemoryProcessInfo processInfo = [] {
        InMemoryProcessInfo info;
        info.cores = 2;
        return info;
    }();
};

TEST_F(WhisperRealModelTest, HearsWhatTheProgramOfTheLibraryHears)
{
    if (!QFile::exists(QStringLiteral(WHISPER_CLI)))
        GTEST_SKIP() << "whisper.cpp's command-line program is not there";
    const QString word = QStringLiteral("Velloro");
    // Longer than the library's window of half a minute, so in several segments, and biased.
    const QByteArray longer = recording.repeated(3);
    const auto hear = [&](const QString &model, const QByteArray &data, const QString &prompt) {
        WhisperContext context(processInfo);
        EXPECT_TRUE(context.loadModel(model).result());
        if (!prompt.isEmpty())
            context.setCustomDictionary({prompt});
        return context.transcribe(samplesOf(data)).result().toStdString();
    };
    for (const QFileInfo &model : std::as_const(models)) {
        SCOPED_TRACE(model.fileName().toStdString());
        const QString path = model.filePath();
        const std::string once = hear(path, recording, {});
        EXPECT_THAT(once, HasSubstr("what you can do for your country"));
        EXPECT_EQ(once, heardByProgram(path, recording, {}));
        EXPECT_EQ(hear(path, longer, word), heardByProgram(path, longer, word));
    }
}

TEST_F(WhisperRealModelTest, SurvivesOddLanguages)
{
    const std::vector<float> voice = samplesOf(recording);
    // The smallest is enough for what must only not fall over.
    WhisperContext context(processInfo);
    ASSERT_TRUE(context.loadModel(models.last().filePath()).result());
    EXPECT_EQ(context.transcribe({0.5F}).result(), QString());
    for (const char *code : {"auto", "pl", "no such language", ""}) {
        context.setLanguage(QString::fromUtf8(code));
        context.transcribe(voice).waitForFinished();
    }
    context.setLanguage(QStringLiteral("en"));
    EXPECT_THAT(context.transcribe(voice).result().toStdString(), HasSubstr("country"));
}

TEST_F(WhisperRealModelTest, RefusesFilesThatAreNoWholeModel)
{
    QFile file(models.last().filePath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    QByteArray noise(1'000'000, Qt::Uninitialized);
    for (qsizetype index = 0; index < noise.size(); ++index)
        noise[index] = static_cast<char>((index * 2654435761U) >> 13);

    const QString path = directory.filePath(QStringLiteral("ggml-damaged.bin"));
    WhisperContext context(processInfo);
    const auto expectRefused = [&](const QByteArray &content, const char *what) {
        makeFile(path, content);
        const WhisperContext::LoadResult result = context.loadModel(path).result();
        ASSERT_FALSE(result) << what;
        EXPECT_EQ(result.error(), WhisperContextError::modelLoadFailed) << what;
    };
    expectRefused({}, "empty");
    expectRefused(noise, "noise");
    expectRefused(whole.first(4) + noise, "noise that begins like a model");
    expectRefused(whole.first(48) + noise, "noise after a good header");
    for (const qsizetype size : {1LL, 4LL, 20LL, 48LL, 1000LL, 100'000LL, 1'000'000LL,
                                 whole.size() / 2, whole.size() - 1}) {
        expectRefused(whole.first(size), "cut off");
    }

    makeFile(path, whole);
    EXPECT_TRUE(context.loadModel(path).result());
    EXPECT_THAT(context.transcribe(samplesOf(recording)).result().toStdString(),
                HasSubstr("country"));
}

} // namespace
} // namespace Velloro

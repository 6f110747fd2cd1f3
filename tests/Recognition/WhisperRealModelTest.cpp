#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Core/Recognition/WhisperContext.h"
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
        models = QDir(folder).entryInfoList({u"ggml-*.bin"_s}, QDir::Files, QDir::Size);
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
        const QString base = directory.filePath(u"voice"_s);
        const QString input = base + u".wav"_s;
        makeFile(input, wavOf(data));
        QStringList arguments = {u"-m"_s,  model,  // with the model's
                                 u"-f"_s,  input,  // hearing of the same samples,
                                 u"-t"_s,  u"1"_s, // as many threads,
                                 u"-bs"_s, u"1"_s, // greedy sampling
                                 u"-bo"_s, u"5"_s, // with the library's candidates
                                 u"-fa"_s,         // and flash attention
                                 u"-np"_s, u"-otxt"_s, u"-of"_s, base};
        if (!prompt.isEmpty())
            arguments << u"--prompt"_s << prompt;
        QProcess program;
        program.start(QStringLiteral(WHISPER_CLI), arguments);
        EXPECT_TRUE(program.waitForFinished(240'000)) << program.errorString().toStdString();
        EXPECT_EQ(program.exitCode(), 0);
        QFile text(base + u".txt"_s);
        EXPECT_TRUE(text.open(QIODevice::ReadOnly));
        return text.readAll().replace('\n', "").trimmed().toStdString();
    }

    QTemporaryDir directory;
    QFileInfoList models;
    /// The samples of the voice, 16-bit, mono, 16 kHz.
    QByteArray recording;
    /// One thread: several spin while they wait for each other, and starve on a busy machine.
    std::shared_ptr<const ProcessInfo> processInfo = [] {
        auto info = std::make_shared<InMemoryProcessInfo>();
        info->cores = 2;
        return info;
    }();
};

TEST_F(WhisperRealModelTest, HearsWhatTheProgramOfTheLibraryHears)
{
    if (!QFile::exists(QStringLiteral(WHISPER_CLI)))
        GTEST_SKIP() << "whisper.cpp's command-line program is not there";
    const QString word = u"Velloro"_s;
    // Longer than the library's window of half a minute, so in several segments, and biased.
    const QByteArray longer = recording.repeated(3);
    const auto hear = [&](const QString &model, const QByteArray &data, const QString &prompt) {
        WhisperContext context(processInfo);
        EXPECT_TRUE(context.loadModel(model).result());
        if (!prompt.isEmpty())
            context.setCustomDictionary({prompt});
        return context.transcribe(samplesOf(data)).result()->toStdString();
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

TEST_F(WhisperRealModelTest, SurvivesOddLanguagesAndDictionaries)
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
    context.setLanguage(u"en"_s);
    // A word without end neither, and it leaves room for those behind it.
    context.setCustomDictionary({QString(20'000, u'語'), u"Kubernetes"_s});
    EXPECT_THAT(context.transcribe(voice).result()->toStdString(), HasSubstr("country"));
}

} // namespace
} // namespace Velloro

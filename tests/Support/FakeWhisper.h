#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

/// A scripted recogniser in the place of whisper.cpp, linked into the unit tests.
///
/// Without a script every file that exists loads as a model, and every transcription hears the one
/// segment " Hello world.". Any thread. Freeing a handle twice, using a freed one, freeing a model
/// before its decoding state, and two transcriptions at a time on one state end the test program.
namespace Velloro::FakeWhisper {

/// What one transcription gives.
struct Result
{
    /// UTF-8 texts; an absent one is reported as a null text.
    QList<std::optional<QByteArray>> segments = {};
    /// What the library returns: 0 for success.
    int code = 0;
};

/// What one transcription was called with.
struct Call
{
    std::vector<float> samples;
    /// All that the library reads of them: the first 201, however few there are.
    std::vector<float> samplesRead;
    int threads = 0;
    bool greedy = false;
    bool noContext = false;
    QByteArray language;
    /// Absent when the field was left null.
    std::optional<QByteArray> prompt;
    /// Offset, translation, single segment and the four print flags, which have other defaults
    /// here than in the library, are all zero.
    bool quiet = false;
    /// Every other field has the library's default.
    bool othersUntouched = false;
    bool timingsReset = false;
};

/// What one model was loaded with.
struct Load
{
    QString path;
    bool flashAttention = false;
    /// Every other field has the library's default.
    bool othersUntouched = false;
};

/// Forgets scripts and records, and opens what is held. Live models stay counted.
void reset();

/// Decides by its path which existing file loads; an empty script restores the default.
void setLoadScript(std::function<bool(const QString &path)> script);
/// What comes of creating a decoding state from now on: one, none, or an exception.
enum class StateCreation { succeeds, fails, throws };
void setStateCreation(StateCreation outcome);
/// The results of the next transcriptions, in order; after them comes the default again.
void enqueue(Result result);
/// Shorthand for a successful transcription that hears these segments.
void enqueueSegments(const QList<QByteArray> &segments);

[[nodiscard]] std::vector<Call> calls();
[[nodiscard]] std::vector<Load> loads();
/// Models and decoding states that are not freed.
[[nodiscard]] int liveContexts();
[[nodiscard]] int liveStates();
/// Whether the library's own log has been silenced; `reset` does not forget it.
[[nodiscard]] bool isLogSilenced();

/// Where the recogniser can be held.
enum class Point { load, transcription, release };

/// Holds every load, transcription or freeing of a model, as long as it lives, before it begins.
class Hold
{
public:
    explicit Hold(Point point = Point::transcription);
    ~Hold();
    Hold(const Hold &) = delete;
    Hold &operator=(const Hold &) = delete;

    /// Waits until a call is held here, at most 10 s; false when none came.
    [[nodiscard]] bool waitUntilHeld() const;
    /// Lets one call through, the one held or the next.
    void letOneThrough();
    /// Holds nothing any more.
    void release();

private:
    Point m_point;
};

} // namespace Velloro::FakeWhisper

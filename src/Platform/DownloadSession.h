#pragma once

#include "Platform/PlatformError.h"

#include <QUrl>
#include <cstdint>
#include <optional>

namespace Velloro {

/// A download of a session; 0 is none.
using DownloadTaskId = uint64_t;

/// What a session reports, on the main thread.
class DownloadSessionDelegate
{
public:
    virtual ~DownloadSessionDelegate() = default;

    /// Bytes arrived. `totalBytesExpected` is not positive when the size is unknown.
    virtual void downloadDidWriteData(DownloadTaskId task, int64_t totalBytesWritten,
                                      int64_t totalBytesExpected)
        = 0;
    /// The whole file arrived and lies at `location`, from where it has to be moved before this
    /// returns: the session removes what is still there afterwards.
    virtual void downloadDidFinish(DownloadTaskId task, const QString &location) = 0;
    /// The transfer ended, with an error or (after `downloadDidFinish`) without.
    virtual void downloadDidComplete(DownloadTaskId task, const std::optional<PlatformError> &error)
        = 0;
};

/// Downloads files in the background. Main thread only.
///
/// Redirects are followed. A status that promises no whole file, an empty body, one shorter than
/// promised, a connection on which nothing arrives for a while and a disk that is full are errors.
/// Partial data lies in temporary files that never carry the name of what is downloaded; they are
/// removed when the transfer ends, when the session ends and, after a crash, when the next session
/// is made.
class DownloadSession
{
public:
    /// Cancels what still runs, without reports.
    virtual ~DownloadSession() = default;

    /// Makes a download task; nothing happens until `resume`.
    [[nodiscard]] virtual DownloadTaskId downloadTask(const QUrl &url) = 0;
    virtual void resume(DownloadTaskId task) = 0;
};

} // namespace Velloro

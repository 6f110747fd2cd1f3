#pragma once

#include "Platform/DownloadSession.h"

#include <QList>
#include <QString>

namespace Velloro {

/// A session that transfers nothing: the test reports in its place, through `delegate`.
class InMemoryDownloadSession : public DownloadSession
{
public:
    struct Task
    {
        QUrl url;
        bool resumed = false;
    };

    InMemoryDownloadSession(DownloadSessionDelegate &newDelegate, const QString &directory)
        : delegate(newDelegate)
        , temporaryDirectory(directory)
    {
    }

    DownloadSessionDelegate &delegate;
    QString temporaryDirectory;
    /// In the order in which they were made; task `n` is at `n - 1`.
    QList<Task> tasks;

    DownloadTaskId downloadTask(const QUrl &url) override
    {
        tasks.append({url, false});
        return static_cast<DownloadTaskId>(tasks.size());
    }

    void resume(DownloadTaskId task) override
    {
        tasks[static_cast<qsizetype>(task) - 1].resumed = true;
    }
};

} // namespace Velloro

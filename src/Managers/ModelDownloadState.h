#pragma once

#include <QString>
#include <variant>

namespace Velloro {

/// Where a catalogue model stands. Two states are equal when their cases and payloads are.
struct ModelDownloadState
{
    struct NotDownloaded
    {
        friend bool operator==(NotDownloaded, NotDownloaded) = default;
    };
    struct Downloading
    {
        /// The fraction received so far, 0.0 to 1.0.
        double progress = 0;
        friend bool operator==(Downloading, Downloading) = default;
    };
    struct Downloaded
    {
        friend bool operator==(Downloaded, Downloaded) = default;
    };
    struct Failed
    {
        /// The platform's description of the error.
        QString error;
        friend bool operator==(const Failed &, const Failed &) = default;
    };

    std::variant<NotDownloaded, Downloading, Downloaded, Failed> value;

    [[nodiscard]] static ModelDownloadState notDownloaded() { return {NotDownloaded{}}; }
    [[nodiscard]] static ModelDownloadState downloading(double progress)
    {
        return {Downloading{progress}};
    }
    [[nodiscard]] static ModelDownloadState downloaded() { return {Downloaded{}}; }
    [[nodiscard]] static ModelDownloadState failed(const QString &error) { return {Failed{error}}; }

    [[nodiscard]] bool isDownloaded() const { return std::holds_alternative<Downloaded>(value); }

    friend bool operator==(const ModelDownloadState &, const ModelDownloadState &) = default;
};

} // namespace Velloro

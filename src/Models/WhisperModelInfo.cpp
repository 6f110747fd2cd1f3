#include "Models/WhisperModelInfo.h"

#include "Base/StringLiterals.h"

#include <QHash>
#include <array>
#include <charconv>

namespace Velloro {

QUrl WhisperModelInfo::downloadURL(const QString &baseUrl) const
{
    return QUrl(baseUrl + fileName);
}

QString WhisperModelInfo::fileSizeFormatted() const
{
    constexpr int megabytesPerGigabyte = 1024;
    if (fileSizeMB < megabytesPerGigabyte)
        return QString::number(fileSizeMB) + u" MB"_s;
    // Not printf, whose decimal point follows the user's locale.
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(),
                                   static_cast<double>(fileSizeMB) / megabytesPerGigabyte,
                                   std::chars_format::fixed, 1)
                         .ptr;
    return QString::fromLatin1(digits.data(), end - digits.data()) + u" GB"_s;
}

std::optional<QString> WhisperModelInfo::badgeText() const
{
    if (id == u"small-q8_0")
        return u"Recommended"_s;
    if (id == u"large-v3-turbo")
        return u"Best Quality"_s;
    if (id == u"tiny-q5_1")
        return u"Fastest"_s;
    return std::nullopt;
}

size_t qHash(const WhisperModelInfo &info, size_t seed)
{
    return qHashMulti(seed, info.id, info.displayName, info.fileName,
                      static_cast<int>(info.category), static_cast<int>(info.size),
                      static_cast<int>(info.quantization), info.fileSizeMB, info.accuracyStars,
                      info.speedStars, info.ramUsageMB, info.englishOnly);
}

} // namespace Velloro

#include "Platform/Linux/Process/LinuxProcessInfo.h"

#include "Base/CustomDelete.h"
#include "Base/StringLiterals.h"

#include <QFileInfo>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <memory>
#include <thread>

namespace Velloro {

namespace {

QString demangled(const char *symbol)
{
    int status = 0;
    const std::unique_ptr<char, CustomDelete<std::free>> text(
        abi::__cxa_demangle(symbol, nullptr, nullptr, &status));
    return QString::fromUtf8(text ? text.get() : symbol);
}

QString describe(int number, void *frame)
{
    const auto address = reinterpret_cast<quintptr>(frame);
    QString object = u"???"_s;
    QString place;
    if (Dl_info info; dladdr(frame, &info) != 0) {
        object = QFileInfo(QFile::decodeName(info.dli_fname)).fileName();
        // Without a symbol the offset in the file is what a debugger can be asked about.
        place = info.dli_sname ? u"%1 + %2"_s.arg(demangled(info.dli_sname))
                                     .arg(address - reinterpret_cast<quintptr>(info.dli_saddr))
                               : u"%1 + 0x%2"_s.arg(object).arg(
                                     address - reinterpret_cast<quintptr>(info.dli_fbase), 0, 16);
    }
    return u"%1 %2 0x%3 %4"_s.arg(number, -3)
        .arg(object, -30)
        .arg(address, 16, 16, QLatin1Char('0'))
        .arg(place);
}

} // namespace

int LinuxProcessInfo::processorCount() const
{
    return std::max(static_cast<int>(std::thread::hardware_concurrency()), 1);
}

QStringList LinuxProcessInfo::callStackSymbols() const
{
    std::array<void *, 128> frames{};
    const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
    QStringList lines;
    // The innermost is this function itself.
    for (int index = 1; index < count; ++index)
        lines += describe(index - 1, frames.at(static_cast<size_t>(index)));
    return lines;
}

} // namespace Velloro

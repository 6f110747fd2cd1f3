#pragma once

#include "Base/StringLiterals.h"
#include "Platform/LoginItem.h"

#include <QStringList>

namespace Velloro {

/// A login item that remembers what was asked of it, and refuses when told to.
class InMemoryLoginItem : public LoginItem
{
public:
    /// "register", "unregister" and "refresh", in order.
    QStringList calls;
    std::optional<PlatformError> error;

    Result registerItem() override { return answer(u"register"_s); }
    Result unregisterItem() override { return answer(u"unregister"_s); }
    Result refresh() override { return answer(u"refresh"_s); }

private:
    Result answer(const QString &call)
    {
        calls << call;
        if (error)
            return tl::unexpected(*error);
        return {};
    }
};

} // namespace Velloro

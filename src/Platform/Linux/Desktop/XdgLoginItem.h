#pragma once

#include "Platform/LoginItem.h"

namespace Velloro {

/// The login item as an entry in the user's autostart folder, which every desktop reads.
class XdgLoginItem : public LoginItem
{
public:
    /// `program` is the absolute path that is started; empty for the running program's own.
    explicit XdgLoginItem(const QString &program = {});

    Result registerItem() override;
    Result unregisterItem() override;
    Result refresh() override;

    /// Where the entry lies.
    [[nodiscard]] static QString entryPath();

private:
    [[nodiscard]] QString program() const;

    QString m_program;
};

} // namespace Velloro

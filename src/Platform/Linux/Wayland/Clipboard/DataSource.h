#pragma once

#include "Base/FileDescriptor.h"

#include <QByteArray>
#include <functional>

namespace Velloro {

/// Something that this program puts into a selection. With its end the selection is empty, unless
/// something else is there by then.
class DataSource
{
public:
    /// Who has it. The source may be destroyed by them.
    struct Owner
    {
        /// A program wants this form, written into the pipe.
        std::function<void(const QByteArray &mimeType, FileDescriptor pipe)> send;
        /// Something else is there now. Once.
        std::function<void()> cancelled;
    };

    virtual ~DataSource() = default;
};

} // namespace Velloro

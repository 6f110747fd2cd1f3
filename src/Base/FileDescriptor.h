#pragma once

#include <QByteArray>
#include <sys/types.h>

namespace Velloro {

/// A file descriptor that is closed with its owner.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    /// Takes over a descriptor; a negative one stands for none.
    explicit FileDescriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    FileDescriptor(FileDescriptor &&other) noexcept;
    FileDescriptor &operator=(FileDescriptor &&other) noexcept;
    ~FileDescriptor();

    /// Opens a file, which programs that are started do not inherit. `errno` tells of a failure.
    [[nodiscard]] static FileDescriptor open(const QByteArray &path, int flags, mode_t mode = 0);

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] int get() const { return m_descriptor; }

private:
    int m_descriptor = -1;
};

} // namespace Velloro

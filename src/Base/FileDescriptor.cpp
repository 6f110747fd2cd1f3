#include "Base/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace Velloro {

FileDescriptor::FileDescriptor(FileDescriptor &&other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

FileDescriptor &FileDescriptor::operator=(FileDescriptor &&other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

FileDescriptor::~FileDescriptor()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

FileDescriptor FileDescriptor::open(const QByteArray &path, int flags, mode_t mode)
{
    return FileDescriptor(::open(path.constData(), flags | O_CLOEXEC, mode));
}

} // namespace Velloro

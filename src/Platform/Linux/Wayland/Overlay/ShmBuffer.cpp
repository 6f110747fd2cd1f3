#include "Platform/Linux/Wayland/Overlay/ShmBuffer.h"

#include "Base/FileDescriptor.h"

#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace Velloro {

namespace {

constexpr QImage::Format format = QImage::Format_ARGB32_Premultiplied;
constexpr int bytesPerPixel = 4;

} // namespace

std::unique_ptr<ShmBuffer> ShmBuffer::make(wl_shm &memory, QSize pixels,
                                           std::function<void()> released)
{
    const int stride = pixels.width() * bytesPerPixel;
    const int size = stride * pixels.height();
    const FileDescriptor file(memfd_create("velloro-overlay", MFD_CLOEXEC));
    if (!file.isOpen() || ftruncate(file.get(), size) != 0)
        return nullptr;
    void *bytes = mmap(nullptr, size_t(size), PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    if (bytes == MAP_FAILED)
        return nullptr;

    std::unique_ptr<ShmBuffer> made(new ShmBuffer(
        pixels, {static_cast<std::byte *>(bytes), size_t(size)}, std::move(released)));
    const WaylandHandle<wl_shm_pool> pool(wl_shm_create_pool(&memory, file.get(), size),
                                          {wl_shm_pool_destroy});
    made->m_buffer = {wl_shm_pool_create_buffer(pool.get(), 0, pixels.width(), pixels.height(),
                                                stride, WL_SHM_FORMAT_ARGB8888),
                      {wl_buffer_destroy}};
    static constexpr wl_buffer_listener listener{
        .release =
            [](void *data, wl_buffer *) {
                auto *self = static_cast<ShmBuffer *>(data);
                self->m_isFree = true;
                self->m_released();
            },
    };
    wl_buffer_add_listener(made->m_buffer.get(), &listener, made.get());
    return made;
}

ShmBuffer::ShmBuffer(QSize pixels, std::span<std::byte> bytes, std::function<void()> released)
    : m_pixels(pixels)
    , m_bytes(bytes)
    , m_released(std::move(released))
{
}

ShmBuffer::~ShmBuffer()
{
    munmap(m_bytes.data(), m_bytes.size());
}

wl_buffer *ShmBuffer::fill(const QImage &picture)
{
    const QImage pixels = picture.convertToFormat(format);
    std::memcpy(m_bytes.data(), pixels.constBits(), m_bytes.size());
    m_isFree = false;
    return m_buffer.get();
}

} // namespace Velloro

#pragma once

#include "Platform/Linux/Wayland/WaylandConnection.h"

#include <QImage>
#include <functional>
#include <memory>
#include <span>

namespace Velloro {

/// Memory that the compositor shows a picture from.
class ShmBuffer
{
public:
    /// Null where there is no memory. `released` is called when the compositor has done with a
    /// picture.
    [[nodiscard]] static std::unique_ptr<ShmBuffer> make(wl_shm &memory, QSize pixels,
                                                         std::function<void()> released);
    ~ShmBuffer();
    ShmBuffer(const ShmBuffer &) = delete;
    ShmBuffer &operator=(const ShmBuffer &) = delete;

    /// Whether the compositor does not read from it.
    [[nodiscard]] bool isFree() const { return m_isFree; }
    [[nodiscard]] QSize pixels() const { return m_pixels; }

    /// Takes a picture of this size, to be attached to a surface: it is not free then.
    [[nodiscard]] wl_buffer *fill(const QImage &picture);

private:
    ShmBuffer(QSize pixels, std::span<std::byte> bytes, std::function<void()> released);

    QSize m_pixels;
    std::span<std::byte> m_bytes;
    std::function<void()> m_released;
    WaylandHandle<wl_buffer> m_buffer;
    bool m_isFree = true;
};

} // namespace Velloro

#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QList>
#include <QObject>
#include <QString>
#include <cstdint>
#include <functional>
#include <optional>
#include <sys/types.h>

namespace Velloro {

/// Our extension of GNOME Shell, where the user has enabled it. Main thread only.
class ShellExtension final : public QObject
{
    Q_OBJECT

public:
    /// The window that has the focus.
    struct Window
    {
        uint64_t number = 0;
        pid_t process = 0;
        QString windowClass;
    };

    explicit ShellExtension(const QDBusConnection &sessionBus);

    /// Finds out whether it is there, without waiting; `availabilityChanged` tells what changes.
    void look(std::function<void(bool isAvailable)> done);

    [[nodiscard]] bool isAvailable() const { return m_isAvailable; }

    /// Takes a combination, such as "<Alt>0x41" with the key's X keycode, instead of the one
    /// before. Does not wait. Hands over whether the shell has another use for it; nothing where
    /// there is no answer.
    void bind(const QString &accelerator, std::function<void(std::optional<bool> isTaken)> handler);
    void unbind();

    /// Presses and releases keys by evdev's numbers, one of the strokes that paste or delete, when
    /// the user holds no modifier. Waits 0.3 s at most; false where they were not sent.
    [[nodiscard]] bool stroke(const QList<uint32_t> &keys);
    /// Nothing where no window has the focus; waits as long at most.
    [[nodiscard]] std::optional<Window> focusedWindow();

Q_SIGNALS:
    void availabilityChanged();
    void pressed();
    void released();

private:
    [[nodiscard]] QVariantList ask(const QString &method, const QVariantList &arguments = {});
    void setAvailable(bool isAvailable);

    QDBusConnection m_bus;
    QDBusServiceWatcher m_watcher;
    bool m_isAvailable = false;
};

} // namespace Velloro

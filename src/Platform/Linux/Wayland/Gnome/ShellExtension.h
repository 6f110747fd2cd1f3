#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <cstdint>
#include <functional>
#include <initializer_list>
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
    /// What became of a binding.
    struct Binding
    {
        bool isTaken = false;
        bool tellsRelease = false;
    };

    /// Whether it is there is told by `availabilityChanged` soon.
    explicit ShellExtension(const QDBusConnection &sessionBus);

    [[nodiscard]] bool isAvailable() const { return m_isAvailable; }

    /// Takes a combination, such as "<Alt>0x41" with the key's X keycode, instead of the one
    /// before. Does not wait; nothing is handed over where there is no answer.
    void bind(const QString &accelerator, std::function<void(std::optional<Binding>)> handler);
    void unbind();

    /// Presses and releases keys by evdev's numbers. Waits a quarter of a second at most; false
    /// where they were not sent.
    [[nodiscard]] bool stroke(std::initializer_list<uint32_t> keys);
    /// Types a text where the focused field takes it from an input method; waits as long at most.
    /// False where it does not.
    [[nodiscard]] bool commit(const QString &text);
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

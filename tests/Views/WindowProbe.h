#pragma once

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

namespace Velloro {

/// A window as its user meets it: by keys, and by what the screen reader is told.
class WindowProbe
{
public:
    explicit WindowProbe(QQuickWindow *window)
        : m_window(window)
    {
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(m_window, key, modifiers);
    }

    /// The accessible name of what has the keyboard.
    [[nodiscard]] QString focusedName() const
    {
        QQuickItem *item = m_window->activeFocusItem();
        QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(item);
        return interface ? interface->text(QAccessible::Name) : QString();
    }

    /// Presses Tab until the control with this name has the keyboard; false when none gets it.
    [[nodiscard]] bool tabTo(const QString &name) const
    {
        for (int count = 0; count < 60; ++count) {
            if (focusedName() == name)
                return true;
            press(Qt::Key_Tab);
        }
        return false;
    }

    /// The item with this object name; of several, the first.
    [[nodiscard]] QQuickItem *item(const QString &name) const
    {
        return find(m_window->contentItem(), name);
    }

private:
    [[nodiscard]] static QQuickItem *find(QQuickItem *item, const QString &name)
    {
        if (item->objectName() == name)
            return item;
        for (QQuickItem *child : item->childItems()) {
            if (QQuickItem *found = find(child, name))
                return found;
        }
        return nullptr;
    }

    QQuickWindow *m_window;
};

} // namespace Velloro

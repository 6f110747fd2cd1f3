#pragma once

#include "Support/WaitUntil.h"

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <algorithm>

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

    /// Keeps the key down long enough to repeat, as the X server tells of it.
    void hold(Qt::Key key) const
    {
        send(QEvent::KeyPress, key, false);
        for (int count = 0; count < 5; ++count) {
            send(QEvent::KeyRelease, key, true);
            send(QEvent::KeyPress, key, true);
        }
        send(QEvent::KeyRelease, key, false);
    }

    /// Clicks in the middle of the item with this object name.
    void click(const QString &name) const
    {
        QTest::mouseClick(m_window, Qt::LeftButton, {}, middle(name));
    }
    void doubleClick(const QString &name) const
    {
        QTest::mouseDClick(m_window, Qt::LeftButton, {}, middle(name));
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

    /// Whether the ring of what has the keyboard is to be seen.
    [[nodiscard]] bool showsFocus() const
    {
        QQuickItem *item = m_window->activeFocusItem();
        return item && hasVisibleRing(*item);
    }

    /// Whether all of the item is inside the one that clips it.
    [[nodiscard]] static bool isInSight(const QQuickItem &item)
    {
        const QQuickItem *clip = &item;
        while (clip->parentItem() && !clip->clip())
            clip = clip->parentItem();
        return clip->mapRectToScene(clip->boundingRect())
            .contains(item.mapRectToScene(item.boundingRect()));
    }

    /// The names of the buttons in the window that are too small to be hit, and stay so: what has
    /// just been made gets its size with a later frame.
    [[nodiscard]] QStringList smallButtons() const
    {
        QStringList names;
        (void)waitUntil([&] {
            names.clear();
            collectSmallButtons(*m_window->contentItem(), names);
            return names.isEmpty();
        });
        return names;
    }

private:
    static void collectSmallButtons(const QQuickItem &item, QStringList &names)
    {
        if (item.isVisible() && item.inherits("QQuickAbstractButton")
            && (item.height() < 24 || item.width() < 24))
            names << item.property("text").toString();
        for (const QQuickItem *child : item.childItems())
            collectSmallButtons(*child, names);
    }
    void send(QEvent::Type type, Qt::Key key, bool isRepeat) const
    {
        QKeyEvent event(type, key, Qt::NoModifier, {}, isRepeat);
        QCoreApplication::sendEvent(m_window, &event);
    }
    [[nodiscard]] QPoint middle(const QString &name) const
    {
        QQuickItem *found = item(name);
        return found ? found->mapToScene(found->boundingRect().center()).toPoint() : QPoint(-1, -1);
    }
    [[nodiscard]] static bool hasVisibleRing(const QQuickItem &item)
    {
        if (QByteArrayView(item.metaObject()->className()).startsWith("FocusRing"))
            return item.isVisible();
        const QList<QQuickItem *> children = item.childItems();
        return std::ranges::any_of(children,
                                   [](const QQuickItem *child) { return hasVisibleRing(*child); });
    }
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

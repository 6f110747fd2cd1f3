#pragma once

#include "Core/State/AppState.h"
#include "Managers/HotkeyManager.h"
#include "Platform/Platform.h"
#include "Views/Windows/ViewEngine.h"

#include <QObject>
#include <QQuickView>
#include <memory>

class QScreen;

namespace Velloro {

/// One window of the program, of a size that follows the text's, or as much of it as the screen
/// has, that is made when it is opened and dropped when it is closed. Main thread only.
class WindowController : public QObject
{
    Q_OBJECT

public:
    ~WindowController() override;

    /// Opens the window, or brings the one that is open before all others; it gets the keyboard. A
    /// view that can't be made is logged and not shown.
    void open();
    void close();

    /// Null while it is closed.
    [[nodiscard]] QQuickWindow *window() const { return m_window.get(); }

protected:
    /// What a window is made of: the view, its QML file, and the object that is the file's property
    /// `model`.
    struct Content
    {
        std::unique_ptr<QQuickView> view;
        /// For text of the usual size.
        QSize size;
        QString file;
        std::unique_ptr<QObject> model;
    };

    /// All of these outlive it.
    WindowController(Platform &platform, AppState &appState, HotkeyManager &hotkeyManager,
                     ViewEngine &engine, QObject *parent);

    [[nodiscard]] virtual Content makeContent() = 0;
    /// The size for text as large as the desktop wants it, on this screen.
    [[nodiscard]] QSize grown(QSize size, const QScreen *screen) const;
    /// Destroys the window at once: for the destructors of those whose members it uses.
    void drop();

    Platform &m_platform;
    AppState &m_appState;
    HotkeyManager &m_hotkeyManager;
    ViewEngine &m_engine;

private:
    void bringToFront();
    /// Where the desktop has the places and the focus to itself: it gives both to new windows.
    void showAnew();
    void fit(QWindow &window, QSize size) const;
    /// Where the desktop places windows itself, it may have chosen another screen, or scale it
    /// otherwise.
    void followScreens(QSize size);
    void fitAgain(QSize size);

    std::unique_ptr<QQuickView> m_window;
    /// While it is hidden only to be shown again.
    bool m_isShownAnew = false;
};

} // namespace Velloro

#pragma once

#include "Views/ViewEngine.h"

#include <QQuickView>
#include <memory>

namespace Velloro {

/// One window of the program that is made when it is opened and dropped when it is closed. Main
/// thread only.
class ViewWindow
{
public:
    ViewWindow() = default;
    ~ViewWindow();
    Q_DISABLE_COPY_MOVE(ViewWindow)

    /// Shows `view` with this QML file and its property `model`, which the window takes over. A
    /// view that can't be made is logged and not shown.
    void open(std::unique_ptr<QQuickView> view, const QString &file,
              std::unique_ptr<QObject> model);
    /// Brings the window before all others and gives it the keyboard; nothing without one.
    void bringToFront();
    void close();

    /// Null while there is none.
    [[nodiscard]] QQuickView *window() const { return m_window.get(); }

private:
    std::unique_ptr<QQuickView> m_window;
};

} // namespace Velloro

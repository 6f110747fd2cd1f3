#pragma once

#include "Platform/Appearance.h"
#include "Views/Controls/Theme.h"

#include <QQmlEngine>
#include <memory>

namespace Velloro {

/// The QML engine of all views, made when the first view is. Main thread only.
class ViewEngine
{
public:
    /// `appearance` outlives the engine. Made before the first window, since it decides how windows
    /// are painted.
    explicit ViewEngine(Appearance &appearance);
    ~ViewEngine();

    [[nodiscard]] Appearance &appearance() { return m_appearance; }
    /// The engine with the module `Velloro` and its theme.
    [[nodiscard]] QQmlEngine &engine();
    /// The theme of the engine that has been made.
    [[nodiscard]] Theme &theme() { return *m_theme; }
    [[nodiscard]] bool isMade() const { return m_engine != nullptr; }

    /// Where the QML file with this path in the module lies.
    [[nodiscard]] static QUrl url(const QString &file);

private:
    Appearance &m_appearance;
    std::unique_ptr<Theme> m_theme;
    std::unique_ptr<QQmlEngine> m_engine;
};

} // namespace Velloro

#include "Views/Windows/ViewEngine.h"

#include "Base/StringLiterals.h"

#include <QQuickWindow>

// The module's type registration; referring to it keeps it in the program.
extern void qml_register_types_Velloro();

namespace Velloro {

ViewEngine::ViewEngine(Appearance &appearance)
    : m_appearance(appearance)
{
    // Small windows of text and flat shapes of which little changes at a time: painted by the
    // processor, only what changed, they cost less than a graphics driver's start, its memory and
    // its full repaints (docs/drawing.md has the figures).
    if (const QString software = u"software"_s; QQuickWindow::sceneGraphBackend() != software)
        QQuickWindow::setSceneGraphBackend(software);
}

ViewEngine::~ViewEngine() = default;

QQmlEngine &ViewEngine::engine()
{
    if (m_engine)
        return *m_engine;
    qml_register_types_Velloro();
    m_theme = std::make_unique<Theme>(m_appearance);
    m_engine = std::make_unique<QQmlEngine>();
    m_theme->install(*m_engine);
    m_engine->addImportPath(u"qrc:/"_s);
    return *m_engine;
}

QUrl ViewEngine::url(const QString &file)
{
    return QUrl(u"qrc:/Velloro/"_s + file);
}

} // namespace Velloro

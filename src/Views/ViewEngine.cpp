#include "Views/ViewEngine.h"

#include <QQuickWindow>

// The module's type registration; referring to it keeps it in the program.
extern void qml_register_types_Velloro();

namespace Velloro {

ViewEngine::ViewEngine(Appearance &appearance)
    : m_appearance(appearance)
{
}

ViewEngine::~ViewEngine() = default;

QQmlEngine &ViewEngine::engine()
{
    if (m_engine)
        return *m_engine;
    // Small windows of text and flat shapes of which little changes at a time: painted by the
    // processor, only what changed, they cost less than a graphics driver's start, its memory and
    // its full repaints, and far less where the driver itself is software.
    if (QQuickWindow::sceneGraphBackend().isEmpty())
        QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
    qml_register_types_Velloro();
    m_theme = std::make_unique<Theme>(m_appearance);
    m_engine = std::make_unique<QQmlEngine>();
    m_theme->install(*m_engine);
    m_engine->addImportPath(QStringLiteral("qrc:/"));
    return *m_engine;
}

QUrl ViewEngine::url(const QString &file)
{
    return QUrl(QStringLiteral("qrc:/Velloro/") + file);
}

} // namespace Velloro

#include "Views/ViewWindow.h"

#include "Core/Log.h"

namespace Velloro {

ViewWindow::~ViewWindow()
{
    if (m_window)
        m_window->disconnect();
}

void ViewWindow::open(std::unique_ptr<QQuickView> view, const QString &file,
                      std::unique_ptr<QObject> model)
{
    view->setInitialProperties({{QStringLiteral("model"), QVariant::fromValue(model.get())}});
    // The window's children go after its content, which needs the model to the end.
    model.release()->setParent(view.get());
    view->setSource(ViewEngine::url(file));
    if (view->status() != QQuickView::Ready) {
        for (const QQmlError &error : view->errors())
            Log::line(u"Views", error.toString());
        return;
    }
    m_window = std::move(view);
    QObject::connect(m_window.get(), &QWindow::visibleChanged, m_window.get(), [this](bool visible) {
        // The window is still in the midst of being hidden.
        if (!visible)
            m_window.release()->deleteLater();
    });
    bringToFront();
}

void ViewWindow::bringToFront()
{
    if (!m_window)
        return;
    // One that was made small comes back.
    m_window->setWindowStates(m_window->windowStates() & ~Qt::WindowStates(Qt::WindowMinimized));
    m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

void ViewWindow::close()
{
    if (m_window)
        m_window->close();
}

} // namespace Velloro

#include "Views/Windows/WindowController.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"

#include <QGuiApplication>
#include <QScreen>

namespace Velloro {

WindowController::WindowController(Platform &platform, AppState &appState,
                                   HotkeyManager &hotkeyManager, ViewEngine &engine,
                                   QObject *parent)
    : QObject(parent)
    , m_platform(platform)
    , m_appState(appState)
    , m_hotkeyManager(hotkeyManager)
    , m_engine(engine)
{
}

WindowController::~WindowController()
{
    drop();
}

void WindowController::drop()
{
    if (m_window)
        m_window->disconnect();
    m_window.reset();
}

void WindowController::open()
{
    if (m_window) {
        bringToFront();
        return;
    }
    auto [view, size, file, model] = makeContent();
    view->setResizeMode(QQuickView::SizeRootObjectToView);
    // Before the view: layouts keep the height that texts had while there was little room.
    fit(*view, size);
    view->setInitialProperties({{u"model"_s, QVariant::fromValue(model.get())}});
    // The window's children go after its content, which needs the model to the end.
    model.release()->setParent(view.get());
    view->setSource(ViewEngine::url(file));
    if (view->status() != QQuickView::Ready) {
        for (const QQmlError &error : view->errors())
            Log::line(u"Views", error.toString());
        return;
    }
    m_window = std::move(view);
    connect(&m_engine.theme(), &Theme::changed, m_window.get(),
            [this, size = size] { fitAgain(size); });
    if (!m_platform.screenFrames->canPlaceWindows())
        followScreens(size);
    connect(m_window.get(), &QWindow::visibleChanged, m_window.get(), [this](bool visible) {
        // The window is still in the midst of being hidden.
        if (!visible && !m_isShownAnew)
            m_window.release()->deleteLater();
    });
    bringToFront();
}

QSize WindowController::grown(QSize size, const QScreen *screen) const
{
    const QSize wanted = (QSizeF(size) * m_engine.theme().growth()).toSize();
    return screen ? wanted.boundedTo(screen->availableSize()) : wanted;
}

void WindowController::fit(QWindow &window, QSize size) const
{
    const QSize now = grown(size, window.screen());
    window.setMinimumSize(now);
    window.setMaximumSize(now);
    window.resize(now);
}

void WindowController::followScreens(QSize size)
{
    // Not while the toolkit still deals with the change.
    const auto follow = [&](auto *sender, auto signal) {
        connect(
            sender, signal, m_window.get(), [this, size] { fitAgain(size); }, Qt::QueuedConnection);
    };
    follow(m_window.get(), &QWindow::screenChanged);
    for (QScreen *screen : QGuiApplication::screens())
        follow(screen, &QScreen::availableGeometryChanged);
}

void WindowController::fitAgain(QSize size)
{
    if (!m_window)
        return;
    const QSize before = m_window->size();
    fit(*m_window, size);
    if (m_window->size() != before && !m_platform.screenFrames->canPlaceWindows())
        showAnew();
}

void WindowController::showAnew()
{
    m_isShownAnew = true;
    m_window->hide();
    m_window->show();
    m_isShownAnew = false;
}

void WindowController::bringToFront()
{
    if (m_window->isVisible() && !m_window->isActive()
        && !m_platform.screenFrames->canPlaceWindows())
        showAnew();
    // One that was made small comes back.
    m_window->setWindowStates(m_window->windowStates() & ~Qt::WindowStates(Qt::WindowMinimized));
    m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

void WindowController::close()
{
    if (m_window)
        m_window->close();
}

} // namespace Velloro

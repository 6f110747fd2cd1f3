#include "Views/Pill/RecordingPillWindowController.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Views/Windows/WindowPlacement.h"

#include <QScreen>

namespace Velloro {

namespace {

constexpr double cornerRadius = 24;

void log(const QString &text)
{
    Log::line(u"RecordingPill", text);
}

/// The shortest decimal form, with a fractional part always.
QString decimal(double value)
{
    const QString text = QString::number(value, 'f', QLocale::FloatingPointShortest);
    return text.contains(u'.') ? text : text + u".0"_s;
}

void logErrors(const QList<QQmlError> &errors)
{
    for (const QQmlError &error : errors)
        log(error.toString());
}

QUrl source()
{
    return ViewEngine::url(u"Pill/RecordingPillView.qml"_s);
}

QVariantMap properties(RecordingPillViewModel &model)
{
    return {{u"model"_s, QVariant::fromValue(&model)}};
}

} // namespace

RecordingPillWindowController::RecordingPillWindowController(ViewEngine &engine, Platform &platform)
    : m_engine(engine)
    , m_screenFrames(*platform.screenFrames)
    , m_overlay(platform.overlay.get())
{
}

RecordingPillWindowController::~RecordingPillWindowController() = default;

QQuickWindow *RecordingPillWindowController::window() const
{
    if (m_overlayView)
        return m_overlayView->window();
    return m_window.get();
}

void RecordingPillWindowController::show(AppState &appState)
{
    if (!m_model)
        create(appState);
    if (!m_model) {
        log(u"ERROR: Failed to create window"_s);
        return;
    }
    m_model->setOnScreen(true);
    if (m_overlayView)
        m_overlayView->show(WindowPlacement::pillBottomMargin);
    else
        showWindow();
    const QRect shown = frame();
    log(u"Window shown at (%1, %2, %3, %4)"_s.arg(decimal(shown.x()), decimal(shown.y()),
                                                  decimal(shown.width()), decimal(shown.height())));
}

void RecordingPillWindowController::hide()
{
    if (m_overlayView)
        m_overlayView->hide();
    else if (m_window)
        m_window->hide();
    if (m_model)
        m_model->setOnScreen(false);
    log(u"Window hidden"_s);
}

void RecordingPillWindowController::create(AppState &appState)
{
    m_model = std::make_unique<RecordingPillViewModel>(appState);
    if (m_overlay ? createOverlay() : createWindow())
        log(u"Window created"_s);
    else
        m_model.reset();
}

bool RecordingPillWindowController::createOverlay()
{
    auto view = std::make_unique<OverlayView>(m_engine, *m_overlay);
    if (const auto errors = view->load(source(), properties(*m_model)); !errors.isEmpty()) {
        logErrors(errors);
        return false;
    }
    m_overlayView = std::move(view);
    return true;
}

bool RecordingPillWindowController::createWindow()
{
    // A tooltip is passed over by the window manager: no focus, no task list, no switcher, every
    // desktop, and above windows that fill the screen.
    Qt::WindowFlags flags = Qt::ToolTip | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus;
    if (!m_screenFrames.pointer())
        flags |= Qt::WindowTransparentForInput;
    auto window = std::make_unique<FramelessView>(m_engine, flags, cornerRadius);
    window->setTitle(u"Velloro"_s);
    window->setInitialProperties(properties(*m_model));
    window->setSource(source());
    if (window->status() != QQuickView::Ready) {
        logErrors(window->errors());
        return false;
    }
    // Other windows may have come up above since it was shown.
    QObject::connect(m_model.get(), &RecordingPillViewModel::stateChanged, window.get(),
                     [view = window.get()] {
                         if (view->isVisible())
                             view->raise();
                     });
    m_window = std::move(window);
    return true;
}

void RecordingPillWindowController::showWindow()
{
    positionWindow();
    m_window->show();
    m_window->raise();
}

void RecordingPillWindowController::positionWindow()
{
    const QScreen *screen = WindowPlacement::screenInUse(m_screenFrames);
    if (!screen) {
        log(u"ERROR: No screen available"_s);
        return;
    }
    const QRectF frame = WindowPlacement::visibleFrame(*screen, m_screenFrames);
    const std::optional<QPointF> pointer = m_screenFrames.pointer();
    const QPointF origin = pointer
        ? WindowPlacement::pillOrigin(*pointer, m_window->size(), frame)
        : WindowPlacement::pillOriginWithoutPointer(m_window->size(), frame);
    m_window->setPosition(origin.toPoint());
}

/// Where it is; the place of an overlay is known to the desktop alone.
QRect RecordingPillWindowController::frame() const
{
    return m_overlayView ? QRect({}, m_overlayView->size()) : m_window->geometry();
}

} // namespace Velloro

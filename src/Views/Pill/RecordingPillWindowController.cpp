#include "Views/Pill/RecordingPillWindowController.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Views/Windows/WindowPlacement.h"

#include <QCursor>
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

} // namespace

RecordingPillWindowController::RecordingPillWindowController(ViewEngine &engine,
                                                             ScreenFrames &screenFrames)
    : m_engine(engine)
    , m_screenFrames(screenFrames)
{
}

RecordingPillWindowController::~RecordingPillWindowController() = default;

void RecordingPillWindowController::show(AppState &appState)
{
    if (!m_window)
        createWindow(appState);
    if (!m_window) {
        log(u"ERROR: Failed to create window"_s);
        return;
    }
    positionWindow();
    m_model->setOnScreen(true);
    m_window->show();
    m_window->raise();
    const QRect frame = m_window->geometry();
    log(u"Window shown at (%1, %2, %3, %4)"_s.arg(decimal(frame.x()), decimal(frame.y()),
                                                  decimal(frame.width()), decimal(frame.height())));
}

void RecordingPillWindowController::hide()
{
    if (m_window) {
        m_window->hide();
        m_model->setOnScreen(false);
    }
    log(u"Window hidden"_s);
}

void RecordingPillWindowController::createWindow(AppState &appState)
{
    auto model = std::make_unique<RecordingPillViewModel>(appState);
    // A tooltip is passed over by the window manager: no focus, no task list, no switcher, every
    // desktop, and above windows that fill the screen.
    auto window = std::make_unique<FramelessView>(
        m_engine, Qt::ToolTip | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus,
        cornerRadius);
    window->setTitle(u"Velloro"_s);
    window->setInitialProperties({{u"model"_s, QVariant::fromValue(model.get())}});
    window->setSource(ViewEngine::url(u"Pill/RecordingPillView.qml"_s));
    if (window->status() != QQuickView::Ready) {
        for (const QQmlError &error : window->errors())
            log(error.toString());
        return;
    }
    // Other windows may have come up above since it was shown.
    QObject::connect(model.get(), &RecordingPillViewModel::stateChanged, window.get(),
                     [view = window.get()] {
                         if (view->isVisible())
                             view->raise();
                     });
    m_window = std::move(window);
    m_model = std::move(model);
    log(u"Window created"_s);
}

void RecordingPillWindowController::positionWindow()
{
    const QPointF pointer = QCursor::pos();
    const QScreen *screen = WindowPlacement::screenAt(pointer);
    if (!screen) {
        log(u"ERROR: No screen available"_s);
        return;
    }
    const QRectF frame = WindowPlacement::visibleFrame(*screen, m_screenFrames);
    m_window->setPosition(WindowPlacement::pillOrigin(pointer, m_window->size(), frame).toPoint());
}

} // namespace Velloro

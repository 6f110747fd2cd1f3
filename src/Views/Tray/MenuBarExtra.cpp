#include "Views/Tray/MenuBarExtra.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Views/Controls/SymbolRenderer.h"
#include "Views/Windows/WindowPlacement.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QScreen>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr double cornerRadius = 10;
/// How long a desktop that is starting may take to bring its tray.
constexpr auto trayPatience = 10s;
/// While a panel opens, window managers pass the focus round; one without it for so long has lost
/// it.
constexpr auto focusPatience = 100ms;
/// A click on the icon takes the focus from the panel, which closes this long before the click is
/// reported, at most.
constexpr qint64 sameClickMilliseconds = 300;

} // namespace

MenuBarExtra::MenuBarExtra(Platform &platform, AppState &appState, HotkeyManager &hotkeyManager,
                           ViewEngine &engine, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_engine(engine)
    , m_trayHost(*platform.trayHost)
    , m_screenFrames(*platform.screenFrames)
    , m_model(platform, appState, hotkeyManager)
{
    m_menu.addAction(tr("Open Velloro"), this, &MenuBarExtra::openPanel);
    m_menu.addAction(tr("Settings..."), this, &MenuBarExtra::openSettingsRequested);
    m_menu.addSeparator();
    m_menu.addAction(tr("Quit"), &m_model, &MenuBarViewModel::quit);
    connect(&appState, &AppState::transcriptionStateChanged, this, &MenuBarExtra::updateIcon);
    connect(&engine.appearance(), &Appearance::changed, this, &MenuBarExtra::updateIcon);
    connect(&engine.appearance(), &Appearance::changed, this, &MenuBarExtra::updateMenu);
    updateMenu();
    connect(&m_model, &MenuBarViewModel::openSettingsRequested, this, [this] {
        closePanel();
        Q_EMIT openSettingsRequested();
    });
    connect(&m_model, &MenuBarViewModel::quitRequested, this, &MenuBarExtra::quitRequested);
    connect(&m_model, &MenuBarViewModel::closeRequested, this, &MenuBarExtra::closePanel);
    m_focusLoss.setSingleShot(true);
    connect(&m_focusLoss, &QTimer::timeout, this, &MenuBarExtra::closeWithoutFocus);
}

MenuBarExtra::~MenuBarExtra() = default;

QString MenuBarExtra::symbolName(TranscriptionState state)
{
    switch (state) {
    case TranscriptionState::idle:
        return u"waveform"_s;
    case TranscriptionState::listening:
        return u"waveform.circle.fill"_s;
    case TranscriptionState::transcribing:
        return u"ellipsis.circle.fill"_s;
    case TranscriptionState::inserting:
        return u"checkmark.circle.fill"_s;
    }
    Q_UNREACHABLE();
}

void MenuBarExtra::show()
{
    if (m_trayHost.isPresent()) {
        makeIcon();
        return;
    }
    connect(&m_trayHost, &TrayHost::appeared, this, &MenuBarExtra::makeIcon);
    QTimer::singleShot(trayPatience, this, [this] {
        if (!m_trayIcon)
            m_model.tellOfMissingTray();
    });
}

void MenuBarExtra::makeIcon()
{
    // A tray that ends and comes back is dealt with by the icon.
    if (m_trayIcon)
        return;
    m_trayIcon = std::make_unique<QSystemTrayIcon>();
    m_trayIcon->setContextMenu(&m_menu);
    connect(m_trayIcon.get(), &QSystemTrayIcon::activated, this, &MenuBarExtra::activated);
    updateIcon();
    m_trayIcon->show();
}

void MenuBarExtra::updateIcon()
{
    if (!m_trayIcon)
        return;
    const QColor color = m_engine.appearance().isTrayDark() ? QColor(Qt::white)
                                                            : QColor(0x1c, 0x1c, 0x1e);
    m_trayIcon->setIcon(SymbolRenderer::icon(symbolName(m_appState.transcriptionState()), color));
    m_trayIcon->setToolTip(u"Velloro: %1"_s.arg(m_model.stateText()));
}

void MenuBarExtra::updateMenu()
{
    // Widgets know nothing of a desktop that prefers dark windows.
    m_menu.setPalette(m_engine.appearance().prefersDark() ? QPalette(QColor(0x3c, 0x3c, 0x41))
                                                          : QPalette(QColor(0xf0, 0xf0, 0xf2)));
}

void MenuBarExtra::activated(QSystemTrayIcon::ActivationReason reason)
{
    if (reason == QSystemTrayIcon::Context)
        return;
    if (m_panel && m_panel->isVisible()) {
        closePanel();
        return;
    }
    if (m_closedByFocus.isValid() && m_closedByFocus.elapsed() < sameClickMilliseconds) {
        m_closedByFocus.invalidate();
        return;
    }
    // Where the tray does not tell where its icon is, the pointer is on it.
    const QRect icon = m_trayIcon->geometry();
    const std::optional<QPointF> pointer = m_screenFrames.pointer();
    if (icon.isValid() || !pointer)
        openPanel();
    else
        openPanelBeside({pointer->toPoint() - QPoint(8, 8), QSize(16, 16)});
}

void MenuBarExtra::openPanel()
{
    const QRect icon = m_trayIcon ? m_trayIcon->geometry() : QRect();
    openPanelBeside(icon.isValid() ? icon : cornerOfScreen());
}

QRect MenuBarExtra::cornerOfScreen() const
{
    const QScreen *screen = WindowPlacement::screenInUse(m_screenFrames);
    const QRect frame = screen ? WindowPlacement::visibleFrame(*screen, m_screenFrames) : QRect();
    return {frame.topRight(), QSize(1, 1)};
}

void MenuBarExtra::openPanelBeside(const QRect &anchor)
{
    makePanel();
    if (!m_panel)
        return;
    m_focusLoss.stop();
    if (!m_panel->isVisible()) {
        m_anchor = anchor;
        placePanel();
    }
    m_panel->show();
    m_panel->raise();
    m_panel->requestActivate();
}

void MenuBarExtra::closePanel()
{
    m_focusLoss.stop();
    if (m_panel)
        m_panel->hide();
}

void MenuBarExtra::closeWithoutFocus()
{
    if (m_panel->isActive())
        return;
    closePanel();
    m_closedByFocus.start();
}

void MenuBarExtra::makePanel()
{
    if (m_panel)
        return;
    auto panel = std::make_unique<FramelessView>(m_engine, Qt::Tool | Qt::WindowStaysOnTopHint,
                                                 cornerRadius);
    panel->setTitle(u"Velloro"_s);
    panel->setInitialProperties({{u"model"_s, QVariant::fromValue(&m_model)}});
    panel->setSource(ViewEngine::url(u"Tray/MenuBarView.qml"_s));
    if (panel->status() != QQuickView::Ready) {
        for (const QQmlError &error : panel->errors())
            Log::line(u"MenuBar", error.toString());
        return;
    }
    panel->installEventFilter(this);
    // The panel grows and shrinks with its content; it stays at its icon's side.
    const auto placeVisible = [this] {
        if (m_panel && m_panel->isVisible())
            placePanel();
    };
    connect(panel.get(), &QWindow::heightChanged, this, placeVisible);
    connect(panel.get(), &QWindow::widthChanged, this, placeVisible);
    m_panel = std::move(panel);
    if (m_screenFrames.canPlaceWindows())
        return;
    const QQuickItem *content = m_panel->rootObject();
    connect(content, &QQuickItem::widthChanged, this, &MenuBarExtra::fixPanelSize);
    connect(content, &QQuickItem::heightChanged, this, &MenuBarExtra::fixPanelSize);
    fixPanelSize();
}

void MenuBarExtra::placePanel()
{
    QScreen *screen = WindowPlacement::screenAt(m_anchor.center());
    if (!screen)
        return;
    m_panel->setScreen(screen);
    const QRectF frame = WindowPlacement::visibleFrame(*screen, m_screenFrames);
    m_panel->rootObject()->setProperty("room", WindowPlacement::panelRoom(frame));
    m_panel->setPosition(WindowPlacement::panelOrigin(m_anchor, m_panel->size(), frame).toPoint());
}

void MenuBarExtra::fixPanelSize()
{
    const QSize size = m_panel->rootObject()->size().toSize();
    // The range is never empty, not even in between.
    m_panel->setMinimumSize({1, 1});
    m_panel->setMaximumSize(size);
    m_panel->setMinimumSize(size);
    m_panel->resize(size);
}

bool MenuBarExtra::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_panel.get() && event->type() == QEvent::FocusOut && m_panel->isVisible())
        m_focusLoss.start(focusPatience);
    return QObject::eventFilter(watched, event);
}

} // namespace Velloro

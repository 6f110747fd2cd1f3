#include "Views/Onboarding/OnboardingWindowController.h"

#include "Views/FramelessView.h"
#include "Views/Onboarding/OnboardingModel.h"
#include "Views/WindowPlacement.h"

#include <QCursor>
#include <QScreen>

namespace Velloro {

namespace {

constexpr QSize windowSize(500, 580);
constexpr double cornerRadius = 10;

} // namespace

OnboardingWindowController::OnboardingWindowController(Platform &platform, AppState &appState,
                                                       HotkeyManager &hotkeyManager,
                                                       ViewEngine &engine, QObject *parent)
    : QObject(parent)
    , m_platform(platform)
    , m_appState(appState)
    , m_hotkeyManager(hotkeyManager)
    , m_engine(engine)
    , m_permissionsManager(platform, appState)
    , m_download(appState)
{
}

void OnboardingWindowController::open()
{
    if (m_window.window()) {
        m_window.bringToFront();
        return;
    }
    auto view = std::make_unique<FramelessView>(m_engine, Qt::Window, cornerRadius);
    view->setTitle(QStringLiteral("Welcome to Velloro"));
    view->setResizeMode(QQuickView::SizeRootObjectToView);
    view->setMinimumSize(windowSize);
    view->setMaximumSize(windowSize);
    view->resize(windowSize);
    if (QScreen *screen = WindowPlacement::screenAt(QCursor::pos())) {
        QRect frame(QPoint(), windowSize);
        frame.moveCenter(screen->availableGeometry().center());
        view->setScreen(screen);
        view->setPosition(frame.topLeft());
    }
    auto model = std::make_unique<OnboardingModel>(m_platform, m_appState, m_hotkeyManager,
                                                   m_permissionsManager, m_download);
    connect(
        model.get(), &OnboardingModel::dismissRequested, this, [this] { m_window.close(); },
        Qt::QueuedConnection);
    m_window.open(std::move(view), QStringLiteral("Onboarding/OnboardingView.qml"),
                  std::move(model));
}

} // namespace Velloro

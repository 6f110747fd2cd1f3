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
    : WindowController(platform, appState, hotkeyManager, engine, parent)
    , m_permissionsManager(platform, appState)
    , m_download(appState)
{
}

OnboardingWindowController::~OnboardingWindowController()
{
    drop();
}

WindowController::Content OnboardingWindowController::makeContent()
{
    auto view = std::make_unique<FramelessView>(m_engine, Qt::Window, cornerRadius);
    view->setTitle(QStringLiteral("Welcome to Velloro"));
    if (QScreen *screen = WindowPlacement::screenAt(QCursor::pos())) {
        view->setScreen(screen);
        view->setPosition(
            WindowPlacement::centered(grown(windowSize, screen), screen->availableGeometry()).topLeft());
    }
    auto model = std::make_unique<OnboardingModel>(m_platform, m_appState, m_hotkeyManager,
                                                   m_permissionsManager, m_download);
    connect(model.get(), &OnboardingModel::dismissRequested, this, &WindowController::close,
            Qt::QueuedConnection);
    return {std::move(view), windowSize, QStringLiteral("Onboarding/OnboardingView.qml"),
            std::move(model)};
}

} // namespace Velloro

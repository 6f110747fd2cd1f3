#include "Views/Onboarding/OnboardingWindowController.h"

#include "Base/StringLiterals.h"
#include "Views/Onboarding/OnboardingViewModel.h"
#include "Views/Windows/FramelessView.h"
#include "Views/Windows/WindowPlacement.h"

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
    view->setTitle(u"Welcome to Velloro"_s);
    if (QScreen *screen = WindowPlacement::screenInUse(*m_platform.screenFrames)) {
        view->setScreen(screen);
        view->setPosition(
            WindowPlacement::centered(grown(windowSize, screen), screen->availableGeometry())
                .topLeft());
    }
    auto model = std::make_unique<OnboardingViewModel>(m_platform, m_appState, m_hotkeyManager,
                                                       m_download);
    connect(model.get(), &OnboardingViewModel::dismissRequested, this, &WindowController::close,
            Qt::QueuedConnection);
    return {std::move(view), windowSize, u"Onboarding/OnboardingView.qml"_s, std::move(model)};
}

} // namespace Velloro

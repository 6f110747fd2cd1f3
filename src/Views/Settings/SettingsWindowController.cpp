#include "Views/Settings/SettingsWindowController.h"

#include "Base/StringLiterals.h"
#include "Views/Settings/SettingsViewModel.h"

namespace Velloro {

SettingsWindowController::SettingsWindowController(Platform &platform, AppState &appState,
                                                   HotkeyManager &hotkeyManager, ViewEngine &engine,
                                                   QObject *parent)
    : WindowController(platform, appState, hotkeyManager, engine, parent)
{
}

WindowController::Content SettingsWindowController::makeContent()
{
    auto view = std::make_unique<QQuickView>(&m_engine.engine(), nullptr);
    view->setTitle(tr("Velloro Settings"));
    auto model = std::make_unique<SettingsViewModel>(m_platform, m_appState, m_hotkeyManager);
    connect(model.get(), &SettingsViewModel::closeRequested, this, &WindowController::close,
            Qt::QueuedConnection);
    return {std::move(view), QSize(500, 400), u"Settings/SettingsView.qml"_s, std::move(model)};
}

} // namespace Velloro

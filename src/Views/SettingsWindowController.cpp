#include "Views/SettingsWindowController.h"

#include "Views/SettingsModel.h"

namespace Velloro {

namespace {

constexpr QSize windowSize(500, 400);

} // namespace

SettingsWindowController::SettingsWindowController(Platform &platform, AppState &appState,
                                                   HotkeyManager &hotkeyManager,
                                                   ViewEngine &engine, QObject *parent)
    : QObject(parent)
    , m_platform(platform)
    , m_appState(appState)
    , m_hotkeyManager(hotkeyManager)
    , m_engine(engine)
{
}

void SettingsWindowController::open()
{
    if (m_window.window()) {
        m_window.bringToFront();
        return;
    }
    auto view = std::make_unique<QQuickView>(&m_engine.engine(), nullptr);
    view->setTitle(tr("Velloro Settings"));
    view->setResizeMode(QQuickView::SizeRootObjectToView);
    view->setMinimumSize(windowSize);
    view->setMaximumSize(windowSize);
    view->resize(windowSize);
    auto model = std::make_unique<SettingsModel>(m_platform, m_appState, m_hotkeyManager);
    connect(
        model.get(), &SettingsModel::closeRequested, this, [this] { m_window.close(); },
        Qt::QueuedConnection);
    m_window.open(std::move(view), QStringLiteral("SettingsView.qml"), std::move(model));
}

} // namespace Velloro

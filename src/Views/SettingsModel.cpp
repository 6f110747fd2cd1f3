#include "Views/SettingsModel.h"

namespace Velloro {

SettingsModel::SettingsModel(Platform &platform, AppState &appState, QObject *parent)
    : QObject(parent)
    , m_general(appState, *platform.loginItem)
    , m_dictionary(appState)
    , m_history(appState, *platform.pasteboard)
{
}

} // namespace Velloro

#include "Views/Settings/Privacy/PermissionHelpViewModel.h"

#include "Base/StringLiterals.h"

#include <utility>

namespace Velloro {

PermissionHelpViewModel::PermissionHelpViewModel(AppState &appState, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
{
    connect(&appState, &AppState::hasMicrophonePermissionChanged, this, [this] {
        if (m_page == SettingsPage::microphone)
            Q_EMIT changed();
    });
    connect(&appState, &AppState::hasAccessibilityPermissionChanged, this, [this] {
        if (m_page == SettingsPage::accessibility)
            Q_EMIT changed();
    });
}

QString PermissionHelpViewModel::title() const
{
    return m_page == SettingsPage::microphone ? tr("Microphone") : tr("Accessibility");
}

QString PermissionHelpViewModel::symbol() const
{
    return m_page == SettingsPage::microphone ? u"mic.fill"_s : u"accessibility"_s;
}

QString PermissionHelpViewModel::explanation() const
{
    if (isGranted())
        return tr("Velloro has what it needs here. There is nothing left to do.");
    return m_page == SettingsPage::microphone
        ? tr("Velloro found no microphone that it can record. Your desktop has no settings page "
             "for this, but you can set it right yourself:")
        : tr("Velloro types into other programs through the desktop's accessibility service, "
             "which is off. Velloro can turn it on for you:");
}

QStringList PermissionHelpViewModel::steps() const
{
    if (isGranted())
        return {};
    if (m_page == SettingsPage::microphone) {
        return {tr("Plug in a microphone or headset, or connect it by Bluetooth."),
                tr("Make sure that it is not muted, neither by a switch or key of its own nor in "
                   "your desktop's volume control, and that it is chosen there as the input."),
                tr("If you have no volume control, install and start the program \"pavucontrol\" "
                   "and look at its page \"Input Devices\"."),
                tr("Then choose \"Check Again\".")};
    }
    return {tr("Choose \"Turn On\"."),
            tr("Programs that were started before may need to be started again."),
            tr("If it stays off, install the package \"at-spi2-core\", log out and log in again.")};
}

QString PermissionHelpViewModel::actionText() const
{
    return m_page == SettingsPage::microphone ? tr("Check Again") : tr("Turn On");
}

bool PermissionHelpViewModel::isGranted() const
{
    return m_page == SettingsPage::microphone ? m_appState.hasMicrophonePermission()
                                              : m_appState.hasAccessibilityPermission();
}

void PermissionHelpViewModel::openSettingsPage(SettingsPage page)
{
    if (m_appState.permissionsManager().openSettingsPage(page)) {
        close();
        return;
    }
    const bool isOther = std::exchange(m_page, page) != page;
    if (std::exchange(m_isOpen, true) && !isOther)
        return;
    Q_EMIT changed();
}

void PermissionHelpViewModel::act()
{
    if (m_page == SettingsPage::microphone)
        m_appState.permissionsManager().requestMicrophone();
    else
        m_appState.permissionsManager().requestAccessibility();
}

void PermissionHelpViewModel::close()
{
    if (std::exchange(m_isOpen, false))
        Q_EMIT changed();
}

} // namespace Velloro

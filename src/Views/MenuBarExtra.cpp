#include "Views/MenuBarExtra.h"

#include <QIcon>

namespace Velloro {

namespace {

QString symbolName(TranscriptionState state)
{
    switch (state) {
    case TranscriptionState::idle:
        return QStringLiteral("waveform");
    case TranscriptionState::listening:
        return QStringLiteral("waveform.circle.fill");
    case TranscriptionState::transcribing:
        return QStringLiteral("ellipsis.circle.fill");
    case TranscriptionState::inserting:
        return QStringLiteral("checkmark.circle.fill");
    }
    Q_UNREACHABLE();
}

} // namespace

MenuBarExtra::MenuBarExtra(AppState &appState, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
{
    m_menu.addAction(tr("Quit"), this, &MenuBarExtra::quitRequested);
    m_trayIcon.setContextMenu(&m_menu);
    m_trayIcon.setToolTip(QStringLiteral("Velloro"));
    connect(&appState, &AppState::transcriptionStateChanged, this, &MenuBarExtra::updateIcon);
    updateIcon();
}

void MenuBarExtra::show()
{
    m_trayIcon.show();
}

void MenuBarExtra::updateIcon()
{
    m_trayIcon.setIcon(QIcon(QStringLiteral(":/symbols/%1.svg").arg(
        symbolName(m_appState.transcriptionState()))));
}

} // namespace Velloro

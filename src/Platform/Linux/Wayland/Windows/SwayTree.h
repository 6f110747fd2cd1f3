#pragma once

#include "Platform/Linux/Wayland/Sway/SwaySocket.h"
#include "Platform/Linux/Wayland/Windows/WindowList.h"

namespace Velloro {

/// The windows of sway, X11 ones included, by its own socket. It is asked for its tree whenever the
/// focus may have changed.
class SwayTree final : public QObject, public WindowList
{
    Q_OBJECT

public:
    explicit SwayTree(std::unique_ptr<SwaySocket> socket);

    [[nodiscard]] bool isAlive() const override;
    [[nodiscard]] std::optional<Window> activeWindow() override;

private:
    void handleEvent(SwaySocket::Event event, const QJsonObject &content);
    void ask();

    std::unique_ptr<SwaySocket> m_socket;
    std::optional<Window> m_active;
    /// Questions that are not yet answered.
    int m_questions = 0;
};

} // namespace Velloro

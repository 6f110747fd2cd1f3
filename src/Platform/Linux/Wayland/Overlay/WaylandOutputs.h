#pragma once

#include "Platform/Linux/Wayland/Overlay/WaylandOutput.h"
#include "Platform/Linux/Wayland/WaylandConnection.h"

#include <memory>
#include <vector>

namespace Velloro {

/// The screens of the compositor, as they come and go.
class WaylandOutputs : public QObject
{
    Q_OBJECT

public:
    explicit WaylandOutputs(std::shared_ptr<WaylandConnection> connection);
    ~WaylandOutputs() override;

    /// The screen with this id; where there is none, the one with the finest pixels. Null without
    /// any screen.
    [[nodiscard]] const WaylandOutput *find(const wl_output *id) const;

Q_SIGNALS:
    void added();
    /// A screen has gone, or has another scale.
    void changed();

private:
    struct Listed
    {
        uint32_t name;
        std::unique_ptr<WaylandOutput> output;
    };

    void add(const WaylandConnection::Global &global);
    void remove(uint32_t name);

    std::shared_ptr<WaylandConnection> m_connection;
    WaylandHandle<zxdg_output_manager_v1> m_manager;
    std::vector<Listed> m_outputs;
};

} // namespace Velloro

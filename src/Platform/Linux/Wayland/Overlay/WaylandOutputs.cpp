#include "Platform/Linux/Wayland/Overlay/WaylandOutputs.h"

#include <algorithm>
#include <xdg-output-unstable-v1-client.h>

namespace Velloro {

namespace {

/// The first that can be released.
constexpr uint32_t outputVersion = 3;

} // namespace

WaylandOutputs::WaylandOutputs(std::shared_ptr<WaylandConnection> connection)
    : m_connection(std::move(connection))
    , m_manager(m_connection->bind<zxdg_output_manager_v1>(zxdg_output_manager_v1_interface, 1),
                {zxdg_output_manager_v1_destroy})
{
    connect(m_connection.get(), &WaylandConnection::globalAdded, this, &WaylandOutputs::add);
    connect(m_connection.get(), &WaylandConnection::globalRemoved, this, &WaylandOutputs::remove);
    for (const WaylandConnection::Global &global : m_connection->globals())
        add(global);
}

WaylandOutputs::~WaylandOutputs() = default;

const WaylandOutput *WaylandOutputs::find(const wl_output *id) const
{
    const auto found = std::ranges::find_if(
        m_outputs, [=](const Listed &listed) { return id && listed.output->id() == id; });
    if (found != m_outputs.end())
        return found->output.get();
    const auto finest = std::ranges::max_element(
        m_outputs, {}, [](const Listed &listed) { return listed.output->scale(); });
    return finest == m_outputs.end() ? nullptr : finest->output.get();
}

void WaylandOutputs::add(const WaylandConnection::Global &global)
{
    if (global.interface != wl_output_interface.name)
        return;
    auto *output
        = static_cast<wl_output *>(m_connection->bind(global, wl_output_interface, outputVersion));
    auto made = std::make_unique<WaylandOutput>(output, m_manager.get());
    connect(made.get(), &WaylandOutput::changed, this, &WaylandOutputs::changed);
    m_outputs.push_back({global.name, std::move(made)});
    Q_EMIT added();
}

void WaylandOutputs::remove(uint32_t name)
{
    if (std::erase_if(m_outputs, [=](const Listed &listed) { return listed.name == name; }) > 0)
        Q_EMIT changed();
}

} // namespace Velloro

#include "Platform/Linux/X11/X11Clients.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <xcb/res.h>

namespace Velloro {

namespace {

/// Whether the process runs Windows programs: "wine", "wine64-preloader" and the like. False for a
/// process of another user, which does not tell.
bool isWine(pid_t process)
{
    std::error_code error;
    const auto program
        = std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/exe", error);
    return !error && program.filename().string().starts_with("wine");
}

} // namespace

X11Clients::X11Clients(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
{
    const auto *resources = xcb_get_extension_data(m_connection->xcb(), &xcb_res_id);
    if (!resources || !resources->present)
        return;
    const XcbReply<xcb_res_query_version_reply_t> version(xcb_res_query_version_reply(
        m_connection->xcb(), xcb_res_query_version(m_connection->xcb(), 1, 2), nullptr));
    m_serverKnowsProcesses = version
        && (version->server_major > 1
            || (version->server_major == 1 && version->server_minor >= 2));
}

std::optional<pid_t> X11Clients::process(xcb_window_t window)
{
    if (!m_serverKnowsProcesses)
        return std::nullopt;
    const xcb_res_client_id_spec_t wanted{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const XcbReply<xcb_res_query_client_ids_reply_t> reply(xcb_res_query_client_ids_reply(
        m_connection->xcb(), xcb_res_query_client_ids(m_connection->xcb(), 1, &wanted), nullptr));
    if (!reply)
        return std::nullopt;
    for (auto ids = xcb_res_query_client_ids_ids_iterator(reply.get()); ids.rem > 0;
         xcb_res_client_id_value_next(&ids)) {
        if (ids.data->spec.mask == XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID
            && xcb_res_client_id_value_value_length(ids.data) > 0)
            return static_cast<pid_t>(*xcb_res_client_id_value_value(ids.data));
    }
    return std::nullopt;
}

bool X11Clients::shareClipboard(xcb_window_t one, xcb_window_t other)
{
    const uint32_t connections = ~xcb_get_setup(m_connection->xcb())->resource_id_mask;
    if ((one & connections) == (other & connections))
        return true;
    const auto process = this->process(one);
    const auto otherProcess = this->process(other);
    if (!process || !otherProcess)
        return false;
    return *process == *otherProcess || (isWine(*process) && isWine(*otherProcess));
}

} // namespace Velloro

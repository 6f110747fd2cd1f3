#include "Platform/Linux/X11/X11Clients.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <string>
#include <sys/stat.h>
#include <utility>
#include <xcb/res.h>

namespace Velloro {

namespace {

/// The file that the process runs; nothing for a process of another user.
std::optional<struct stat> programOf(pid_t process)
{
    struct stat program{};
    if (stat(("/proc/" + std::to_string(process) + "/exe").c_str(), &program) != 0)
        return std::nullopt;
    return program;
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
        && (version->server_major > 1 || (version->server_major == 1 && version->server_minor >= 2));
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

bool X11Clients::areOfOneProgram(xcb_window_t one, xcb_window_t other)
{
    const uint32_t connections = ~xcb_get_setup(m_connection->xcb())->resource_id_mask;
    if ((one & connections) == (other & connections))
        return true;
    const auto process = this->process(one);
    const auto otherProcess = this->process(other);
    if (!process || !otherProcess)
        return false;
    const auto program = programOf(*process);
    const auto otherProgram = programOf(*otherProcess);
    return program && otherProgram && program->st_dev == otherProgram->st_dev
        && program->st_ino == otherProgram->st_ino;
}

} // namespace Velloro

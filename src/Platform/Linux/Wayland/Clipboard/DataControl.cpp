#include "Platform/Linux/Wayland/Clipboard/DataControl.h"

#include <algorithm>
#include <ext-data-control-client.h>
#include <utility>
#include <vector>
#include <wlr-data-control-client.h>

namespace Velloro {

namespace {

/// Names of the older protocol, and of the one that was made a standard. They differ in nothing
/// else.
struct WlrProtocol
{
    using Manager = zwlr_data_control_manager_v1;
    using Device = zwlr_data_control_device_v1;
    using DeviceListener = zwlr_data_control_device_v1_listener;
    using Offer = zwlr_data_control_offer_v1;
    using OfferListener = zwlr_data_control_offer_v1_listener;
    using Source = zwlr_data_control_source_v1;
    using SourceListener = zwlr_data_control_source_v1_listener;

    static constexpr const wl_interface &interface = zwlr_data_control_manager_v1_interface;
    static constexpr uint32_t version = 2;
    static constexpr uint32_t firstWithPrimary = 2;
    static constexpr auto destroyManager = zwlr_data_control_manager_v1_destroy;
    static constexpr auto getDevice = zwlr_data_control_manager_v1_get_data_device;
    static constexpr auto createSource = zwlr_data_control_manager_v1_create_data_source;
    static constexpr auto destroyDevice = zwlr_data_control_device_v1_destroy;
    static constexpr auto listenToDevice = zwlr_data_control_device_v1_add_listener;
    static constexpr auto setSelection = zwlr_data_control_device_v1_set_selection;
    static constexpr auto setPrimary = zwlr_data_control_device_v1_set_primary_selection;
    static constexpr auto destroyOffer = zwlr_data_control_offer_v1_destroy;
    static constexpr auto listenToOffer = zwlr_data_control_offer_v1_add_listener;
    static constexpr auto receive = zwlr_data_control_offer_v1_receive;
    static constexpr auto destroySource = zwlr_data_control_source_v1_destroy;
    static constexpr auto listenToSource = zwlr_data_control_source_v1_add_listener;
    static constexpr auto offer = zwlr_data_control_source_v1_offer;
};

struct ExtProtocol
{
    using Manager = ext_data_control_manager_v1;
    using Device = ext_data_control_device_v1;
    using DeviceListener = ext_data_control_device_v1_listener;
    using Offer = ext_data_control_offer_v1;
    using OfferListener = ext_data_control_offer_v1_listener;
    using Source = ext_data_control_source_v1;
    using SourceListener = ext_data_control_source_v1_listener;

    static constexpr const wl_interface &interface = ext_data_control_manager_v1_interface;
    static constexpr uint32_t version = 1;
    static constexpr uint32_t firstWithPrimary = 1;
    static constexpr auto destroyManager = ext_data_control_manager_v1_destroy;
    static constexpr auto getDevice = ext_data_control_manager_v1_get_data_device;
    static constexpr auto createSource = ext_data_control_manager_v1_create_data_source;
    static constexpr auto destroyDevice = ext_data_control_device_v1_destroy;
    static constexpr auto listenToDevice = ext_data_control_device_v1_add_listener;
    static constexpr auto setSelection = ext_data_control_device_v1_set_selection;
    static constexpr auto setPrimary = ext_data_control_device_v1_set_primary_selection;
    static constexpr auto destroyOffer = ext_data_control_offer_v1_destroy;
    static constexpr auto listenToOffer = ext_data_control_offer_v1_add_listener;
    static constexpr auto receive = ext_data_control_offer_v1_receive;
    static constexpr auto destroySource = ext_data_control_source_v1_destroy;
    static constexpr auto listenToSource = ext_data_control_source_v1_add_listener;
    static constexpr auto offer = ext_data_control_source_v1_offer;
};

template <typename Protocol>
class ProtocolOffer final : public DataOffer
{
public:
    using Handle = typename Protocol::Offer;

    explicit ProtocolOffer(Handle *offer)
        : m_offer(offer, {Protocol::destroyOffer})
    {
        static constexpr typename Protocol::OfferListener listener{
            .offer =
                [](void *data, Handle *, const char *mimeType) {
                    static_cast<ProtocolOffer *>(data)->m_mimeTypes << mimeType;
                },
        };
        Protocol::listenToOffer(offer, &listener, this);
    }

    [[nodiscard]] Handle *handle() const { return m_offer.get(); }

    [[nodiscard]] QList<QByteArray> mimeTypes() const override { return m_mimeTypes; }
    void receive(const QByteArray &mimeType, int pipe) override
    {
        Protocol::receive(handle(), mimeType.constData(), pipe);
    }

private:
    WaylandHandle<Handle> m_offer;
    QList<QByteArray> m_mimeTypes;
};

template <typename Protocol>
class ProtocolSource final : public DataSource
{
public:
    using Handle = typename Protocol::Source;

    ProtocolSource(Handle *source, const QList<QByteArray> &mimeTypes, Owner owner)
        : m_source(source, {Protocol::destroySource})
        , m_owner(std::move(owner))
    {
        static constexpr typename Protocol::SourceListener listener{
            .send =
                [](void *data, Handle *, const char *mimeType, int32_t pipe) {
                    // Its owner may destroy the source.
                    const auto send = static_cast<ProtocolSource *>(data)->m_owner.send;
                    send(mimeType, FileDescriptor(pipe));
                },
            .cancelled =
                [](void *data, Handle *) {
                    const auto cancelled = static_cast<ProtocolSource *>(data)->m_owner.cancelled;
                    cancelled();
                },
        };
        Protocol::listenToSource(source, &listener, this);
        for (const QByteArray &mimeType : mimeTypes)
            Protocol::offer(source, mimeType.constData());
    }

    [[nodiscard]] Handle *handle() const { return m_source.get(); }

private:
    WaylandHandle<Handle> m_source;
    Owner m_owner;
};

template <typename Protocol>
class ProtocolControl final : public DataControl
{
public:
    using Offer = ProtocolOffer<Protocol>;
    using Source = ProtocolSource<Protocol>;

    ProtocolControl(WaylandConnection &connection, typename Protocol::Manager *manager)
        : m_manager(manager, {Protocol::destroyManager})
        , m_device(Protocol::getDevice(manager, connection.seat()), {Protocol::destroyDevice})
    {
        static constexpr typename Protocol::DeviceListener listener{
            .data_offer =
                [](void *data, Device *, OfferHandle *offer) {
                    static_cast<ProtocolControl *>(data)->m_coming.push_back(
                        std::make_shared<Offer>(offer));
                },
            .selection =
                [](void *data, Device *, OfferHandle *offer) {
                    static_cast<ProtocolControl *>(data)->change(Selection::clipboard, offer);
                },
            .finished =
                [](void *data, Device *) {
                    auto *self = static_cast<ProtocolControl *>(data);
                    self->m_device.reset();
                    self->change(Selection::clipboard, nullptr);
                    self->change(Selection::primary, nullptr);
                },
            .primary_selection =
                [](void *data, Device *, OfferHandle *offer) {
                    static_cast<ProtocolControl *>(data)->change(Selection::primary, offer);
                },
        };
        Protocol::listenToDevice(m_device.get(), &listener, this);
    }

    [[nodiscard]] std::shared_ptr<DataOffer> offer(Selection selection) const override
    {
        return selection == Selection::clipboard ? m_clipboard : m_primary;
    }

    [[nodiscard]] std::unique_ptr<DataSource>
    put(Selection selection, const QList<QByteArray> &mimeTypes, DataSource::Owner owner) override
    {
        const bool isPrimary = selection == Selection::primary;
        if (!m_device || (isPrimary && version() < Protocol::firstWithPrimary))
            return nullptr;
        auto source = std::make_unique<Source>(Protocol::createSource(m_manager.get()), mimeTypes,
                                               std::move(owner));
        if (isPrimary)
            Protocol::setPrimary(m_device.get(), source->handle());
        else
            Protocol::setSelection(m_device.get(), source->handle());
        return source;
    }

private:
    using Device = typename Protocol::Device;
    using OfferHandle = typename Protocol::Offer;

    [[nodiscard]] uint32_t version() const
    {
        return wl_proxy_get_version(reinterpret_cast<wl_proxy *>(m_device.get()));
    }

    void change(Selection selection, OfferHandle *handle)
    {
        const auto found = std::ranges::find(m_coming, handle, &Offer::handle);
        std::shared_ptr<Offer> offer;
        if (found != m_coming.end()) {
            offer = *found;
            m_coming.erase(found);
        }
        (selection == Selection::clipboard ? m_clipboard : m_primary) = std::move(offer);
        Q_EMIT changed(selection);
    }

    WaylandHandle<typename Protocol::Manager> m_manager;
    WaylandHandle<Device> m_device;
    /// Described before it is told what they are.
    std::vector<std::shared_ptr<Offer>> m_coming;
    std::shared_ptr<Offer> m_clipboard;
    std::shared_ptr<Offer> m_primary;
};

template <typename Protocol>
std::unique_ptr<DataControl> makeBy(WaylandConnection &connection)
{
    if (!connection.offers(Protocol::interface) || !connection.seat())
        return nullptr;
    return std::make_unique<ProtocolControl<Protocol>>(
        connection,
        connection.bind<typename Protocol::Manager>(Protocol::interface, Protocol::version));
}

} // namespace

std::unique_ptr<DataControl> DataControl::make(WaylandConnection &connection)
{
    auto control = makeBy<ExtProtocol>(connection);
    return control ? std::move(control) : makeBy<WlrProtocol>(connection);
}

bool DataControl::isOffered(const WaylandConnection &connection)
{
    return connection.offers(ExtProtocol::interface) || connection.offers(WlrProtocol::interface);
}

} // namespace Velloro

#pragma once

#include "Platform/Linux/Wayland/Clipboard/BorrowedData.h"
#include "Platform/Linux/Wayland/Clipboard/LoopUntil.h"

#include <QSemaphore>
#include <QThread>
#include <atomic>
#include <memory>
#include <optional>

namespace Velloro {

/// Another program, which owns and reads a selection on a thread of its own.
class OtherWaylandProgram
{
public:
    using Selection = DataControl::Selection;

    explicit OtherWaylandProgram(Selection selection = Selection::clipboard)
    {
        m_receiver.moveToThread(&m_thread);
        m_thread.start();
        run([&] {
            m_client = std::make_unique<Client>(selection);
            QObject::connect(m_client->control.get(), &DataControl::changed, &m_receiver,
                             [this, selection](Selection changed) {
                                 if (changed == selection)
                                     handleChange();
                             });
            QObject::connect(&m_client->data, &BorrowedData::fetched, &m_receiver,
                             [this](const QByteArray &mimeType) {
                                 ++m_fetches;
                                 if (mimeType == m_hangsAt)
                                     hangNow();
                             });
        });
    }
    ~OtherWaylandProgram()
    {
        run([this] { m_client.reset(); });
        m_thread.quit();
        m_thread.wait();
    }

    void own(const MimeContent &content)
    {
        run([&] { m_client->data.own(content); });
    }
    /// Takes the selection with this content now, and again whenever another takes it.
    void insistOn(const MimeContent &content)
    {
        run([&] {
            m_insists = content;
            m_client->data.own(content);
        });
    }
    /// How often somebody has asked it for a form.
    int fetches() const { return m_fetches; }

    /// What is there, in the owner's order.
    std::vector<MimeContent::Form> read()
    {
        std::vector<MimeContent::Form> forms;
        run([&] {
            m_client->connection->roundtrip(QDeadlineTimer(2000));
            const auto offer = m_client->control->offer(m_client->selection);
            if (!offer)
                return;
            OfferReader reader(offer, OfferReader::Forms::all);
            loopUntil([&] { return reader.isFinished(); }, QDeadlineTimer(10'000));
            forms = reader.takeContent().forms;
        });
        return forms;
    }

    /// Answers nothing until `goOn`, once it is asked for this form.
    void hangAt(const QByteArray &mimeType)
    {
        run([&] { m_hangsAt = mimeType; });
    }
    void awaitHanging() { m_isHanging.acquire(); }
    void goOn() { m_mayGoOn.release(); }

private:
    struct Client
    {
        explicit Client(Selection selection)
            : selection(selection)
            , data(*connection, *control, selection, OfferReader::Forms::all,
                   BorrowedData::WhenEmpty::isGivenUp)
        {
        }
        const Selection selection;
        std::shared_ptr<WaylandConnection> connection = WaylandConnection::open();
        std::unique_ptr<DataControl> control = DataControl::make(*connection);
        BorrowedData data;
    };

    template <typename Work>
    void run(Work work)
    {
        QMetaObject::invokeMethod(&m_receiver, work, Qt::BlockingQueuedConnection);
    }
    void handleChange()
    {
        if (m_insists && !m_client->data.isOwn())
            m_client->data.own(*m_insists);
    }
    void hangNow()
    {
        m_hangsAt.clear();
        m_isHanging.release();
        m_mayGoOn.acquire();
    }

    QThread m_thread;
    QObject m_receiver;
    std::unique_ptr<Client> m_client;
    std::optional<MimeContent> m_insists;
    QByteArray m_hangsAt;
    std::atomic<int> m_fetches = 0;
    QSemaphore m_isHanging, m_mayGoOn;
};

} // namespace Velloro

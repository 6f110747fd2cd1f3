#pragma once

#include "Platform/Linux/X11/Clipboard/BorrowedSelection.h"

#include <QSemaphore>
#include <QThread>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <vector>
#include <xcb/xfixes.h>

namespace Velloro {

/// Another program, which owns, watches and reads a selection on a thread of its own.
class OtherProgram
{
public:
    explicit OtherProgram(const QByteArray &selection = "CLIPBOARD")
    {
        m_receiver.moveToThread(&m_thread);
        m_thread.start();
        run([&] {
            m_client = std::make_unique<Client>(selection);
            QObject::connect(m_client->connection.get(), &X11Connection::eventReceived, &m_receiver,
                             [this](const xcb_generic_event_t *event) { handle(event); });
            QObject::connect(&m_client->selection, &BorrowedSelection::read, &m_receiver,
                             [this] { ++m_readings; });
        });
    }
    ~OtherProgram()
    {
        run([this] { m_client.reset(); });
        m_thread.quit();
        m_thread.wait();
    }

    xcb_window_t window() const { return m_client->window.id(); }
    xcb_atom_t atom(const QByteArray &name)
    {
        xcb_atom_t atom = XCB_ATOM_NONE;
        run([&] { atom = m_client->connection->atom(name); });
        return atom;
    }
    SelectionContent text(const QString &text)
    {
        return SelectionContent::ofText(m_client->atoms, text);
    }
    SelectionContent::Form form(const QByteArray &target, const QByteArray &type, uint8_t format,
                                const QByteArray &data)
    {
        return {atom(target), atom(type), format, data};
    }

    void own(const SelectionContent &content)
    {
        run([&] {
            m_client->given.clear();
            m_client->selection.own(content);
        });
    }
    /// Takes the selection with this content now, and again whenever another takes it.
    void insistOn(const SelectionContent &content)
    {
        run([&] { m_client->insists = content; });
        own(content);
    }
    /// Whether somebody has been given this form, to its end.
    bool hasGiven(const QByteArray &target)
    {
        const xcb_atom_t wanted = atom(target);
        bool given = false;
        run([&] { given = m_client->given.contains(wanted) && m_client->server.isIdle(); });
        return given;
    }
    /// How often it has been asked for this form since it took the selection.
    size_t timesAsked(const QByteArray &target)
    {
        const xcb_atom_t wanted = atom(target);
        size_t times = 0;
        run([&] { times = m_client->given.count(wanted); });
        return times;
    }
    /// Reads the selection whenever it changes.
    void watch()
    {
        run([this] { m_client->selection.follow(); });
    }
    /// How often the selection changed hands, and how often that led to a reading that is finished.
    int changes() const { return m_changes; }
    int readings() const { return m_readings; }

    std::vector<SelectionContent::Form> read()
    {
        std::vector<SelectionContent::Form> forms;
        run([&] { forms = readNow(); });
        return forms;
    }
    QByteArray readText()
    {
        for (const SelectionContent::Form &each : read()) {
            if (each.target == m_client->atoms.utf8String)
                return each.data;
        }
        return {};
    }
    void readLater()
    {
        QMetaObject::invokeMethod(&m_receiver, [this] { (void)readNow(); }, Qt::QueuedConnection);
    }

    /// Answers nothing until `goOn`, from the first request for this form on, or from now on.
    void hangAt(const QByteArray &target)
    {
        run([&] { m_client->hangsAt = m_client->connection->atom(target); });
    }
    void hang()
    {
        QMetaObject::invokeMethod(&m_receiver, [this] { hangNow(); }, Qt::QueuedConnection);
        awaitHanging();
    }
    void awaitHanging() { m_isHanging.acquire(); }
    void goOn() { m_mayGoOn.release(); }

private:
    struct Client
    {
        explicit Client(const QByteArray &name)
            : selection(connection, atoms, window, connection->atom(name),
                        SelectionReader::Forms::all, BorrowedSelection::WhenEmpty::isGivenUp)
        {
        }
        std::shared_ptr<X11Connection> connection = X11Connection::open();
        SelectionAtoms atoms{*connection};
        SelectionWindow window{connection};
        SelectionServer server{connection, atoms};
        BorrowedSelection selection;
        SelectionReader *reader = nullptr;
        std::multiset<xcb_atom_t> given;
        std::optional<SelectionContent> insists;
        xcb_atom_t hangsAt = XCB_ATOM_NONE;
    };

    template <typename Work>
    void run(Work work)
    {
        QMetaObject::invokeMethod(&m_receiver, work, Qt::BlockingQueuedConnection);
    }
    void handle(const xcb_generic_event_t *event)
    {
        m_client->window.handleEvent(event);
        m_client->server.handleEvent(event);
        m_client->selection.handleEvent(event);
        if (m_client->reader)
            m_client->reader->handleEvent(event);
        if ((event->response_type & 0x7f) == m_client->window.ownerEvent()) {
            ++m_changes;
            const auto &change
                = *reinterpret_cast<const xcb_xfixes_selection_notify_event_t *>(event);
            if (m_client->insists && change.owner != window())
                m_client->selection.own(*m_client->insists);
        }
        if ((event->response_type & 0x7f) != XCB_SELECTION_REQUEST)
            return;
        const auto &request = *reinterpret_cast<const xcb_selection_request_event_t *>(event);
        if (request.target == m_client->hangsAt) {
            m_client->hangsAt = XCB_ATOM_NONE;
            hangNow();
        }
        (void)m_client->server.answer(request, m_client->selection.owned());
        m_client->given.insert(request.target);
    }
    void hangNow()
    {
        m_isHanging.release();
        m_mayGoOn.acquire();
    }
    std::vector<SelectionContent::Form> readNow()
    {
        SelectionReader reader(m_client->connection, m_client->atoms, m_client->window,
                               m_client->selection.selection(), SelectionReader::Forms::all,
                               m_client->window.serverTime());
        m_client->reader = &reader;
        m_client->connection->dispatchUntil([&] { return reader.isFinished(); },
                                            QDeadlineTimer(std::chrono::seconds(10)));
        m_client->reader = nullptr;
        return reader.takeContent().forms;
    }

    QThread m_thread;
    QObject m_receiver;
    std::unique_ptr<Client> m_client;
    std::atomic<int> m_changes = 0, m_readings = 0;
    QSemaphore m_isHanging, m_mayGoOn;
};

} // namespace Velloro

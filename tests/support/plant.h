/// A simulated controller behind a real link.
#ifndef TESTS_PLANT_H
#define TESTS_PLANT_H

#include "link.h"
#include "simulator/lineServer.h"
#include "simulator/tcpServer.h"

#include <memory>
#include <set>
#include <thread>

/// Serves its stations on TCP or a pty, on a thread of its own.
class Plant {
public:
    Plant(bool onPty, const std::set<std::uint8_t> &stations) : controller(stations)
    {
        const vssim::Served served{controller, m_trace};
        if (onPty)
            m_pty = std::make_unique<vssim::PtyServer>(m_context, served);
        else
            m_tcp = std::make_unique<vssim::TcpServer>(m_context, tools::TcpAddress{"127.0.0.1", 0}, served);
        m_thread = std::thread([this] { m_context.run(); });
    }

    ~Plant()
    {
        m_context.stop();
        m_thread.join();
    }

    vshost::LinkAddress address() const
    {
        if (m_pty)
            return tools::parseSerial(m_pty->device());
        return m_tcp->address();
    }

    void dropLink() { m_tcp->dropClients(); }

    vssim::Controller controller;

private:
    vssim::Trace m_trace;
    asio::io_context m_context{1};
    std::unique_ptr<vssim::TcpServer> m_tcp;
    std::unique_ptr<vssim::PtyServer> m_pty;
    std::thread m_thread;
};

#endif

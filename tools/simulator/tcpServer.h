/// The controller on TCP: any number of clients, one after the other or at once.
#ifndef VSSIM_TCP_SERVER_H
#define VSSIM_TCP_SERVER_H

#include "simulator/session.h"

#include "common/tcpAddress.h"

#include <asio/ip/tcp.hpp>

namespace vssim {

class TcpServer {
public:
    /// Listens from now on; accepts while `context` runs. Port 0 takes any free port. Throws std::system_error.
    TcpServer(asio::io_context &context, const tools::TcpAddress &address, const Served &all);
    ~TcpServer();
    TcpServer(const TcpServer &) = delete;
    TcpServer &operator=(const TcpServer &) = delete;

    /// Where it listens, with the port really taken.
    tools::TcpAddress address() const;
    std::uint16_t port() const { return address().port; }

    /// Cuts every connection and goes on listening, as a link that drops does. From any thread, while the server lives.
    void dropClients();

private:
    using TcpSession = Session<asio::ip::tcp::socket>;

    void accept();
    void serve(asio::ip::tcp::socket &&client);
    void closeSessions();

    asio::ip::tcp::acceptor m_acceptor;
    asio::steady_timer m_pause;
    Served m_served;
    std::vector<std::weak_ptr<TcpSession>> m_sessions; ///< those that ended are forgotten when the next client comes
};

} // namespace vssim

#endif

#include "simulator/tcpServer.h"

#include <asio/post.hpp>
#include <fmt/format.h>

#include <algorithm>

namespace vssim {

using asio::ip::tcp;

namespace {

constexpr std::chrono::milliseconds PAUSE_AFTER_FAILURE{100}; // out of descriptors, for one: no use in trying at once

tcp::endpoint resolve(asio::io_context &context, const tools::TcpAddress &address)
{
    tcp::resolver resolver(context);
    asio::error_code error;
    const auto found = resolver.resolve(address.host, std::to_string(address.port), tcp::resolver::passive, error);
    if (error || found.empty())
        throw std::system_error(error, fmt::format("host {}", address.host));
    return found.begin()->endpoint();
}

std::string clientName(const tcp::socket &client)
{
    asio::error_code error;
    const tcp::endpoint remote = client.remote_endpoint(error);
    return error ? "gone" : tools::tcpText({remote.address().to_string(), remote.port()});
}

} // namespace

TcpServer::TcpServer(asio::io_context &context, const tools::TcpAddress &address, const Served &all)
    : m_acceptor(context), m_pause(context), m_served(all)
{
    const tcp::endpoint endpoint = resolve(context, address);
    try {
        m_acceptor.open(endpoint.protocol());
        m_acceptor.set_option(tcp::acceptor::reuse_address(true));
        m_acceptor.bind(endpoint);
        m_acceptor.listen();
    } catch (const std::system_error &error) {
        throw std::system_error(error.code(), fmt::format("cannot listen on {}", tools::tcpText(address)));
    }
    accept();
}

TcpServer::~TcpServer() { closeSessions(); }

tools::TcpAddress TcpServer::address() const
{
    const tcp::endpoint local = m_acceptor.local_endpoint();
    return {local.address().to_string(), local.port()};
}

void TcpServer::dropClients()
{
    asio::post(
        m_acceptor.get_executor(), [this] { closeSessions(); });
}

// The handlers touch the server only if they were not aborted: the server may be gone then.
void TcpServer::accept()
{
    m_acceptor.async_accept([this](const asio::error_code &error, tcp::socket client) {
        if (error == asio::error::operation_aborted)
            return;
        if (!error) {
            serve(std::move(client));
            return accept();
        }
        m_pause.expires_after(PAUSE_AFTER_FAILURE);
        m_pause.async_wait([this](const asio::error_code &aborted) {
            if (!aborted)
                accept();
        });
    });
}

void TcpServer::serve(tcp::socket &&client)
{
    const auto isOver = [](const std::weak_ptr<TcpSession> &session) { return session.expired(); };
    m_sessions.erase(std::remove_if(m_sessions.begin(), m_sessions.end(), isOver), m_sessions.end());
    asio::error_code ignored;
    client.set_option(tcp::no_delay(true), ignored);
    const std::string name = clientName(client);
    const auto session = std::make_shared<TcpSession>(std::move(client), m_served, name);
    m_sessions.push_back(session);
    session->start();
}

void TcpServer::closeSessions()
{
    for (const auto &weak : m_sessions)
        if (const auto session = weak.lock())
            session->close();
    m_sessions.clear();
}

} // namespace vssim

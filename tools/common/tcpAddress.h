/// The TCP end point of a controller as text.
#ifndef TOOLS_TCP_ADDRESS_H
#define TOOLS_TCP_ADDRESS_H

#include <cstdint>
#include <string>

namespace tools {

struct TcpAddress {
    std::string host;
    std::uint16_t port;
};

/// Reads "HOST:PORT", "[IPV6]:PORT", "PORT" alone or "HOST" alone; what the text leaves out comes from `defaults`.
/// Throws std::invalid_argument with a message for the user. Port 0 passes: a server takes it as "any free port".
TcpAddress parseTcp(const std::string &text, const TcpAddress &defaults);

/// "HOST:PORT", with brackets around an IPv6 address.
std::string tcpText(const TcpAddress &address);

} // namespace tools

#endif

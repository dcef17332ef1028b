#include "common/tcpAddress.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

namespace tools {

namespace {

bool isNumber(const std::string &text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

std::uint16_t parsePort(const std::string &port, const std::string &text)
{
    if (!isNumber(port) || port.size() > 5 || std::stoul(port) > UINT16_MAX)
        throw std::invalid_argument(fmt::format("\"{}\": \"{}\" is no TCP port (0 to 65535)", text, port));
    return static_cast<std::uint16_t>(std::stoul(port));
}

// "[::1]:8000" or "[::1]"
TcpAddress parseBracketed(const std::string &text, const TcpAddress &defaults)
{
    const std::size_t end = text.find(']');
    if (end == std::string::npos || end == 1)
        throw std::invalid_argument(fmt::format("\"{}\" is no TCP address: expected [IPV6]:PORT", text));
    const std::string host = text.substr(1, end - 1);
    if (end + 1 == text.size())
        return {host, defaults.port};
    if (text[end + 1] != ':')
        throw std::invalid_argument(fmt::format("\"{}\" is no TCP address: expected [IPV6]:PORT", text));
    return {host, parsePort(text.substr(end + 2), text)};
}

} // namespace

TcpAddress parseTcp(const std::string &text, const TcpAddress &defaults)
{
    if (!text.empty() && text.front() == '[')
        return parseBracketed(text, defaults);
    if (isNumber(text))
        return {defaults.host, parsePort(text, text)};
    const auto colons = std::count(text.begin(), text.end(), ':');
    const std::size_t colon = text.find(':');
    if (text.empty() || colon == 0 || colons > 1)
        throw std::invalid_argument(fmt::format("\"{}\" is no TCP address: expected HOST:PORT", text));
    if (colons == 0)
        return {text, defaults.port};
    return {text.substr(0, colon), parsePort(text.substr(colon + 1), text)};
}

std::string tcpText(const TcpAddress &address)
{
    const bool isIpv6 = address.host.find(':') != std::string::npos;
    return fmt::format(isIpv6 ? "[{}]:{}" : "{}:{}", address.host, address.port);
}

} // namespace tools

/// The link to the controllers: bytes out, bytes in within a time, and nothing about what they mean.
#ifndef VSHOST_LINK_H
#define VSHOST_LINK_H

#include "timing.h"

#include "common/serialLine.h"
#include "common/tcpAddress.h"

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace vshost {

using Bytes = std::vector<std::uint8_t>;

/// An open link; it closes when it is destroyed. Used from one thread. Every call throws LinkError when the link has
/// broken, and is of no more use then.
class Link {
public:
    virtual ~Link() = default;

    virtual void send(const std::uint8_t *bytes, std::size_t size) = 0;

    /// What has arrived, at least one byte, as soon as there is any; empty when the time has passed without.
    virtual Bytes receive(Milliseconds timeout) = 0;
};

using LinkAddress = std::variant<tools::TcpAddress, tools::SerialSettings>;

/// Reads one of the two texts, the other being empty: "HOST:PORT" and "DEVICE:19200,8,NONE,1". Throws UsageError.
LinkAddress parseLinkAddress(const std::string &tcp, const std::string &serial);

/// The address for people: "127.0.0.1:8000", "/dev/ttyUSB0".
std::string textOf(const LinkAddress &address);

/// Throws LinkError when the link cannot be opened.
std::unique_ptr<Link> openLink(const LinkAddress &address);

} // namespace vshost

#endif

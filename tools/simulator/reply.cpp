#include "simulator/reply.h"

#include "simulator/wireFormat.h"

namespace vssim {

namespace {

constexpr std::size_t LENGTH_SIZE = 2;
constexpr std::size_t STATUS_SIZE = 1;

} // namespace

// The body of a reply; m is the number of data bytes, 0 in acknowledgements and refusals. Offsets in the frame are two
// higher.
//
//   offset  size  content
//   0       1     station that answers
//   1       2     length of what follows, 1 + m, least significant byte first
//   3       1     status
//   4       m     data: two or four bytes a unit, least significant first, or eight bits a byte from bit 0 on
Bytes encode(const Reply &reply)
{
    Bytes body{reply.station};
    appendLittleEndian(body, static_cast<std::uint32_t>(STATUS_SIZE + reply.data.size()), LENGTH_SIZE);
    body.push_back(reply.status);
    body.insert(body.end(), reply.data.begin(), reply.data.end());
    return enveloped(body);
}

} // namespace vssim

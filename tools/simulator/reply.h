/// What a station answers, and how it stands on the wire.
#ifndef VSSIM_REPLY_H
#define VSSIM_REPLY_H

#include "simulator/bytes.h"

namespace vssim {

struct Reply {
    std::uint8_t station;
    std::uint8_t status; ///< 0 for done, else why not
    Bytes data;          ///< reads only; empty in acknowledgements and refusals
};

/// The frame: envelope, checksum and doubling included.
Bytes encode(const Reply &reply);

} // namespace vssim

#endif

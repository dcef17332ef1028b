#ifndef VSSIM_BYTES_H
#define VSSIM_BYTES_H

#include <cstdint>
#include <vector>

namespace vssim {

using Bytes = std::vector<std::uint8_t>;

} // namespace vssim

#endif

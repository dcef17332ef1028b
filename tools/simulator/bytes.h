#pragma once

#include <cstdint>
#include <vector>

namespace vssim {

using Bytes = std::vector<std::uint8_t>;

} // namespace vssim

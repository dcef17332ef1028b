#include "common/hexText.h"

#include <fmt/ranges.h>

namespace tools {

std::string hexText(const std::uint8_t *bytes, std::size_t size)
{
    return fmt::format("{:02X}", fmt::join(bytes, bytes + size, " "));
}

} // namespace tools

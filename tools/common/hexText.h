/// Bytes as people read them in a trace.
#ifndef TOOLS_HEX_TEXT_H
#define TOOLS_HEX_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace tools {

/// Two upper-case digits a byte, parted by spaces: "10 02 01"; empty for no bytes.
std::string hexText(const std::uint8_t *bytes, std::size_t size);

} // namespace tools

#endif

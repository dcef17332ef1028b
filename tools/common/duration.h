// Spans of time as they are written on a command line.
#pragma once

#include <chrono>
#include <string>

namespace tools {

/// Reads "250ms", "10s", "2m" or "1.5s". Throws std::invalid_argument for anything else, a missing unit included.
std::chrono::milliseconds parseDuration(const std::string &text);

} // namespace tools

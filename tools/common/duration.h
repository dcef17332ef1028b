/// Spans of time as they are written on a command line.
#ifndef TOOLS_DURATION_H
#define TOOLS_DURATION_H

#include <chrono>
#include <string>

namespace tools {

/// Reads "250ms", "10s", "2m" or "1.5s". Throws std::invalid_argument for anything else, a missing unit included.
std::chrono::milliseconds parseDuration(const std::string &text);

} // namespace tools

#endif

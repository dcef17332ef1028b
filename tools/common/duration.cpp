#include "common/duration.h"

#include <fmt/format.h>

#include <stdexcept>

namespace tools {

namespace {

constexpr double LONGEST_MILLISECONDS = 1e10; // about four months: nothing here runs longer

double millisecondsPerUnit(const std::string &unit)
{
    if (unit == "ms")
        return 1;
    if (unit == "s")
        return 1000;
    if (unit == "m")
        return 60000;
    return 0;
}

} // namespace

std::chrono::milliseconds parseDuration(const std::string &text)
{
    const std::size_t digits = text.find_first_not_of("0123456789.");
    const double factor = digits == std::string::npos ? 0 : millisecondsPerUnit(text.substr(digits));
    const bool readable =
        digits != 0 && factor > 0 && text.front() != '.' && text.find('.') == text.substr(0, digits).rfind('.');
    if (!readable || digits > 12)
        throw std::invalid_argument(fmt::format("\"{}\" is no span of time such as 250ms, 10s or 2m", text));
    const double milliseconds = std::stod(text.substr(0, digits)) * factor;
    if (milliseconds > LONGEST_MILLISECONDS)
        throw std::invalid_argument(fmt::format("the span of time \"{}\" is too long", text));
    return std::chrono::milliseconds(static_cast<std::chrono::milliseconds::rep>(milliseconds));
}

} // namespace tools

#include "simulator/seeds.h"

#include "simulator/addressText.h"

#include <fmt/format.h>

#include <cerrno>
#include <charconv>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace vssim {

namespace {

struct Assignment {
    std::set<std::uint8_t> stations;
    Address first;
    std::vector<std::uint32_t> values;
};

std::string trimmed(const std::string &text)
{
    const char *blanks = " \t\r";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string::npos)
        return "";
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

// The whole text as a number; -2^63 for what is none, which fits no kind.
std::int64_t parseNumber(const std::string &text)
{
    const bool hexadecimal = text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0;
    const std::string digits = hexadecimal ? text.substr(2) : text;
    std::int64_t value = 0;
    const char *end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, value, hexadecimal ? 16 : 10);
    const bool whole = result.ec == std::errc() && result.ptr == end && !(hexadecimal && value < 0);
    return whole ? value : INT64_MIN;
}

// Negative numbers are the kind's two's complement; a bit is 0 or 1.
std::uint32_t parseValue(const std::string &text, const RegisterKind &kind)
{
    const std::int64_t value = parseNumber(trimmed(text));
    const std::int64_t highest = (std::int64_t{1} << kind.valueBits) - 1;
    const std::int64_t lowest = isBitKind(kind) ? 0 : -(std::int64_t{1} << (kind.valueBits - 1));
    if (value < lowest || value > highest)
        throw std::invalid_argument(
            fmt::format("\"{}\" is no value for {} ({} to {})", trimmed(text), kind.name, lowest, highest));
    return static_cast<std::uint32_t>(value);
}

std::vector<std::uint32_t> parseValues(const std::string &text, const RegisterKind &kind)
{
    std::vector<std::uint32_t> values;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        values.push_back(parseValue(text.substr(begin, end - begin), kind));
        begin = end + 1;
    }
    return values;
}

std::uint8_t parseStation(const std::string &text, const Controller &controller)
{
    const std::int64_t number = parseNumber(text);
    const bool known = number >= 0 && number < BROADCAST_STATION &&
                       controller.stations().count(static_cast<std::uint8_t>(number)) != 0;
    if (!known)
        throw std::invalid_argument(fmt::format("\"{}\" is no simulated station", text));
    return static_cast<std::uint8_t>(number);
}

Assignment parse(const Controller &controller, const std::string &text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
        throw std::invalid_argument(fmt::format("\"{}\": expected [STATION:]ADDRESS=VALUE[,VALUE]...", text));
    const std::string target = trimmed(text.substr(0, equals));
    const std::size_t colon = target.find(':');
    const std::string address = colon == std::string::npos ? target : target.substr(colon + 1);
    Assignment assignment{controller.stations(), parseAddress(trimmed(address)), {}};
    if (colon != std::string::npos)
        assignment.stations = {parseStation(trimmed(target.substr(0, colon)), controller)};
    const RegisterKind &kind = *assignment.first.kind;
    assignment.values = parseValues(text.substr(equals + 1), kind);
    if (assignment.values.size() > kind.highest - assignment.first.number + 1)
        throw std::invalid_argument(
            fmt::format("\"{}\": the values run past {}", text, addressText(kind, kind.highest)));
    return assignment;
}

} // namespace

void seed(Controller &controller, const std::string &text)
{
    const Assignment assignment = parse(controller, text);
    for (const std::uint8_t station : assignment.stations) {
        std::uint32_t number = assignment.first.number;
        for (const std::uint32_t value : assignment.values)
            controller.write(station, assignment.first.kind->name, number++, value);
    }
}

void seedFromFile(Controller &controller, const std::string &fileName)
{
    std::ifstream file(fileName);
    if (!file)
        throw std::system_error(errno, std::generic_category(), fileName);
    std::string line;
    for (unsigned lineNumber = 1; std::getline(file, line); ++lineNumber) {
        const std::string assignment = trimmed(line.substr(0, line.find('#')));
        if (assignment.empty())
            continue;
        try {
            seed(controller, assignment);
        } catch (const std::invalid_argument &error) {
            throw std::invalid_argument(fmt::format("{}:{}: {}", fileName, lineNumber, error.what()));
        }
    }
    if (file.bad())
        throw std::system_error(errno, std::generic_category(), fileName);
}

} // namespace vssim

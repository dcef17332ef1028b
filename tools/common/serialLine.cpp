#include "common/serialLine.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <stdexcept>
#include <system_error>
#include <vector>

#include <unistd.h>

namespace tools {

namespace {

constexpr std::size_t SETTING_COUNT = 4; // baud rate, data bits, parity, stop bits
constexpr unsigned HIGHEST_BAUD_RATE = 4000000;

[[noreturn]] void refuse(const std::string &text, const std::string &why)
{
    throw std::invalid_argument(
        fmt::format("serial line \"{}\": {}; expected DEVICE or DEVICE:19200,8,NONE,1", text, why));
}

std::vector<std::string> splitAtCommas(const std::string &text)
{
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t comma = text.find(','); comma != std::string::npos; comma = text.find(',', begin)) {
        parts.push_back(text.substr(begin, comma - begin));
        begin = comma + 1;
    }
    parts.push_back(text.substr(begin));
    return parts;
}

unsigned parseNumber(const std::string &number, unsigned lowest, unsigned highest, const std::string &text,
                     const char *what)
{
    const bool digits = !number.empty() && number.size() <= 7 &&
                        std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; });
    const unsigned long value = digits ? std::stoul(number) : 0;
    if (!digits || value < lowest || value > highest)
        refuse(text, fmt::format("\"{}\" is no {} ({} to {})", number, what, lowest, highest));
    return static_cast<unsigned>(value);
}

Parity parseParity(std::string name, const std::string &text)
{
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (name == "NONE" || name == "N")
        return Parity::None;
    if (name == "ODD" || name == "O")
        return Parity::Odd;
    if (name == "EVEN" || name == "E")
        return Parity::Even;
    refuse(text, fmt::format("\"{}\" is no parity (NONE, ODD or EVEN)", name));
}

asio::serial_port::parity::type asioParity(Parity parity)
{
    switch (parity) {
    case Parity::Odd:
        return asio::serial_port::parity::odd;
    case Parity::Even:
        return asio::serial_port::parity::even;
    case Parity::None:
        break;
    }
    return asio::serial_port::parity::none;
}

// Device names may hold colons themselves (/dev/serial/by-path/...-0:1:1.0-port0): what stands behind the last one
// counts as settings only if it looks like some.
std::size_t settingsColon(const std::string &text)
{
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos)
        return colon;
    const std::string tail = text.substr(colon + 1);
    const bool isDeviceName =
        tail.find(',') == std::string::npos && tail.find_first_not_of("0123456789") != std::string::npos;
    return isDeviceName ? std::string::npos : colon;
}

bool isPty(asio::serial_port &port)
{
    std::array<char, 256> name{};
    return ttyname_r(port.native_handle(), name.data(), name.size()) == 0 &&
           std::string(name.data()).rfind("/dev/pts/", 0) == 0;
}

[[noreturn]] void fail(asio::serial_port &port, const asio::error_code &error, const std::string &what)
{
    asio::error_code ignored;
    port.close(ignored);
    throw std::system_error(error, what);
}

template <typename Option>
void setUp(asio::serial_port &port, const Option &option, bool tolerant, const std::string &what)
{
    asio::error_code error;
    port.set_option(option, error);
    if (error && !tolerant)
        fail(port, error, what);
}

} // namespace

SerialSettings parseSerial(const std::string &text)
{
    SerialSettings settings;
    const std::size_t colon = settingsColon(text);
    settings.device = text.substr(0, colon);
    if (settings.device.empty())
        refuse(text, "the device is missing");
    if (colon == std::string::npos)
        return settings;
    const std::vector<std::string> parts = splitAtCommas(text.substr(colon + 1));
    if (parts.size() != SETTING_COUNT)
        refuse(text, "four settings belong behind the colon");
    settings.baudRate = parseNumber(parts[0], 50, HIGHEST_BAUD_RATE, text, "baud rate");
    settings.dataBits = parseNumber(parts[1], 5, 8, text, "number of data bits");
    settings.parity = parseParity(parts[2], text);
    settings.stopBits = parseNumber(parts[3], 1, 2, text, "number of stop bits");
    return settings;
}

void openSerial(asio::serial_port &port, const SerialSettings &settings)
{
    using Port = asio::serial_port;
    const std::string what = fmt::format("serial line {}", settings.device);
    asio::error_code error;
    port.open(settings.device, error); // asio sets the line raw: no echo, no translation
    if (error)
        fail(port, error, what);
    const bool tolerant = isPty(port);
    const auto stopBits = settings.stopBits == 2 ? Port::stop_bits::two : Port::stop_bits::one;
    setUp(port, Port::baud_rate(settings.baudRate), tolerant, fmt::format("{}: baud rate", what));
    setUp(port, Port::character_size(settings.dataBits), tolerant, fmt::format("{}: data bits", what));
    setUp(port, Port::parity(asioParity(settings.parity)), tolerant, fmt::format("{}: parity", what));
    setUp(port, Port::stop_bits(stopBits), tolerant, fmt::format("{}: stop bits", what));
    setUp(port, Port::flow_control(Port::flow_control::none), tolerant, fmt::format("{}: flow control", what));
}

} // namespace tools

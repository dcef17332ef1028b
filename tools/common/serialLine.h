/// A serial line: how its settings are written, and how it is opened with them.
#ifndef TOOLS_SERIAL_LINE_H
#define TOOLS_SERIAL_LINE_H

#include <asio/serial_port.hpp>

#include <string>

namespace tools {

enum class Parity { None, Odd, Even };

struct SerialSettings {
    std::string device;
    unsigned baudRate = 19200;
    unsigned dataBits = 8;
    Parity parity = Parity::None;
    unsigned stopBits = 1;
};

/// Reads "DEVICE" or "DEVICE:BAUD,BITS,PARITY,STOP" such as "/dev/ttyUSB0:19200,8,NONE,1"; parity is NONE, ODD or EVEN.
/// Throws std::invalid_argument with a message for the user.
SerialSettings parseSerial(const std::string &text);

/// Opens the device raw and sets it up. Throws std::system_error, whose text names the device, and leaves `port`
/// closed then. A pty has no line behind it: settings that it refuses are passed over.
void openSerial(asio::serial_port &port, const SerialSettings &settings);

} // namespace tools

#endif

/// The controller on a serial line, or on a pty in its stead.
#ifndef VSSIM_LINE_SERVER_H
#define VSSIM_LINE_SERVER_H

#include "simulator/session.h"

#include "common/serialLine.h"

#include <asio/posix/stream_descriptor.hpp>

namespace vssim {

class SerialServer {
public:
    /// Called when the line is gone, an adapter unplugged for one.
    using Lost = std::function<void(const asio::error_code &)>;

    /// Throws std::system_error.
    SerialServer(asio::io_context &context, const tools::SerialSettings &settings, const Served &all, Lost lost = {});
    ~SerialServer();
    SerialServer(const SerialServer &) = delete;
    SerialServer &operator=(const SerialServer &) = delete;

private:
    std::shared_ptr<Session<asio::serial_port>> m_session;
};

/// Makes a pty and serves its master side; hosts open `device()`, in turn, as they would a serial device.
class PtyServer {
public:
    /// Throws std::system_error.
    PtyServer(asio::io_context &context, const Served &all);
    ~PtyServer();
    PtyServer(const PtyServer &) = delete;
    PtyServer &operator=(const PtyServer &) = delete;

    const std::string &device() const { return m_deviceName; }

private:
    std::string m_deviceName;
    asio::posix::stream_descriptor m_hostSide; ///< held open: with no one there, reading the master side would fail
    std::shared_ptr<Session<asio::posix::stream_descriptor>> m_session;
};

} // namespace vssim

#endif

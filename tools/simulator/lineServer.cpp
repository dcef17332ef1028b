#include "simulator/lineServer.h"

#include <cerrno>
#include <system_error>

#include <cstdlib>
#include <fcntl.h>
#include <termios.h>

namespace vssim {

namespace {

int checked(int result, const char *what)
{
    if (result < 0)
        throw std::system_error(errno, std::generic_category(), what);
    return result;
}

std::string deviceOf(int master)
{
    std::array<char, 256> name{};
    const int failure = ptsname_r(master, name.data(), name.size());
    if (failure != 0)
        throw std::system_error(failure, std::generic_category(), "pty name");
    return name.data();
}

// No echo and no translation, whatever the host sets up later.
void makeRaw(int descriptor)
{
    termios settings{};
    checked(tcgetattr(descriptor, &settings), "pty settings");
    cfmakeraw(&settings);
    checked(tcsetattr(descriptor, TCSANOW, &settings), "pty settings");
}

} // namespace

SerialServer::SerialServer(asio::io_context &context, const tools::SerialSettings &settings, const Served &all,
                           Lost lost)
{
    asio::serial_port port(context);
    tools::openSerial(port, settings);
    m_session = std::make_shared<Session<asio::serial_port>>(std::move(port), all, settings.device, std::move(lost));
    m_session->start();
}

SerialServer::~SerialServer() { m_session->close(); }

PtyServer::PtyServer(asio::io_context &context, const Served &all) : m_hostSide(context)
{
    asio::posix::stream_descriptor master(context, checked(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "pty"));
    checked(grantpt(master.native_handle()), "pty");
    checked(unlockpt(master.native_handle()), "pty");
    m_deviceName = deviceOf(master.native_handle());
    m_hostSide.assign(checked(open(m_deviceName.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC), m_deviceName.c_str()));
    makeRaw(m_hostSide.native_handle());
    m_session = std::make_shared<Session<asio::posix::stream_descriptor>>(std::move(master), all, m_deviceName);
    m_session->start();
}

PtyServer::~PtyServer() { m_session->close(); }

} // namespace vssim

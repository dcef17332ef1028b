#include "link.h"

#include "errors.h"

#include <asio/connect.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/write.hpp>

#include <array>
#include <optional>
#include <stdexcept>

namespace vshost {

namespace {

const tools::TcpAddress DEFAULT_ADDRESS = {"127.0.0.1", 8000};

/// A station whose host does not even refuse the connection is given up sooner than the system would.
constexpr Milliseconds CONNECT_TIMEOUT{3000};
/// A link that takes no bytes for so long is as good as broken.
constexpr Milliseconds SEND_TIMEOUT{3000};

constexpr std::size_t RECEIVE_SIZE = 4096;

using Tcp = asio::ip::tcp;

/// Runs `context` until its one operation has set `result`; cancels it with `cancel` when the time has passed.
template <typename Cancel>
void runFor(asio::io_context &context, Milliseconds timeout, const std::optional<asio::error_code> &result,
            Cancel cancel)
{
    context.restart();
    context.run_for(timeout);
    if (!result) {
        cancel();
        context.restart();
        context.run();
    }
}

/// What is the same for both kinds of stream. An operation that is cancelled for its time may have moved bytes.
template <typename Stream> class StreamLink : public Link {
public:
    void send(const std::uint8_t *bytes, std::size_t size) override
    {
        std::optional<asio::error_code> result;
        asio::async_write(mStream, asio::buffer(bytes, size),
                          [&result](const asio::error_code &error, std::size_t) { result = error; });
        run(SEND_TIMEOUT, result);
        if (*result)
            fail(*result == asio::error::operation_aborted ? asio::error::timed_out : *result);
    }

    Bytes receive(Milliseconds timeout) override
    {
        std::array<std::uint8_t, RECEIVE_SIZE> buffer;
        std::size_t received = 0;
        std::optional<asio::error_code> result;
        mStream.async_read_some(asio::buffer(buffer),
                                [&result, &received](const asio::error_code &error, std::size_t size) {
                                    result = error;
                                    received = size;
                                });
        run(timeout, result);
        if (*result && *result != asio::error::operation_aborted)
            fail(*result);
        return Bytes(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(received));
    }

protected:
    [[noreturn]] static void fail(const asio::error_code &error)
    {
        throw LinkError(error == asio::error::eof ? "closed by the other side" : error.message());
    }

    void run(Milliseconds timeout, const std::optional<asio::error_code> &result)
    {
        runFor(
            mContext, timeout, result, [this] { mStream.cancel(); });
    }

    asio::io_context mContext;
    Stream mStream{mContext};
};

class TcpLink : public StreamLink<Tcp::socket> {
public:
    explicit TcpLink(const tools::TcpAddress &address)
    {
        asio::error_code error;
        const auto endpoints = Tcp::resolver(mContext).resolve(address.host, std::to_string(address.port), error);
        if (error)
            fail(error);
        connect(endpoints);
        // A request is small and the next one waits for its answer: nothing is won by waiting for more to send.
        mStream.set_option(Tcp::no_delay(true), error);
    }

private:
    void connect(const Tcp::resolver::results_type &endpoints)
    {
        std::optional<asio::error_code> result;
        asio::async_connect(
            mStream, endpoints, [&result](const asio::error_code &failed, const Tcp::endpoint &) { result = failed; });
        runFor(mContext, CONNECT_TIMEOUT, result, [this] { mStream.close(); });
        if (*result)
            fail(*result == asio::error::operation_aborted ? asio::error::timed_out : *result);
    }
};

class SerialLink : public StreamLink<asio::serial_port> {
public:
    explicit SerialLink(const tools::SerialSettings &settings)
    {
        try {
            tools::openSerial(mStream, settings);
        } catch (const std::system_error &error) {
            fail(error.code());
        }
    }
};

} // namespace

LinkAddress parseLinkAddress(const std::string &tcp, const std::string &serial)
{
    try {
        if (serial.empty())
            return tools::parseTcp(tcp, DEFAULT_ADDRESS);
        return tools::parseSerial(serial);
    } catch (const std::invalid_argument &error) {
        throw UsageError(error.what());
    }
}

std::string textOf(const LinkAddress &address)
{
    if (const tools::TcpAddress *tcp = std::get_if<tools::TcpAddress>(&address))
        return tools::tcpText(*tcp);
    return std::get<tools::SerialSettings>(address).device;
}

std::unique_ptr<Link> openLink(const LinkAddress &address)
{
    try {
        if (const tools::TcpAddress *tcp = std::get_if<tools::TcpAddress>(&address))
            return std::make_unique<TcpLink>(*tcp);
        return std::make_unique<SerialLink>(std::get<tools::SerialSettings>(address));
    } catch (const LinkError &error) {
        throw LinkError("cannot open " + textOf(address) + ": " + error.what());
    }
}

} // namespace vshost

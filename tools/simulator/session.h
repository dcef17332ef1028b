// One open link: bytes in, requests to the controller, answers out. The only place where links and delays are awaited.
#pragma once

#include "simulator/controller.h"
#include "simulator/trace.h"

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include <deque>
#include <functional>
#include <memory>
#include <utility>

namespace vssim {

/// What every session of a program shares; both must outlive the io_context that the sessions run on.
struct Served {
    Controller &controller;
    Trace &trace;
};

/// `Stream` is an asio stream: a TCP socket, a serial port, a file descriptor. A session keeps itself alive while it
/// waits for something. Nothing more is read until every answer to what has been read is out, so a host that only
/// sends cannot fill the memory.
template <typename Stream> class Session : public std::enable_shared_from_this<Session<Stream>> {
public:
    using Ended = std::function<void(const asio::error_code &)>;

    Session(Stream &&opened, const Served &all, std::string linkName, Ended whenEnded = {})
        : stream(std::move(opened)), timer(stream.get_executor()), served(all), name(std::move(linkName)),
          ended(std::move(whenEnded))
    {
    }

    void start() { read(); }

    /// Ends the session; `whenEnded` is not called.
    void close()
    {
        ended = {};
        end({});
    }

private:
    void read()
    {
        stream.async_read_some(asio::buffer(chunk), [self = this->shared_from_this()](const auto &error, auto size) {
            self->received(error, size);
        });
    }

    void received(const asio::error_code &error, std::size_t size)
    {
        if (error)
            return end(error);
        const Bytes bytes(chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(size));
        served.trace.write(Direction::received, name, bytes);
        for (const Frame &frame : reader.feed(bytes))
            if (auto answer = served.controller.answer(frame))
                answers.push_back(std::move(*answer));
        proceed();
    }

    void proceed()
    {
        if (answers.empty())
            return read();
        timer.expires_after(answers.front().delay);
        timer.async_wait([self = this->shared_from_this()](const auto &error) {
            if (!error)
                self->send();
        });
    }

    void send()
    {
        served.trace.write(Direction::sent, name, answers.front().bytes);
        asio::async_write(stream, asio::buffer(answers.front().bytes),
                          [self = this->shared_from_this()](const auto &error, auto) {
                              if (error)
                                  return self->end(error);
                              self->answers.pop_front();
                              self->proceed();
                          });
    }

    void end(const asio::error_code &error)
    {
        asio::error_code ignored;
        stream.close(ignored);
        timer.cancel();
        if (const Ended call = std::exchange(ended, {}))
            call(error);
    }

    Stream stream;
    asio::steady_timer timer;
    Served served;
    const std::string name;
    Ended ended;
    std::array<std::uint8_t, 512> chunk{};
    FrameReader reader;
    std::deque<Answer> answers; ///< the front one is on its way
};

} // namespace vssim

/// One open link: bytes in, requests to the controller, answers out. The only place where links and delays are awaited.
#ifndef VSSIM_SESSION_H
#define VSSIM_SESSION_H

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
        : m_stream(std::move(opened)), m_timer(m_stream.get_executor()), m_served(all), m_name(std::move(linkName)),
          m_ended(std::move(whenEnded))
    {
    }

    void start() { read(); }

    /// Ends the session; `whenEnded` is not called.
    void close()
    {
        m_ended = {};
        end({});
    }

private:
    void read()
    {
        m_stream.async_read_some(
            asio::buffer(m_chunk),
            [self = this->shared_from_this()](const auto &error, auto size) { self->received(error, size); });
    }

    void received(const asio::error_code &error, std::size_t size)
    {
        if (error)
            return end(error);
        const Bytes bytes(m_chunk.begin(), m_chunk.begin() + static_cast<std::ptrdiff_t>(size));
        m_served.trace.write(Direction::Received, m_name, bytes);
        for (const Frame &frame : m_reader.feed(bytes))
            if (auto answer = m_served.controller.answer(frame))
                m_answers.push_back(std::move(*answer));
        proceed();
    }

    void proceed()
    {
        if (m_answers.empty())
            return read();
        m_timer.expires_after(m_answers.front().delay);
        m_timer.async_wait([self = this->shared_from_this()](const auto &error) {
            if (!error)
                self->send();
        });
    }

    void send()
    {
        m_served.trace.write(Direction::Sent, m_name, m_answers.front().bytes);
        asio::async_write(m_stream, asio::buffer(m_answers.front().bytes),
                          [self = this->shared_from_this()](const auto &error, auto) {
                              if (error)
                                  return self->end(error);
                              self->m_answers.pop_front();
                              self->proceed();
                          });
    }

    void end(const asio::error_code &error)
    {
        asio::error_code ignored;
        m_stream.close(ignored);
        m_timer.cancel();
        if (const Ended call = std::exchange(m_ended, {}))
            call(error);
    }

    Stream m_stream;
    asio::steady_timer m_timer;
    Served m_served;
    const std::string m_name;
    Ended m_ended;
    std::array<std::uint8_t, 512> m_chunk{};
    FrameReader m_reader;
    std::deque<Answer> m_answers; ///< the front one is on its way
};

} // namespace vssim

#endif

/// The hex trace: what came in and went out, when, and on which link.
#ifndef VSSIM_TRACE_H
#define VSSIM_TRACE_H

#include "simulator/bytes.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

namespace vssim {

enum class Direction { Received, Sent };

/// "2024-05-06 07:08:09.123456 > 127.0.0.1:40000  10 02 01"; ">" came in, "<" went out. The time is UTC.
std::string traceLine(std::chrono::system_clock::time_point time, Direction direction, const std::string &link,
                      const Bytes &bytes);

class Trace {
public:
    /// Writes nowhere.
    Trace() = default;

    /// Writes to standard error, or to the file, which begins empty. Throws std::system_error.
    static Trace toStandardError();
    static Trace toFile(const std::string &fileName);

    /// Each line is out when the call returns: the trace is there to see what came before a failure.
    void write(Direction direction, const std::string &link, const Bytes &bytes);

private:
    using Closer = int (*)(std::FILE *);
    Trace(std::FILE *file, Closer closer) : m_stream(file, closer) {}

    std::unique_ptr<std::FILE, Closer> m_stream{nullptr, nullptr};
};

} // namespace vssim

#endif

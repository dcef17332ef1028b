/// Lines of standard input, read on a thread of their own.
#ifndef VSHOST_LINE_READER_H
#define VSHOST_LINE_READER_H

#include "stopSignal.h"

#include <functional>
#include <string>
#include <thread>

namespace vshost {

class LineReader {
public:
    using Handler = std::function<void(const std::string &line)>;

    /// Calls `handler` on the reader's thread with each line that is not blank. Reading ends with the input, or when
    /// an end is requested.
    LineReader(StopSignal &stop, Handler handler);
    /// Requests the end of everything, since the thread may be waiting for a line, and waits for the thread.
    ~LineReader();
    LineReader(const LineReader &) = delete;
    LineReader &operator=(const LineReader &) = delete;

private:
    void run();
    bool waitForInput() const;
    void handleLines();

    StopSignal &m_stop;
    Handler m_handler;
    std::string m_text;
    std::thread m_thread;
};

} // namespace vshost

#endif

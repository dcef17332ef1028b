#include "lineReader.h"

#include <poll.h>
#include <unistd.h>

namespace vshost {

namespace {

const char BLANKS[] = " \t\r\n";

} // namespace

LineReader::LineReader(StopSignal &stop, Handler handler)
    : m_stop(stop), m_handler(std::move(handler)), m_thread([this] { run(); })
{
}

LineReader::~LineReader()
{
    m_stop.request();
    m_thread.join();
}

void LineReader::run()
{
    char buffer[4096];
    while (waitForInput()) {
        const ssize_t size = read(STDIN_FILENO, buffer, sizeof buffer);
        if (size <= 0)
            break;
        m_text.append(buffer, static_cast<std::size_t>(size));
        handleLines();
    }
    if (!m_stop.requested()) {
        m_text += '\n';
        handleLines();
    }
}

bool LineReader::waitForInput() const
{
    pollfd sources[] = {{STDIN_FILENO, POLLIN, 0}, {m_stop.descriptor(), POLLIN, 0}};
    return poll(sources, 2, -1) > 0 && sources[1].revents == 0;
}

void LineReader::handleLines()
{
    for (std::size_t end = m_text.find('\n'); end != std::string::npos; end = m_text.find('\n')) {
        const std::string line = m_text.substr(0, end);
        m_text.erase(0, end + 1);
        if (line.find_first_not_of(BLANKS) != std::string::npos)
            m_handler(line);
    }
}

} // namespace vshost

#include "simulator/trace.h"

#include "common/hexText.h"

#include <fmt/chrono.h>

#include <cerrno>
#include <system_error>

namespace vssim {

namespace {

int leaveOpen(std::FILE *) { return 0; }

} // namespace

std::string traceLine(std::chrono::system_clock::time_point time, Direction direction, const std::string &link,
                      const Bytes &bytes)
{
    using namespace std::chrono;
    const auto seconds = time_point_cast<std::chrono::seconds>(time);
    const auto fraction = duration_cast<microseconds>(time - seconds).count();
    return fmt::format("{:%F %T}.{:06} {} {}  {}", fmt::gmtime(system_clock::to_time_t(seconds)), fraction,
                       direction == Direction::Received ? '>' : '<', link, tools::hexText(bytes.data(), bytes.size()));
}

Trace Trace::toStandardError() { return {stderr, leaveOpen}; }

Trace Trace::toFile(const std::string &fileName)
{
    std::FILE *file = std::fopen(fileName.c_str(), "w");
    if (!file)
        throw std::system_error(errno, std::generic_category(), fileName);
    return {file, std::fclose};
}

void Trace::write(Direction direction, const std::string &link, const Bytes &bytes)
{
    if (!m_stream)
        return;
    const std::string line = traceLine(std::chrono::system_clock::now(), direction, link, bytes) + '\n';
    std::fputs(line.c_str(), m_stream.get());
    std::fflush(m_stream.get());
}

} // namespace vssim

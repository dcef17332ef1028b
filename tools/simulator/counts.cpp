#include "simulator/counts.h"

#include <fmt/format.h>

namespace vssim {

namespace {

std::uint64_t requestsOf(const Counts &counts, Command command)
{
    const auto found = counts.requests.find(command);
    return found == counts.requests.end() ? 0 : found->second;
}

void addPart(std::string &line, const std::string &name, std::uint64_t count)
{
    if (count != 0)
        line += fmt::format("{}{} {}", line.empty() ? "" : ", ", name, count);
}

std::string refusalText(const Counts &counts)
{
    std::string line;
    for (const auto &[status, count] : counts.refusals)
        addPart(line, fmt::format("{} ({})", statusText(status), static_cast<unsigned>(status)), count);
    return line;
}

std::string faultText(const Counts &counts)
{
    std::string line;
    for (std::size_t i = 0; i < FAULT_KIND_COUNT; ++i)
        addPart(line, faultName(static_cast<FaultKind>(i)), counts.faults[i]);
    return line;
}

} // namespace

std::string summaryText(const Counts &counts)
{
    const std::string refusals = refusalText(counts);
    const std::string faults = faultText(counts);
    std::string text = fmt::format(
        "requests: read units {}, read bits {}, write units {}, write bits {}, broadcast {}, not answered {}\n",
        requestsOf(counts, Command::ReadUnits), requestsOf(counts, Command::ReadBits),
        requestsOf(counts, Command::WriteUnits), requestsOf(counts, Command::WriteBits), counts.broadcasts,
        counts.unanswerable);
    text += fmt::format("refusals: {}\n", refusals.empty() ? "none" : refusals);
    text += fmt::format("faults: {}\n", faults.empty() ? "none" : faults);
    return text;
}

} // namespace vssim

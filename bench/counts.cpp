/// What can be counted rather than timed.
#include "allocations.h"
#include "lineUse.h"
#include "work.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>

namespace {

const WorkRow &rowNamed(const std::string &name)
{
    return *std::find_if(
        allWork().begin(), allWork().end(), [&](const WorkRow &row) { return row.name == name; });
}

std::vector<std::string> namesOfWork()
{
    std::vector<std::string> names;
    for (const WorkRow &row : allWork())
        names.push_back(row.name);
    return names;
}

void printAllocations()
{
    const std::size_t times = 1000;
    for (const WorkRow &row : allWork()) {
        const std::unique_ptr<Work> work = row.prepare();
        work->run(times);
        const std::size_t before = heapNow().allocations;
        work->run(times);
        fmt::print("{}\t{:.1f}\n", row.name, static_cast<double>(heapNow().allocations - before) / times);
    }
}

void printMemory(int words)
{
    const PollList list(words);
    forgetPeak();
    const Heap before = heapNow();
    list.handOver();
    const Heap after = heapNow();
    fmt::print("peak\t{:.1f} MB\n", static_cast<double>(after.peakBytes - before.bytes) / 1e6);
    fmt::print("kept\t{:.1f} MB\n", static_cast<double>(after.bytes - before.bytes) / 1e6);
    fmt::print("unit\t{:.0f} bytes\n", static_cast<double>(after.bytes - before.bytes) / words);
}

} // namespace

int main(int argc, char **argv)
{
    CLI::App app("What the driver costs, counted");
    app.require_subcommand(1);
    std::string name;
    std::size_t times = 0;
    int keys = 100000;
    CLI::App *repeat = app.add_subcommand("repeat", "Repeat one work, for an instruction counter");
    repeat->add_option("work", name)->required()->check(CLI::IsMember(namesOfWork()));
    repeat->add_option("times", times)->required();
    CLI::App *words = app.add_subcommand("words", "What a work is, for people");
    words->add_option("work", name)->required()->check(CLI::IsMember(namesOfWork()));
    app.add_subcommand("allocations", "Allocations of each work");
    CLI::App *memory = app.add_subcommand("memory", "Memory that handing over a poll list takes");
    memory->add_option("words", keys, "single words in the list")->capture_default_str();
    app.add_subcommand("line", "Requests, bytes and milliseconds of a poll cycle");
    CLI11_PARSE(app, argc, argv);

    if (app.got_subcommand("repeat"))
        rowNamed(name).prepare()->run(times);
    else if (app.got_subcommand(words))
        fmt::print("{}\n", rowNamed(name).words);
    else if (app.got_subcommand("allocations"))
        printAllocations();
    else if (app.got_subcommand("memory"))
        printMemory(keys);
    else
        printLineUse();
    return 0;
}

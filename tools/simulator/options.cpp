#include "simulator/options.h"

#include "simulator/animation.h"

#include "common/duration.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <cstdio>
#include <stdexcept>

namespace vssim {

namespace {

using std::chrono::milliseconds;

const tools::TcpAddress USUAL_ADDRESS{"127.0.0.1", 8000};

// The texts as CLI11 collects them, before their meaning is looked at.
struct Texts {
    std::vector<std::string> tcp, serial, stations;
    std::string bitWrite = "single";
    std::string animateEvery;
    bool animate = false;
    std::string runFor;
};

std::string footer()
{
    return "Several --tcp and --serial, and --pty, may stand side by side; all serve the same stations. Ctrl-C ends "
           "the\n"
           "run with a count of requests, refusals and faults.\n"
           "\nAnimated values:\n" +
           animationList() +
           "\nFaults, NAME[:KEY=VALUE[,KEY=VALUE]...][@STATION], with the usual value of each key:\n" + faultList() +
           "Each takes p=PROBABILITY (0 to 1) and n=REQUESTS, after which it has worn off; several may meet a "
           "request.\n"
           "\nExamples:\n"
           "  vssim --tcp 8000 --animate\n"
           "  vssim --tcp 0.0.0.0:8000 --station 1-4 --fault silence@2 --set 1:D100=1,2,3 --set X17=1\n"
           "  vssim --serial /dev/ttyUSB0:19200,8,NONE,1 --trace\n"
           "  vssim --pty --fault flip:p=0.1 --fault delay:ms=200,n=3@1 --seed 7 --for 10s\n";
}

void declareLinks(CLI::App &app, Options &options, Texts &texts)
{
    app.add_option("--tcp", texts.tcp, "Listen on [HOST:]PORT; HOST is 127.0.0.1 if left out, port 0 is any free one")
        ->type_name("ADDRESS")
        ->allow_extra_args(false);
    app.add_option("--serial", texts.serial, "Serve the serial DEVICE[:19200,8,NONE,1]")
        ->type_name("LINE")
        ->allow_extra_args(false);
    app.add_flag("--pty", options.pty, "Make a pty and serve it; prints the device for the host to open");
}

void declareStations(CLI::App &app, Options &options, Texts &texts)
{
    app.add_option("--station", texts.stations, "Station, or stations FROM-TO, 0 to 254; 1 if none is given")
        ->type_name("N")
        ->allow_extra_args(false);
    app.add_option("--load", options.seedFiles, "Read values from a file: one --set text a line, # begins a comment")
        ->type_name("FILE")
        ->allow_extra_args(false);
    app.add_option("--set", options.seeds,
                   "Set values, after those of --load: [STATION:]ADDRESS=VALUE[,VALUE]..., such as D100=42, X17=1 or "
                   "D_bit100.5=1")
        ->type_name("VALUES")
        ->allow_extra_args(false);
    app.add_option("--bit-write", texts.bitWrite,
                   "What a request to write bits means. It carries a number of bytes, not of bits: 'bytes' writes all "
                   "eight bits of each byte, 'single' takes a lone byte for one bit")
        ->check(CLI::IsMember({"bytes", "single"}))
        ->type_name("MODE")
        ->capture_default_str();
}

void declareBehaviour(CLI::App &app, Options &options, Texts &texts)
{
    app.add_flag("--animate", texts.animate, "Let some values move by themselves, see below");
    app.add_option("--animate-every", texts.animateEvery, "Time between two steps, 100ms if left out; means --animate")
        ->type_name("TIME");
    app.add_option("--fault", options.faults, "Add a fault, see below")->type_name("FAULT")->allow_extra_args(false);
    app.add_option("--seed", options.faultSeed, "Seed of the faults' chances")->capture_default_str();
    app.add_option("--for", texts.runFor, "End after this TIME, such as 10s")->type_name("TIME");
}

void readStations(const std::string &text, std::set<std::uint8_t> &stations)
{
    const std::size_t dash = text.find('-');
    const std::string first = text.substr(0, dash);
    const std::string last = dash == std::string::npos ? first : text.substr(dash + 1);
    const auto isNumber = [](const std::string &digits) {
        return !digits.empty() && digits.size() <= 3 && digits.find_first_not_of("0123456789") == std::string::npos;
    };
    if (!isNumber(first) || !isNumber(last) || std::stoul(last) >= BROADCAST_STATION ||
        std::stoul(first) > std::stoul(last))
        throw std::invalid_argument(fmt::format("\"{}\" is no station (0 to 254) and no range FROM-TO of them", text));
    for (unsigned long station = std::stoul(first); station <= std::stoul(last); ++station)
        stations.insert(static_cast<std::uint8_t>(station));
}

void readAnimation(const Texts &texts, Options &options)
{
    if (texts.animate)
        options.animateEvery = milliseconds(100);
    if (!texts.animateEvery.empty())
        options.animateEvery = tools::parseDuration(texts.animateEvery);
    if (options.animateEvery && options.animateEvery->count() < 1)
        throw std::invalid_argument("--animate-every: the shortest time is 1ms");
}

void readTexts(const Texts &texts, Options &options)
{
    for (const std::string &text : texts.tcp)
        options.tcp.push_back(tools::parseTcp(text, USUAL_ADDRESS));
    for (const std::string &text : texts.serial)
        options.serial.push_back(tools::parseSerial(text));
    for (const std::string &text : texts.stations)
        readStations(text, options.stations);
    if (options.stations.empty())
        options.stations.insert(1);
    options.bitWriteMode = texts.bitWrite == "single" ? BitWriteMode::LoneBit : BitWriteMode::WholeBytes;
    readAnimation(texts, options);
    if (!texts.runFor.empty())
        options.runFor = tools::parseDuration(texts.runFor);
    for (const std::string &fault : options.faults)
        parseFault(fault);
    if (options.tcp.empty() && options.serial.empty() && !options.pty)
        throw std::invalid_argument("no link to serve: give --tcp, --serial or --pty");
}

} // namespace

std::variant<Options, int> parseOptions(int argc, char **argv)
{
    Options options;
    Texts texts;
    CLI::App app("vssim, a simulated tanek VS controller on TCP or a serial line", "vssim");
    declareLinks(app, options, texts);
    declareStations(app, options, texts);
    declareBehaviour(app, options, texts);
    auto *trace =
        app.add_option("--trace", options.traceFile, "Hex trace of both directions, to FILE or standard error")
            ->type_name("[FILE]")
            ->expected(0, 1);
    app.footer(footer());
    try {
        app.parse(argc, argv);
        options.trace = trace->count() > 0;
        readTexts(texts, options);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? EXIT_OK : EXIT_USAGE;
    } catch (const std::invalid_argument &error) {
        fmt::print(stderr, "vssim: {}\n", error.what());
        return EXIT_USAGE;
    }
    return options;
}

} // namespace vssim

// vssim: puts the simulated controller on its links and ends with a count of what happened.
#include "simulator/animation.h"
#include "simulator/lineServer.h"
#include "simulator/options.h"
#include "simulator/seeds.h"
#include "simulator/tcpServer.h"

#include <asio/signal_set.hpp>
#include <fmt/format.h>

#include <csignal>
#include <cstdio>
#include <list>
#include <memory>

namespace {

using namespace vssim;

/// Everything that runs on the one io_context, in the order in which it may go.
class Simulator {
public:
    explicit Simulator(const Options &chosen)
        : options(chosen), controller(chosen.stations, chosen.bitWriteMode, chosen.faultSeed), animation(controller),
          trace(openTrace(chosen))
    {
    }

    /// Throws std::invalid_argument or std::system_error.
    void prepareValues();
    /// Opens the links and says so on standard output. Throws std::system_error.
    void openLinks();
    /// Until a signal, the end of the time, or the loss of the last link; the exit code.
    int run();

private:
    static Trace openTrace(const Options &options);
    void openSerialLine(const tools::SerialSettings &settings);
    void lose(const std::string &device, const asio::error_code &error);
    void animateLater();
    void endLater();

    const Options &options;
    Controller controller;
    Animation animation;
    Trace trace;
    asio::io_context context;
    asio::signal_set signals{context, SIGINT, SIGTERM};
    asio::steady_timer animationTimer{context};
    asio::steady_timer endTimer{context};
    std::list<TcpServer> tcpServers;
    std::list<SerialServer> serialServers;
    std::list<PtyServer> ptyServers;
    std::size_t linksLeft = 0;
    int exitCode = exitOk;
};

Trace Simulator::openTrace(const Options &options)
{
    if (!options.trace)
        return {};
    return options.traceFile.empty() ? Trace::toStandardError() : Trace::toFile(options.traceFile);
}

void Simulator::prepareValues()
{
    for (const std::string &file : options.seedFiles)
        seedFromFile(controller, file);
    for (const std::string &assignment : options.seeds)
        seed(controller, assignment);
    for (const std::string &fault : options.faults)
        controller.addFault(fault);
}

void Simulator::openLinks()
{
    const Served served{controller, trace};
    for (const tools::TcpAddress &address : options.tcp) {
        const TcpServer &server = tcpServers.emplace_back(context, address, served);
        fmt::print("listening on {}\n", tools::tcpText(server.address()));
    }
    for (const tools::SerialSettings &settings : options.serial)
        openSerialLine(settings);
    if (options.pty)
        fmt::print("serial line on {}\n", ptyServers.emplace_back(context, served).device());
    std::fflush(stdout);
    linksLeft = tcpServers.size() + serialServers.size() + ptyServers.size();
}

void Simulator::openSerialLine(const tools::SerialSettings &settings)
{
    serialServers.emplace_back(
        context, settings, Served{controller, trace},
        [this, device = settings.device](const asio::error_code &error) { lose(device, error); });
    fmt::print("serving {}\n", settings.device);
}

void Simulator::lose(const std::string &device, const asio::error_code &error)
{
    fmt::print(stderr, "vssim: serial line {} is gone: {}\n", device, error.message());
    exitCode = exitLink;
    if (--linksLeft == 0)
        context.stop();
}

int Simulator::run()
{
    signals.async_wait([this](const auto &, int) { context.stop(); });
    animateLater();
    endLater();
    context.run();
    fmt::print(stderr, "{}", summaryText(controller.counts()));
    return exitCode;
}

void Simulator::animateLater()
{
    if (!options.animateEvery)
        return;
    animationTimer.expires_after(*options.animateEvery);
    animationTimer.async_wait([this](const auto &) {
        animation.step();
        animateLater();
    });
}

void Simulator::endLater()
{
    if (!options.runFor)
        return;
    endTimer.expires_after(*options.runFor);
    endTimer.async_wait([this](const auto &) { context.stop(); });
}

// Null after a complaint: whatever goes wrong before a link is touched lies in what the user gave.
std::unique_ptr<Simulator> prepare(const Options &options)
{
    try {
        auto simulator = std::make_unique<Simulator>(options);
        simulator->prepareValues();
        return simulator;
    } catch (const std::exception &error) {
        fmt::print(stderr, "vssim: {}\n", error.what());
        return nullptr;
    }
}

int simulate(const Options &options)
{
    const auto simulator = prepare(options);
    if (!simulator)
        return exitUsage;
    simulator->openLinks();
    return simulator->run();
}

} // namespace

int main(int argc, char **argv)
{
    try {
        const auto options = parseOptions(argc, argv);
        if (const int *exitCode = std::get_if<int>(&options))
            return *exitCode;
        return simulate(std::get<Options>(options));
    } catch (const std::exception &error) {
        fmt::print(stderr, "vssim: {}\n", error.what());
        return exitLink;
    }
}

/// vssim: puts the simulated controller on its links and ends with a count of what happened.
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
        : m_options(chosen), m_controller(chosen.stations, chosen.bitWriteMode, chosen.faultSeed),
          m_animation(m_controller), m_trace(openTrace(chosen))
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

    const Options &m_options;
    Controller m_controller;
    Animation m_animation;
    Trace m_trace;
    asio::io_context m_context;
    asio::signal_set m_signals{m_context, SIGINT, SIGTERM};
    asio::steady_timer m_animationTimer{m_context};
    asio::steady_timer m_endTimer{m_context};
    std::list<TcpServer> m_tcpServers;
    std::list<SerialServer> m_serialServers;
    std::list<PtyServer> m_ptyServers;
    std::size_t m_linksLeft = 0;
    int m_exitCode = EXIT_OK;
};

Trace Simulator::openTrace(const Options &options)
{
    if (!options.trace)
        return {};
    return options.traceFile.empty() ? Trace::toStandardError() : Trace::toFile(options.traceFile);
}

void Simulator::prepareValues()
{
    for (const std::string &file : m_options.seedFiles)
        seedFromFile(m_controller, file);
    for (const std::string &assignment : m_options.seeds)
        seed(m_controller, assignment);
    for (const std::string &fault : m_options.faults)
        m_controller.addFault(fault);
}

void Simulator::openLinks()
{
    const Served served{m_controller, m_trace};
    for (const tools::TcpAddress &address : m_options.tcp) {
        const TcpServer &server = m_tcpServers.emplace_back(m_context, address, served);
        fmt::print("listening on {}\n", tools::tcpText(server.address()));
    }
    for (const tools::SerialSettings &settings : m_options.serial)
        openSerialLine(settings);
    if (m_options.pty)
        fmt::print("serial line on {}\n", m_ptyServers.emplace_back(m_context, served).device());
    std::fflush(stdout);
    m_linksLeft = m_tcpServers.size() + m_serialServers.size() + m_ptyServers.size();
}

void Simulator::openSerialLine(const tools::SerialSettings &settings)
{
    m_serialServers.emplace_back(
        m_context, settings, Served{m_controller, m_trace},
        [this, device = settings.device](const asio::error_code &error) { lose(device, error); });
    fmt::print("serving {}\n", settings.device);
}

void Simulator::lose(const std::string &device, const asio::error_code &error)
{
    fmt::print(stderr, "vssim: serial line {} is gone: {}\n", device, error.message());
    m_exitCode = EXIT_LINK;
    if (--m_linksLeft == 0)
        m_context.stop();
}

int Simulator::run()
{
    m_signals.async_wait([this](const auto &, int) { m_context.stop(); });
    animateLater();
    endLater();
    m_context.run();
    fmt::print(stderr, "{}", summaryText(m_controller.counts()));
    return m_exitCode;
}

void Simulator::animateLater()
{
    if (!m_options.animateEvery)
        return;
    m_animationTimer.expires_after(*m_options.animateEvery);
    m_animationTimer.async_wait([this](const auto &) {
        m_animation.step();
        animateLater();
    });
}

void Simulator::endLater()
{
    if (!m_options.runFor)
        return;
    m_endTimer.expires_after(*m_options.runFor);
    m_endTimer.async_wait([this](const auto &) { m_context.stop(); });
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
        return EXIT_USAGE;
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
        return EXIT_LINK;
    }
}

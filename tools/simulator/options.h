/// The command line of vssim.
#ifndef VSSIM_OPTIONS_H
#define VSSIM_OPTIONS_H

#include "simulator/controller.h"

#include "common/serialLine.h"
#include "common/tcpAddress.h"

#include <chrono>

namespace vssim {

struct Options {
    std::vector<tools::TcpAddress> tcp;
    std::vector<tools::SerialSettings> serial;
    bool pty = false;
    std::set<std::uint8_t> stations;
    BitWriteMode bitWriteMode = BitWriteMode::LoneBit;
    std::vector<std::string> seedFiles;
    std::vector<std::string> seeds;
    std::optional<std::chrono::milliseconds> animateEvery; ///< none: nothing moves
    std::vector<std::string> faults;
    std::uint32_t faultSeed = 1;
    bool trace = false;
    std::string traceFile; ///< empty: standard error
    std::optional<std::chrono::milliseconds> runFor;
};

constexpr int EXIT_OK = 0;
constexpr int EXIT_LINK = 1;
constexpr int EXIT_USAGE = 2;

/// What to do, or the exit code after the help text or a complaint has been printed.
std::variant<Options, int> parseOptions(int argc, char **argv);

} // namespace vssim

#endif

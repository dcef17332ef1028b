/// What the commands share that do one thing and end: a link that is tried once, and the way from failures to an exit
/// code.
#ifndef VSHOST_ONE_SHOT_H
#define VSHOST_ONE_SHOT_H

#include "commands.h"
#include "driver.h"
#include "exitCode.h"
#include "printer.h"

namespace vshost {

/// Keeps the worst thing that happened.
class Verdict {
public:
    void failed(const Failure &failure);
    void failed(ExitCode code);
    ExitCode exitCode() const { return m_code; }

private:
    ExitCode m_code = EXIT_OK;
};

/// Stop signal, driver and register kinds, made in this order for every command.
struct Host {
    Host(const GeneralOptions &general, const DriverConfig &config)
        : printer(general.json, stop), driver(general.driver, config), kinds(driver.calls())
    {
    }

    StopSignal stop;
    Printer printer;
    Driver driver;
    RegisterKinds kinds;
};

/// The address and type of a command-line label such as "D_bit100.5"; `type` may be empty. Throws UsageError.
NamedAddress parseLabel(const RegisterKinds &kinds, const std::string &label, const std::string &type, int station);

DriverConfig driverConfigOf(const LinkOptions &options);
LinkConfig linkConfigOf(const LinkOptions &options);
Communication::Settings settingsOf(const LinkConfig &link, bool trace);

/// Runs transactions until `done` says so. Throws LinkError when the link fails; ends the verdict as interrupted on
/// Ctrl-C.
void runUntil(Host &host, const LinkConfig &link, bool trace, TransactionListener &listener, Verdict &verdict,
              const std::function<bool()> &done);

} // namespace vshost

#endif

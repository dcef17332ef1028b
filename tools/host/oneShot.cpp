#include "oneShot.h"

#include "errors.h"

#include <fmt/format.h>

#include <algorithm>

namespace vshost {

void Verdict::failed(const Failure &failure) { failed(failure.kind == Failure::Refused ? EXIT_REFUSED : EXIT_SILENT); }

void Verdict::failed(ExitCode code) { m_code = std::max(m_code, code); }

NamedAddress parseLabel(const RegisterKinds &kinds, const std::string &label, const std::string &type, int station)
{
    NamedAddress address;
    address.name = label;
    address.station = station;
    kinds.splitLabel(label, address);
    address.type = valueTypeFromName(type);
    if (!type.empty() && !address.type)
        throw UsageError(fmt::format("unknown type '{}'; there are {}", type, allValueTypeNames()));
    return address;
}

DriverConfig driverConfigOf(const LinkOptions &options)
{
    DriverConfig config;
    config.retryLimit = options.retries;
    return config;
}

LinkConfig linkConfigOf(const LinkOptions &options)
{
    LinkConfig link;
    link.tcp = options.tcp;
    link.serial = options.serial;
    link.timeout = options.timeout;
    link.pollInterval = Milliseconds(0);
    return link;
}

Communication::Settings settingsOf(const LinkConfig &link, bool trace)
{
    return {link.timeout, link.pollInterval, trace ? TraceBytes(&Printer::trace) : TraceBytes()};
}

void runUntil(Host &host, const LinkConfig &link, bool trace, TransactionListener &listener, Verdict &verdict,
              const std::function<bool()> &done)
{
    LinkKeeper keeper(parseLinkAddress(link.tcp, link.serial), host.stop, nullptr);
    Communication communication(host.driver.calls(), keeper, host.stop, settingsOf(link, trace), listener);
    while (!done() && !host.stop.requested())
        communication.step();
    if (!done()) {
        Printer::notice("interrupted");
        verdict.failed(EXIT_OTHER);
    }
}

} // namespace vshost

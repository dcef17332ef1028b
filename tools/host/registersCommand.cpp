/// `vshost registers`: the register kinds with their ranges, as the driver lists them. Needs no link.
#include "oneShot.h"

namespace vshost {

int registersCommand(const GeneralOptions &general)
{
    Host host(general, DriverConfig());
    host.printer.kinds(host.kinds.all());
    return EXIT_OK;
}

} // namespace vshost

/// Any text as the reference host's configuration: it is understood, or every line of the error names the file.
#include "config.h"
#include "errors.h"
#include "fuzzSupport.h"

#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    try {
        const vshost::Config config =
            vshost::parseConfig(std::string_view(reinterpret_cast<const char *>(bytes), size), "plant.toml");
        require(config.link.tcp.empty() != config.link.serial.empty(), "one link");
        for (const vshost::NamedAddress &value : config.values)
            require(!value.name.empty() && value.station >= 0 && value.station <= 255, "a name and a station");
    } catch (const vshost::UsageError &error) {
        require(std::string(error.what()).rfind("plant.toml", 0) == 0, "an error says where it is");
    }
    return 0;
}

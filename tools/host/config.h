/// The configuration file: what it says, read and checked as far as that goes without the driver.
#ifndef VSHOST_CONFIG_H
#define VSHOST_CONFIG_H

#include "timing.h"
#include "valueType.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vshost {

/// Exactly one of the two texts is given.
struct LinkConfig {
    /// "HOST:PORT".
    std::string tcp;
    /// "DEVICE" or "DEVICE:BAUD,DATABITS,PARITY,STOPBITS".
    std::string serial;
    /// How long a station may take for its whole answer.
    Milliseconds timeout{500};
    /// Shortest time from one request to the next.
    Milliseconds pollInterval{10};
};

/// The numbers of the driver's property text.
struct DriverConfig {
    int instance = 1;
    bool cacheOnlyWrites = false;
    int retryLimit = 3;
    int mergeGap = 8;
};

/// Where something stands in the file, for messages: "file:line:column".
using SourcePosition = std::string;

/// A value or a recipe item: an address with a name. Whether the address exists is the driver's to say.
struct NamedAddress {
    /// Of the address.
    SourcePosition position;
    std::string name;
    int station = 1;
    std::string regName;
    std::string addressText;
    /// None: the natural one of the register kind.
    std::optional<ValueType> type;
    double scale = 1;
    std::string unit;
};

struct RecipeItemConfig {
    NamedAddress address;
    /// Values in consecutive addresses.
    int count = 1;
    /// What a download without CSV writes, as texts: none, one for all, or `count` of them.
    std::vector<std::string> values;
};

struct RecipeConfig {
    std::string name;
    std::vector<RecipeItemConfig> items;
};

struct Config {
    LinkConfig link;
    DriverConfig driver;
    std::vector<NamedAddress> values;
    std::vector<RecipeConfig> recipes;
};

/// Reads the text of a configuration. Throws UsageError with one line for each thing that is wrong, such as
/// "plant.toml:12:11: value 'level': unknown key 'adress'".
Config parseConfig(std::string_view text, const std::string &fileName);

Config loadConfig(const std::string &fileName);

} // namespace vshost

#endif

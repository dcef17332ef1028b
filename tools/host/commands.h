/// What vshost can be told to do. Each command returns the exit code, and throws UsageError, LinkError or
/// std::runtime_error for what keeps it from its work.
#ifndef VSHOST_COMMANDS_H
#define VSHOST_COMMANDS_H

#include "timing.h"

#include <optional>
#include <string>
#include <vector>

namespace vshost {

struct GeneralOptions {
    /// Path of the driver; empty: found by itself.
    std::string driver;
    bool json = false;
    bool trace = false;
};

/// A link given on the command line; one of the two texts is empty.
struct LinkOptions {
    std::string tcp;
    std::string serial;
    int station = 1;
    Milliseconds timeout{500};
    int retries = 3;
};

struct RunOptions {
    std::string file;
    std::optional<Milliseconds> time;
};

struct ReadOptions {
    LinkOptions link;
    /// "D100", "D_bit100.5".
    std::vector<std::string> addresses;
    int count = 1;
    std::string type;
};

struct WriteOptions {
    LinkOptions link;
    /// "D100=42".
    std::vector<std::string> assignments;
    std::string type;
};

struct RecipeOptions {
    std::string file;
    std::string name;
    /// Table to take values from or to write them to; empty: the configuration's, or standard output.
    std::string csv;
};

int runCommand(const GeneralOptions &general, const RunOptions &options);
int readCommand(const GeneralOptions &general, const ReadOptions &options);
int writeCommand(const GeneralOptions &general, const WriteOptions &options);
int recipeDownloadCommand(const GeneralOptions &general, const RecipeOptions &options);
int recipeUploadCommand(const GeneralOptions &general, const RecipeOptions &options);
int registersCommand(const GeneralOptions &general);

} // namespace vshost

#endif

/// Values that the memory starts with, as text: "[STATION:]ADDRESS=VALUE[,VALUE]...".
#ifndef VSSIM_SEEDS_H
#define VSSIM_SEEDS_H

#include "simulator/controller.h"

namespace vssim {

/// Stores the values from the address on, in one station or in all. Values are decimal, negative or 0x-hexadecimal and
/// must fit the kind. Throws std::invalid_argument with a message for the user; nothing is stored then.
void seed(Controller &controller, const std::string &text);

/// One assignment a line; empty lines and what follows a # are passed over. The message of the exception names file and
/// line; the lines before it are stored. Throws std::system_error when the file cannot be read.
void seedFromFile(Controller &controller, const std::string &fileName);

} // namespace vssim

#endif

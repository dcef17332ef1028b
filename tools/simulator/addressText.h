/// Addresses as people write them: "D100", "X17", "D_bit100.5".
#ifndef VSSIM_ADDRESS_TEXT_H
#define VSSIM_ADDRESS_TEXT_H

#include "simulator/registerKinds.h"

#include <string>

namespace vssim {

struct Address {
    const RegisterKind *kind; ///< never null, never owned
    std::uint32_t number;     ///< within the kind's range
};

/// Throws std::invalid_argument with a message for the user: unknown kind, unreadable number, out of range.
Address parseAddress(const std::string &text);

/// A number of the kind in the kind's own notation, with its name: "X17" for number 15 of X.
std::string addressText(const RegisterKind &kind, std::uint32_t number);

} // namespace vssim

#endif

/// The two ways a command of vshost ends early; both carry the words for the user.
#ifndef VSHOST_ERRORS_H
#define VSHOST_ERRORS_H

#include <stdexcept>

namespace vshost {

/// What the user gave is wrong: command line, file, address, value. The text may have several lines.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The link cannot be opened or has broken.
class LinkError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace vshost

#endif

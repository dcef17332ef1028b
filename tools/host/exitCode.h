/// What vshost tells a script by its exit code.
#ifndef VSHOST_EXIT_CODE_H
#define VSHOST_EXIT_CODE_H

namespace vshost {

enum ExitCode {
    EXIT_OK = 0,
    /// Anything the other codes do not name, such as a driver that cannot be loaded.
    EXIT_OTHER = 1,
    /// Wrong command line, configuration, address or value; nothing was sent.
    EXIT_USAGE = 2,
    /// The link could not be opened, or broke during a one-shot command.
    EXIT_LINK = 3,
    /// A station gave no valid answer.
    EXIT_SILENT = 4,
    /// A station answered with an error status.
    EXIT_REFUSED = 5,
};

} // namespace vshost

#endif

/// What vshost tells: values and the ends of writes on standard output, as lines for people or as JSON, one object a
/// line; everything else on standard error.
#ifndef VSHOST_PRINTER_H
#define VSHOST_PRINTER_H

#include "stopSignal.h"
#include "writeTracker.h"

namespace vshost {

/// Every member may be called from any thread.
class Printer {
public:
    /// A reader that has gone away ends vshost through `stop`.
    Printer(bool json, StopSignal &stop) : m_json(json), m_stop(stop) {}

    /// A change, with the time. `pending`: the value was written and the controller has not confirmed it yet.
    void change(const Value &value, const ValueBytes &bytes, bool pending);
    /// The plain answer to a one-time read.
    void reading(const Value &value, const ValueBytes &bytes);
    void writeEnd(const WriteEnd &end, bool withTime);
    void kinds(const std::vector<RegisterKind> &kinds);
    /// Text that is data as it stands.
    void data(const std::string &text);

    static void notice(const std::string &text);
    static void trace(bool sent, const Bytes &bytes);

private:
    const bool m_json;
    StopSignal &m_stop;
};

} // namespace vshost

#endif

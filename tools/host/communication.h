/// The communication loop: asks the driver for a frame, has it exchanged on the link, hands the reply back.
#ifndef VSHOST_COMMUNICATION_H
#define VSHOST_COMMUNICATION_H

#include "driverLibrary.h"
#include "exchange.h"
#include "linkKeeper.h"
#include "statistics.h"

#include <QtCore/QString>

namespace vshost {

/// Why the driver gave a transaction up.
struct Failure {
    enum Kind { Silent, Invalid, Refused };
    Kind kind = Silent;
    /// The transaction as the driver describes it: "1#D100(10),error code:3".
    std::string transaction;
};

/// "station 2 does not answer (2#D100(1))".
std::string describe(int station, const Failure &failure);

/// What a command wants to know of the loop; called on its thread, outside of the driver.
class TransactionListener {
public:
    virtual ~TransactionListener() = default;
    /// The driver is about to be asked for work.
    virtual void beforeChoice() {}
    /// The driver has handed a new frame out; repetitions are not told.
    virtual void frameChosen(const FRAME_PRO &) {}
    virtual void nothingToSend() {}
    virtual void accepted(const FRAME_PRO &) {}
    virtual void givenUp(const FRAME_PRO &, const Failure &) {}
    /// Every call that may have changed shown values ends here.
    virtual void afterReply() {}
};

/// A write frame carries no units to read.
inline bool isWrite(const FRAME_PRO &frame) { return frame.readCount == 0 && frame.dataOffset == 0; }

class Communication {
public:
    struct Settings {
        Milliseconds timeout;
        Milliseconds pollInterval;
        TraceBytes trace;
    };

    /// All references must outlive the loop.
    Communication(const DriverCalls &calls, LinkKeeper &keeper, const StopSignal &stop, Settings settings,
                  TransactionListener &listener);

    /// One request and its reply, or one wait for work or for the link. While the link is away the driver keeps its
    /// frame: it is told of no failure, so that nothing posted is given up because a cable is out.
    void step();

    const Statistics &statistics() const { return m_statistics; }

private:
    bool choose();
    void exchange(Link &link);
    void handBack(const Reply &reply);
    void tellGivenUp(const Reply &reply, const QString &description);

    const DriverCalls &m_calls;
    LinkKeeper &m_keeper;
    const StopSignal &m_stop;
    Milliseconds m_pollInterval;
    TransactionListener &m_listener;
    Exchange m_exchange;
    Statistics m_statistics;
    FRAME_PRO m_frame;
    /// The frame was handed out before and its transaction has not ended.
    bool m_inFlight = false;
    Clock::time_point m_nextRequest = Clock::now();
};

} // namespace vshost

#endif

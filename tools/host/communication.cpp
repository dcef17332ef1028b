#include "communication.h"

#include "errors.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <algorithm>

namespace vshost {

namespace {

/// Results of intf_dealRcvFrame.
enum { REPLY_ACCEPTED = 1, REPLY_GIVEN_UP = 2 };

/// How long to wait when the driver has nothing to send.
constexpr Milliseconds IDLE_WAIT{5};

Request requestOf(const FRAME_PRO &frame)
{
    Request request;
    request.station = static_cast<std::uint8_t>(frame.variable.station);
    request.bytes.assign(frame.frame, frame.frame + frame.frameLength);
    request.expectsReply = frame.replyLength != 0;
    return request;
}

QByteArray toQt(const Bytes &bytes)
{
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), static_cast<int>(bytes.size()));
}

} // namespace

std::string describe(int station, const Failure &failure)
{
    static const char *const WORDS[] = {"does not answer", "gives no valid answer", "refused"};
    return "station " + std::to_string(station) + " " + WORDS[failure.kind] + " (" + failure.transaction + ")";
}

Communication::Communication(const DriverCalls &calls, LinkKeeper &keeper, const StopSignal &stop, Settings settings,
                             TransactionListener &listener)
    : m_calls(calls), m_keeper(keeper), m_stop(stop), m_pollInterval(settings.pollInterval), m_listener(listener),
      m_exchange(settings.timeout, stop, std::move(settings.trace))
{
}

void Communication::step()
{
    Link *const link = m_keeper.get();
    if (!link)
        return;
    m_stop.wait(timeUntil(m_nextRequest));
    if (m_stop.requested())
        return;
    if (!choose()) {
        m_stop.wait(std::max(m_pollInterval, IDLE_WAIT));
        return;
    }
    try {
        exchange(*link);
    } catch (const LinkError &error) {
        m_keeper.lost(error.what());
        m_exchange.forgetOwedReplies();
    }
}

bool Communication::choose()
{
    m_listener.beforeChoice();
    if (m_calls.getSendFrame(&m_frame) == 0) {
        m_listener.nothingToSend();
        return false;
    }
    if (!m_inFlight)
        m_listener.frameChosen(m_frame);
    return true;
}

void Communication::exchange(Link &link)
{
    const Request request = requestOf(m_frame);
    m_statistics.countSent(m_frame.variable.station, request.bytes.size(), m_inFlight);
    m_inFlight = true;
    m_nextRequest = Clock::now() + m_pollInterval;
    const Reply reply = m_exchange.run(link, request);
    m_statistics.countReply(m_frame.variable.station, reply);
    if (reply.end != ReplyEnd::Interrupted)
        handBack(reply);
}

void Communication::handBack(const Reply &reply)
{
    // The driver does not look at a reply's end, so one that never came to it is kept from the driver.
    QByteArray bytes = reply.end == ReplyEnd::Complete ? toQt(reply.bytes) : QByteArray();
    QString description;
    const int result = m_calls.dealRcvFrame(bytes, description);
    if (result == REPLY_ACCEPTED) {
        m_inFlight = false;
        m_statistics.countAccepted(m_frame.variable.station, reply);
        m_listener.accepted(m_frame);
    } else if (result == REPLY_GIVEN_UP) {
        m_inFlight = false;
        m_statistics.countGivenUp(m_frame.variable.station);
        tellGivenUp(reply, description);
    }
    m_listener.afterReply();
}

void Communication::tellGivenUp(const Reply &reply, const QString &description)
{
    const bool refused = description.contains(QString::fromLatin1(",error code:"));
    const Failure::Kind kind = refused ? Failure::Refused : reply.bytes.empty() ? Failure::Silent : Failure::Invalid;
    m_listener.givenUp(m_frame, {kind, description.toStdString()});
}

} // namespace vshost

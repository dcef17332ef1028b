#include "linkKeeper.h"

#include "errors.h"

#include <algorithm>

namespace vshost {

namespace {

constexpr Milliseconds FIRST_WAIT{100};
constexpr Milliseconds LONGEST_WAIT{2000};

} // namespace

LinkKeeper::LinkKeeper(LinkAddress address, const StopSignal &stop, Notice notice)
    : m_address(std::move(address)), m_stop(stop), m_notice(std::move(notice))
{
}

Link *LinkKeeper::get()
{
    if (!m_link) {
        m_stop.wait(m_wait);
        if (!m_stop.requested())
            tryToOpen();
    }
    return m_link.get();
}

void LinkKeeper::lost(const std::string &reason)
{
    m_link.reset();
    if (!m_notice)
        throw LinkError("link to " + textOf(m_address) + " lost: " + reason);
    m_wait = FIRST_WAIT;
    m_lastComplaint.clear();
    m_notice("link to " + textOf(m_address) + " lost: " + reason + "; connecting again");
}

void LinkKeeper::tryToOpen()
{
    try {
        m_link = openLink(m_address);
    } catch (const LinkError &error) {
        if (!m_notice)
            throw;
        m_wait = std::clamp(m_wait * 2, FIRST_WAIT, LONGEST_WAIT);
        // The same reason again and again says nothing new.
        if (m_lastComplaint != error.what()) {
            m_lastComplaint = error.what();
            m_notice(m_lastComplaint + "; trying again");
        }
        return;
    }
    if (m_notice)
        m_notice((m_everOpen ? "connected again to " : "connected to ") + textOf(m_address));
    m_everOpen = true;
    m_wait = Milliseconds(0);
    m_lastComplaint.clear();
}

} // namespace vshost

/// Keeps a link open: says when it is lost, opens it again, and gives a plugged-out cable time.
#ifndef VSHOST_LINK_KEEPER_H
#define VSHOST_LINK_KEEPER_H

#include "link.h"
#include "stopSignal.h"

#include <functional>

namespace vshost {

class LinkKeeper {
public:
    /// Tells the user a line about the link.
    using Notice = std::function<void(const std::string &)>;

    /// @param stop ends the waiting between two tries; it must outlive the keeper.
    /// @param notice may be empty: then a link that cannot be opened or breaks is not tried again but ends the
    ///        command with LinkError.
    LinkKeeper(LinkAddress address, const StopSignal &stop, Notice notice);

    /// The open link; null when it could not be opened now. Waits before it tries again, longer each time.
    Link *get();

    /// Closes a link that has broken.
    void lost(const std::string &reason);

    bool isOpen() const { return m_link != nullptr; }
    bool everOpen() const { return m_everOpen; }

private:
    void tryToOpen();

    LinkAddress m_address;
    const StopSignal &m_stop;
    Notice m_notice;
    std::unique_ptr<Link> m_link;
    Milliseconds m_wait{0};
    bool m_everOpen = false;
    std::string m_lastComplaint;
};

} // namespace vshost

#endif

/// What an operator sees: values that are drawn once and then refreshed by the driver's reports alone.
#ifndef TESTS_SCREEN_H
#define TESTS_SCREEN_H

#include "support/host.h"
#include "support/memory.h"

#include <mutex>
#include <string>
#include <vector>

class Screen {
public:
    explicit Screen(Host &host) : m_host(host) {}

    /// Has these places polled from now on, with other keys if there are any, and draws them.
    void polls(const std::vector<Place> &places, std::vector<KEY_ADDRESS> keys = {});

    /// Draws a reported place anew. May come from any thread.
    void refresh(const Report &report);

    /// The places that show something else than the driver has for them, as text; empty when all is well.
    std::string stale();

    /// The places that show something else than the controller has.
    std::string wrong(Memory &memory);

private:
    struct Shown {
        Place place;
        Bytes value;
    };

    Bytes valueNow(const Place &place);

    Host &m_host;
    std::mutex m_mutex;
    std::vector<Shown> m_shown;
};

#endif

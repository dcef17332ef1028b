/// A controller's memory, that carries requests out without a link or a codec of its own.
#ifndef TESTS_MEMORY_H
#define TESTS_MEMORY_H

#include "support/kinds.h"
#include "support/wire.h"

#include <tanek_vs/records.h>

#include <cstdint>
#include <map>
#include <string>
#include <tuple>

/// One value as the host addresses it.
struct Place {
    std::string regName;
    int address;
    int station = 1;
};

class Memory {
public:
    /// A unit's contents: a bit, a word or a counter.
    std::uint32_t &unit(int station, const std::string &unitName, int address);

    /// A value in the host's layout.
    Bytes bytesOf(const Place &place);

    /// Carries the request out and gives the reply.
    Bytes answer(const FRAME_PRO &frame);

private:
    Bytes readUnits(const VARIABLE &request);
    void writeValue(const Kind &kind, const VARIABLE &request, int offset);

    std::map<std::tuple<int, std::string, int>, std::uint32_t> m_units;
};

#endif

#include "simulator/faults.h"

#include <algorithm>
#include <set>

namespace vssim {

namespace {

constexpr unsigned BITS_PER_BYTE = 8;

void misname(Reply &reply, const Fault &fault)
{
    const bool isNextStation = fault.amount == 0;
    reply.station = static_cast<std::uint8_t>(isNextStation ? reply.station + 1U : fault.amount);
}

void truncate(Bytes &wire, unsigned count) { wire.resize(wire.size() - std::min<std::size_t>(count, wire.size())); }

} // namespace

std::vector<Fault> Faults::draw(std::uint8_t station)
{
    std::vector<Fault> drawn;
    for (FaultRule &rule : m_rules) {
        if (!meets(rule, station))
            continue;
        drawn.push_back(rule.fault);
        ++m_met[static_cast<std::size_t>(rule.fault.kind)];
        if (rule.remaining)
            --*rule.remaining;
    }
    const auto isWornOff = [](const FaultRule &rule) { return rule.remaining && *rule.remaining == 0; };
    m_rules.erase(std::remove_if(m_rules.begin(), m_rules.end(), isWornOff), m_rules.end());
    return drawn;
}

bool Faults::meets(const FaultRule &rule, std::uint8_t station)
{
    if (rule.station && *rule.station != station)
        return false;
    if (rule.probability >= 1)
        return true;
    constexpr double values = 4294967296.0; // of the generator
    return static_cast<double>(m_random()) / values < rule.probability;
}

Answer Faults::distort(Reply reply, const std::vector<Fault> &faults)
{
    for (const Fault &fault : faults) {
        if (fault.kind == FaultKind::WrongStation)
            misname(reply, fault);
        if (fault.kind == FaultKind::Overlong)
            reply.data.resize(reply.data.size() + fault.amount);
    }
    Answer answer{encode(reply)};
    for (const Fault &fault : faults)
        if (fault.kind == FaultKind::Delay)
            answer.delay += std::chrono::milliseconds(fault.amount);
        else
            damage(answer.bytes, fault);
    return answer;
}

void Faults::damage(Bytes &wire, const Fault &fault)
{
    switch (fault.kind) {
    case FaultKind::Drop:
        return dropBytes(wire, fault.amount);
    case FaultKind::Flip:
        return flipBits(wire, fault.amount);
    case FaultKind::Truncate:
        return truncate(wire, fault.amount);
    case FaultKind::Garbage: {
        const Bytes before = noise(fault.amount);
        wire.insert(wire.begin(), before.begin(), before.end());
        return;
    }
    case FaultKind::Silence:
    case FaultKind::Error:
    case FaultKind::Delay:
    case FaultKind::Overlong:
    case FaultKind::WrongStation:
        return; // not damage on the way
    }
}

void Faults::dropBytes(Bytes &wire, unsigned count)
{
    for (; count > 0 && !wire.empty(); --count)
        wire.erase(wire.begin() + static_cast<std::ptrdiff_t>(below(wire.size())));
}

// Different bits, so that no bit flips back.
void Faults::flipBits(Bytes &wire, unsigned count)
{
    const std::size_t all = wire.size() * BITS_PER_BYTE;
    std::set<std::size_t> chosen;
    while (chosen.size() < std::min<std::size_t>(count, all))
        chosen.insert(below(all));
    for (const std::size_t bit : chosen)
        wire[bit / BITS_PER_BYTE] =
            static_cast<std::uint8_t>(wire[bit / BITS_PER_BYTE] ^ (1U << (bit % BITS_PER_BYTE)));
}

Bytes Faults::noise(unsigned count)
{
    Bytes bytes(count);
    std::generate(bytes.begin(), bytes.end(), [this] { return static_cast<std::uint8_t>(m_random()); });
    return bytes;
}

std::size_t Faults::below(std::size_t end) { return m_random() % end; }

} // namespace vssim

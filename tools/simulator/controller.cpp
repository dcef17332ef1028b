#include "simulator/controller.h"

#include <algorithm>

namespace vssim {

namespace {

constexpr unsigned BITS_PER_BYTE = 8;

using Lock = std::lock_guard<std::mutex>;

Bytes readUnits(const StationMemory &memory, const Request &request)
{
    const RegisterKind &kind = *findKind(request.kind->memory);
    Bytes data;
    for (std::uint32_t i = 0; i < request.count; ++i)
        appendLittleEndian(data, memory.read(kind, request.number + i).value_or(0), kind.valueBits / BITS_PER_BYTE);
    return data;
}

Bytes readBits(const StationMemory &memory, const Request &request)
{
    Bytes data((request.count + BITS_PER_BYTE - 1) / BITS_PER_BYTE);
    for (std::uint32_t i = 0; i < request.count; ++i) {
        const std::uint32_t bit = memory.read(*request.kind, request.number + i).value_or(0);
        std::uint8_t &byte = data[i / BITS_PER_BYTE];
        byte = static_cast<std::uint8_t>(byte | (bit << (i % BITS_PER_BYTE)));
    }
    return data;
}

void writeUnits(StationMemory &memory, const Request &request)
{
    const std::size_t size = request.kind->valueBits / BITS_PER_BYTE;
    for (std::uint32_t i = 0; i < request.count; ++i)
        memory.write(*request.kind, request.number + i, littleEndian(request.data, i * size, size));
}

const Fault *findFault(const std::vector<Fault> &faults, FaultKind kind)
{
    const auto found =
        std::find_if(faults.begin(), faults.end(), [kind](const Fault &fault) { return fault.kind == kind; });
    return found == faults.end() ? nullptr : &*found;
}

std::optional<std::uint8_t> stationOf(const Decoded &decoded)
{
    if (const auto *request = std::get_if<Request>(&decoded))
        return request->station;
    if (const auto *refusal = std::get_if<Refusal>(&decoded))
        return refusal->station;
    return std::nullopt;
}

bool isWrite(const Decoded &decoded)
{
    const auto *request = std::get_if<Request>(&decoded);
    return request && (request->command == Command::WriteUnits || request->command == Command::WriteBits);
}

} // namespace

Controller::Controller(const std::set<std::uint8_t> &stationNumbers, BitWriteMode mode, std::uint32_t seed)
    : m_numbers(stationNumbers), m_bitWriteMode(mode), m_faults(seed)
{
    for (const std::uint8_t number : m_numbers)
        m_memories[number];
}

std::optional<Answer> Controller::answer(const Frame &frame)
{
    const Decoded decoded = decode(frame);
    const auto station = stationOf(decoded);
    const Lock lock(m_mutex);
    if (station == BROADCAST_STATION && isWrite(decoded)) {
        carryOutForAll(decoded);
        return std::nullopt;
    }
    if (!station || m_memories.count(*station) == 0) {
        ++m_counted.unanswerable;
        return std::nullopt;
    }
    return answerOf(*station, decoded);
}

void Controller::carryOutForAll(const Decoded &decoded)
{
    ++m_counted.broadcasts;
    for (auto &[number, memory] : m_memories)
        carryOut(memory, std::get<Request>(decoded));
}

std::optional<Answer> Controller::answerOf(std::uint8_t station, const Decoded &decoded)
{
    const std::vector<Fault> drawn = m_faults.draw(station);
    if (findFault(drawn, FaultKind::Silence))
        return std::nullopt;
    const auto *request = std::get_if<Request>(&decoded);
    if (request)
        ++m_counted.requests[request->command];
    Reply reply{station, 0, {}};
    if (const Fault *error = findFault(drawn, FaultKind::Error))
        reply.status = static_cast<std::uint8_t>(error->amount);
    else if (request)
        reply = carryOut(m_memories[station], *request);
    else
        reply.status = static_cast<std::uint8_t>(std::get<Refusal>(decoded).status);
    if (reply.status != 0)
        ++m_counted.refusals[static_cast<Status>(reply.status)];
    return m_faults.distort(std::move(reply), drawn);
}

Reply Controller::carryOut(StationMemory &memory, const Request &request) const
{
    Reply reply{request.station, 0, {}};
    switch (request.command) {
    case Command::ReadUnits:
        reply.data = readUnits(memory, request);
        break;
    case Command::ReadBits:
        reply.data = readBits(memory, request);
        break;
    case Command::WriteUnits:
        writeUnits(memory, request);
        break;
    case Command::WriteBits:
        writeBits(memory, request);
        break;
    }
    return reply;
}

// Bits past the kind's end are the padding of the last byte; the memory takes none of them.
void Controller::writeBits(StationMemory &memory, const Request &request) const
{
    const bool single = m_bitWriteMode == BitWriteMode::LoneBit && request.count == 1;
    const std::uint32_t bits = single ? 1 : request.count * BITS_PER_BYTE;
    for (std::uint32_t i = 0; i < bits; ++i)
        memory.write(*request.kind, request.number + i,
                     std::uint32_t{request.data[i / BITS_PER_BYTE]} >> i % BITS_PER_BYTE);
}

std::optional<std::uint32_t> Controller::read(std::uint8_t station, std::string_view kindName,
                                              std::uint32_t number) const
{
    const RegisterKind *kind = findKind(kindName);
    const Lock lock(m_mutex);
    const auto memory = m_memories.find(station);
    if (!kind || memory == m_memories.end())
        return std::nullopt;
    return memory->second.read(*kind, number);
}

bool Controller::write(std::uint8_t station, std::string_view kindName, std::uint32_t number, std::uint32_t value)
{
    const RegisterKind *kind = findKind(kindName);
    const Lock lock(m_mutex);
    const auto memory = m_memories.find(station);
    return kind && memory != m_memories.end() && memory->second.write(*kind, number, value);
}

void Controller::addFault(const std::string &text)
{
    const FaultRule rule = parseFault(text);
    const Lock lock(m_mutex);
    m_faults.add(rule);
}

void Controller::clearFaults()
{
    const Lock lock(m_mutex);
    m_faults.clear();
}

Counts Controller::counts() const
{
    const Lock lock(m_mutex);
    Counts counts = m_counted;
    counts.faults = m_faults.counts();
    return counts;
}

} // namespace vssim

#include "simulator/controller.h"

#include <algorithm>

namespace vssim {

namespace {

constexpr unsigned bitsPerByte = 8;

using Lock = std::lock_guard<std::mutex>;

Bytes readUnits(const StationMemory &memory, const Request &request)
{
    const RegisterKind &kind = *findKind(request.kind->memory);
    Bytes data;
    for (std::uint32_t i = 0; i < request.count; ++i)
        appendLittleEndian(data, memory.read(kind, request.number + i).value_or(0), kind.valueBits / bitsPerByte);
    return data;
}

Bytes readBits(const StationMemory &memory, const Request &request)
{
    Bytes data((request.count + bitsPerByte - 1) / bitsPerByte);
    for (std::uint32_t i = 0; i < request.count; ++i) {
        const std::uint32_t bit = memory.read(*request.kind, request.number + i).value_or(0);
        std::uint8_t &byte = data[i / bitsPerByte];
        byte = static_cast<std::uint8_t>(byte | (bit << (i % bitsPerByte)));
    }
    return data;
}

void writeUnits(StationMemory &memory, const Request &request)
{
    const std::size_t size = request.kind->valueBits / bitsPerByte;
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
    return request && (request->command == Command::writeUnits || request->command == Command::writeBits);
}

} // namespace

Controller::Controller(const std::set<std::uint8_t> &stationNumbers, BitWriteMode mode, std::uint32_t seed)
    : numbers(stationNumbers), bitWriteMode(mode), faults(seed)
{
    for (const std::uint8_t number : numbers)
        memories[number];
}

std::optional<Answer> Controller::answer(const Frame &frame)
{
    const Decoded decoded = decode(frame);
    const auto station = stationOf(decoded);
    const Lock lock(mutex);
    if (station == broadcastStation && isWrite(decoded)) {
        carryOutForAll(decoded);
        return std::nullopt;
    }
    if (!station || memories.count(*station) == 0) {
        ++counted.unanswerable;
        return std::nullopt;
    }
    return answerOf(*station, decoded);
}

void Controller::carryOutForAll(const Decoded &decoded)
{
    ++counted.broadcasts;
    for (auto &[number, memory] : memories)
        carryOut(memory, std::get<Request>(decoded));
}

std::optional<Answer> Controller::answerOf(std::uint8_t station, const Decoded &decoded)
{
    const std::vector<Fault> drawn = faults.draw(station);
    if (findFault(drawn, FaultKind::silence))
        return std::nullopt;
    const auto *request = std::get_if<Request>(&decoded);
    if (request)
        ++counted.requests[request->command];
    Reply reply{station, 0, {}};
    if (const Fault *error = findFault(drawn, FaultKind::error))
        reply.status = static_cast<std::uint8_t>(error->amount);
    else if (request)
        reply = carryOut(memories[station], *request);
    else
        reply.status = static_cast<std::uint8_t>(std::get<Refusal>(decoded).status);
    if (reply.status != 0)
        ++counted.refusals[static_cast<Status>(reply.status)];
    return faults.distort(std::move(reply), drawn);
}

Reply Controller::carryOut(StationMemory &memory, const Request &request) const
{
    Reply reply{request.station, 0, {}};
    switch (request.command) {
    case Command::readUnits:
        reply.data = readUnits(memory, request);
        break;
    case Command::readBits:
        reply.data = readBits(memory, request);
        break;
    case Command::writeUnits:
        writeUnits(memory, request);
        break;
    case Command::writeBits:
        writeBits(memory, request);
        break;
    }
    return reply;
}

// Bits past the kind's end are the padding of the last byte; the memory takes none of them.
void Controller::writeBits(StationMemory &memory, const Request &request) const
{
    const bool single = bitWriteMode == BitWriteMode::single && request.count == 1;
    const std::uint32_t bits = single ? 1 : request.count * bitsPerByte;
    for (std::uint32_t i = 0; i < bits; ++i)
        memory.write(*request.kind, request.number + i,
                     std::uint32_t{request.data[i / bitsPerByte]} >> i % bitsPerByte);
}

std::optional<std::uint32_t> Controller::read(std::uint8_t station, std::string_view kindName,
                                              std::uint32_t number) const
{
    const RegisterKind *kind = findKind(kindName);
    const Lock lock(mutex);
    const auto memory = memories.find(station);
    if (!kind || memory == memories.end())
        return std::nullopt;
    return memory->second.read(*kind, number);
}

bool Controller::write(std::uint8_t station, std::string_view kindName, std::uint32_t number, std::uint32_t value)
{
    const RegisterKind *kind = findKind(kindName);
    const Lock lock(mutex);
    const auto memory = memories.find(station);
    return kind && memory != memories.end() && memory->second.write(*kind, number, value);
}

void Controller::addFault(const std::string &text)
{
    const FaultRule rule = parseFault(text);
    const Lock lock(mutex);
    faults.add(rule);
}

void Controller::clearFaults()
{
    const Lock lock(mutex);
    faults.clear();
}

Counts Controller::counts() const
{
    const Lock lock(mutex);
    Counts counts = counted;
    counts.faults = faults.counts();
    return counts;
}

} // namespace vssim

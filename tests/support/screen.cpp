#include "support/screen.h"

namespace {

std::string difference(const Place &place, const Bytes &shown, const Bytes &other)
{
    return place.regName + " " + std::to_string(place.address) + " @" + std::to_string(place.station) + " shows " +
           hexText(shown) + ", not " + hexText(other) + "; ";
}

} // namespace

void Screen::polls(const std::vector<Place> &places, std::vector<KEY_ADDRESS> keys)
{
    m_shown.clear();
    for (const Place &place : places)
        keys.push_back(key(place.regName, place.address, kindNamed(place.regName).hostCount(), place.station));
    m_host.polls(keys);
    for (const Place &place : places)
        m_shown.push_back({place, valueNow(place)});
}

void Screen::refresh(const Report &report)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Shown &shown : m_shown)
        if (shown.place.address == report.address && shown.place.station == report.station &&
            shown.place.regName == report.regName)
            shown.value = valueNow(shown.place);
}

std::string Screen::stale()
{
    std::string places;
    for (const Shown &shown : m_shown) {
        const Bytes now = valueNow(shown.place);
        if (shown.value != now)
            places += difference(shown.place, shown.value, now);
    }
    return places;
}

std::string Screen::wrong(Memory &memory)
{
    std::string places;
    for (const Shown &shown : m_shown) {
        const Bytes held = memory.bytesOf(shown.place);
        if (shown.value != held)
            places += difference(shown.place, shown.value, held);
    }
    return places;
}

Bytes Screen::valueNow(const Place &place)
{
    const Kind &kind = kindNamed(place.regName);
    Bytes value(static_cast<std::size_t>(kind.bytes()));
    m_host.calls.intf_getData(place.station, qt(place.regName), place.address, kind.hostCount(), value.data());
    return value;
}

#include "printer.h"

#include "common/hexText.h"

#include <fmt/chrono.h>
#include <nlohmann/json.hpp>

#include <cstdio>

namespace vshost {

namespace {

using Json = nlohmann::ordered_json;

struct Now {
    std::time_t seconds;
    int milliseconds;
};

Now now()
{
    const auto time = std::chrono::system_clock::now().time_since_epoch();
    const auto milliseconds = std::chrono::duration_cast<Milliseconds>(time).count();
    return {static_cast<std::time_t>(milliseconds / 1000), static_cast<int>(milliseconds % 1000)};
}

std::string timeOfDay()
{
    const Now time = now();
    return fmt::format("{:%H:%M:%S}.{:03}", fmt::localtime(time.seconds), time.milliseconds);
}

std::string timeStamp()
{
    const Now time = now();
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(time.seconds), time.milliseconds);
}

Json jsonOf(const Number &number)
{
    return std::visit([](const auto &value) { return Json(value); }, number);
}

std::string line(const Json &object)
{
    // Names come from files of any encoding; one that is not UTF-8 is no reason to end.
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

void putAddress(Json &object, const Value &value)
{
    object["name"] = value.name;
    object["station"] = value.place.station;
    object["register"] = value.place.regName.toStdString();
    object["address"] = value.place.addressText;
}

void putValue(Json &object, const Value &value, const ValueBytes &bytes)
{
    putAddress(object, value);
    object["value"] = jsonOf(numberOf(value.format, bytes));
    if (!value.unit.empty())
        object["unit"] = value.unit;
}

std::string withUnit(const Value &value, const ValueBytes &bytes)
{
    return textOf(value.format, bytes) + (value.unit.empty() ? "" : " " + value.unit);
}

/// "2#D100": the station stands before the address as in the driver's own texts.
std::string stationLabel(const Value &value)
{
    return fmt::format("{}#{}", value.place.station, addressLabel(value.place));
}

const char *wordFor(WriteOutcome outcome)
{
    static const char *const WORDS[] = {"confirmed", "sent",     "given up",     "replaced",
                                        "dropped",   "not sent", "not confirmed"};
    return WORDS[static_cast<int>(outcome)];
}

const char *wordFor(KindSize size)
{
    static const char *const WORDS[] = {"bit", "16 bits", "32 bits"};
    return WORDS[static_cast<int>(size)];
}

std::string accessText(const RegisterKind &kind)
{
    return std::string(kind.readable ? "read" : "") + (kind.readable && kind.writable ? "/" : "") +
           (kind.writable ? "write" : "");
}

} // namespace

void Printer::change(const Value &value, const ValueBytes &bytes, bool pending)
{
    if (!m_json) {
        data(fmt::format("{}  {:<16} {:<14} {}{}\n", timeOfDay(), value.name, stationLabel(value),
                         withUnit(value, bytes), pending ? "  (written, not yet confirmed)" : ""));
        return;
    }
    Json object = {{"event", "value"}, {"time", timeStamp()}};
    putValue(object, value, bytes);
    if (pending)
        object["pending"] = true;
    data(line(object));
}

void Printer::reading(const Value &value, const ValueBytes &bytes)
{
    if (!m_json) {
        data(fmt::format("{} = {}\n", value.name, withUnit(value, bytes)));
        return;
    }
    Json object;
    putValue(object, value, bytes);
    data(line(object));
}

void Printer::writeEnd(const WriteEnd &end, bool withTime)
{
    if (!m_json) {
        data(fmt::format("{}{} = {}: {}\n", withTime ? timeOfDay() + "  " : "", end.value.name, end.text, end.words));
        return;
    }
    Json object = {{"event", "write"}, {"time", timeStamp()}};
    putAddress(object, end.value);
    object["written"] = end.text;
    object["outcome"] = wordFor(end.outcome);
    object["words"] = end.words;
    data(line(object));
}

void Printer::kinds(const std::vector<RegisterKind> &kinds)
{
    if (!m_json) {
        data(fmt::format("{:<10} {:>8} {:>9}  {:<8} {:<8} {}\n", "register", "lowest", "highest", "format", "size",
                         "access"));
    }
    for (const RegisterKind &kind : kinds) {
        data(m_json ? line({{"register", kind.name},
                            {"lowest", kind.lowest},
                            {"highest", kind.highest},
                            {"format", kind.addressFormat},
                            {"size", wordFor(kind.size)},
                            {"access", accessText(kind)}})
                    : fmt::format("{:<10} {:>8} {:>9}  {:<8} {:<8} {}\n", kind.name, kind.lowest, kind.highest,
                                  kind.addressFormat, wordFor(kind.size), accessText(kind)));
    }
}

void Printer::data(const std::string &text)
{
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (!written || std::fflush(stdout) != 0)
        m_stop.request();
}

void Printer::notice(const std::string &text) { std::fputs((text + "\n").c_str(), stderr); }

void Printer::trace(bool sent, const Bytes &bytes)
{
    notice(timeOfDay() + (sent ? " > " : " < ") + tools::hexText(bytes.data(), bytes.size()));
}

} // namespace vshost

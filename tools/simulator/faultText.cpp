/// The names of the faults and the text form of their rules.
#include "simulator/faults.h"

#include <fmt/format.h>

#include <charconv>
#include <stdexcept>
#include <string_view>

namespace vssim {

namespace {

struct FaultForm {
    const char *name;
    const char *key; ///< of the amount; null when the fault has none
    unsigned lowest;
    unsigned highest;
    unsigned usual; ///< the amount when none is given
    const char *meaning;
};

// In the order of FaultKind.
constexpr std::array<FaultForm, FAULT_KIND_COUNT> FORMS{{
    {"silence", nullptr, 0, 0, 0, "does not hear the request: carries out and answers nothing"},
    {"error", "status", 1, 255, 9, "answers a status and carries nothing out"},
    {"delay", "ms", 0, 600000, 500, "answers late by so many milliseconds"},
    {"drop", "bytes", 1, 1024, 1, "loses bytes from anywhere in the reply"},
    {"flip", "bits", 1, 1024, 1, "flips bits anywhere in the reply"},
    {"truncate", "bytes", 1, 1024, 4, "loses the reply's last bytes"},
    {"overlong", "bytes", 1, 1024, 4, "answers more data than asked for, well-formed"},
    {"garbage", "bytes", 1, 1024, 5, "sends noise before the reply"},
    {"wrong-station", "station", 0, 254, 0, "names another station in the reply; 0: the next one"},
}};

const FaultForm &formOf(FaultKind kind) { return FORMS[static_cast<std::size_t>(kind)]; }

FaultKind kindNamed(const std::string &name)
{
    for (std::size_t i = 0; i < FORMS.size(); ++i)
        if (name == FORMS[i].name)
            return static_cast<FaultKind>(i);
    std::string names;
    for (const FaultForm &form : FORMS)
        names += fmt::format("{}{}", names.empty() ? "" : ", ", form.name);
    throw std::invalid_argument(fmt::format("\"{}\" is no fault; the faults are {}", name, names));
}

unsigned parseCount(const std::string &text, unsigned lowest, unsigned highest, const std::string &what)
{
    unsigned value = 0;
    const char *end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end || value < lowest || value > highest)
        throw std::invalid_argument(fmt::format("{}: \"{}\" is no number from {} to {}", what, text, lowest, highest));
    return value;
}

double parseProbability(const std::string &text, const std::string &what)
{
    const bool plain = !text.empty() && text.size() < 20 && text.find_first_not_of("0123456789.") == std::string::npos;
    double value = -1;
    try {
        value = plain ? std::stod(text) : value;
    } catch (const std::invalid_argument &) {
    }
    if (value < 0 || value > 1)
        throw std::invalid_argument(fmt::format("{}: \"{}\" is no probability from 0 to 1", what, text));
    return value;
}

// One KEY=VALUE.
void readKey(FaultRule &rule, const std::string &pair, const std::string &what)
{
    const FaultForm &form = formOf(rule.fault.kind);
    const std::size_t equals = pair.find('=');
    const std::string key = pair.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : pair.substr(equals + 1);
    if (key == "p")
        rule.probability = parseProbability(value, what);
    else if (key == "n")
        rule.remaining = parseCount(value, 1, 1000000, what);
    else if (form.key && key == form.key)
        rule.fault.amount = parseCount(value, form.lowest, form.highest, what);
    else
        throw std::invalid_argument(fmt::format("{}: \"{}\" has no key \"{}\"; it takes p, n{}{}", what, form.name, key,
                                                form.key ? ", " : "", form.key ? form.key : ""));
}

void readKeys(FaultRule &rule, const std::string &keys, const std::string &what)
{
    for (std::size_t begin = 0; begin <= keys.size();) {
        const std::size_t end = std::min(keys.find(',', begin), keys.size());
        readKey(rule, keys.substr(begin, end - begin), what);
        begin = end + 1;
    }
}

} // namespace

FaultRule parseFault(const std::string &text)
{
    const std::string what = fmt::format("fault \"{}\"", text);
    const std::size_t at = text.find('@');
    const std::string before = text.substr(0, at);
    const std::size_t colon = before.find(':');
    FaultRule rule{};
    rule.fault.kind = kindNamed(before.substr(0, colon));
    rule.fault.amount = formOf(rule.fault.kind).usual;
    if (at != std::string::npos)
        rule.station = static_cast<std::uint8_t>(parseCount(text.substr(at + 1), 0, 254, what + ", station"));
    if (colon != std::string::npos)
        readKeys(rule, before.substr(colon + 1), what);
    return rule;
}

const char *faultName(FaultKind kind) { return formOf(kind).name; }

std::string faultList()
{
    std::string list;
    for (const FaultForm &form : FORMS) {
        const std::string key = form.key ? fmt::format("{}={}", form.key, form.usual) : "";
        list += fmt::format("  {:<14} {:<10} {}\n", form.name, key, form.meaning);
    }
    return list;
}

} // namespace vssim

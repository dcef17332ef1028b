#include "config.h"

#include "errors.h"
#include "link.h"
#include "tableReader.h"

#include <fmt/format.h>

#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <set>

namespace vshost {

namespace {

constexpr int HIGHEST_STATION = 254;
constexpr int LONGEST_MS = 60000;
constexpr int HIGHEST_RETRY_LIMIT = 100;
/// A write frame of this many words fits the driver's record even if each of its bytes has to be doubled.
constexpr int HIGHEST_MERGE_GAP = 200;
constexpr int HIGHEST_ITEM_COUNT = 1000;

using TableHandler = std::function<void(const toml::table &)>;

/// Calls `handle` with the table of that name, if there is one.
void forTable(TableReader &parent, const char *key, const TableHandler &handle)
{
    const toml::node *const node = parent.node(key);
    if (!node)
        return;
    if (!node->is_table()) {
        parent.complain(key, fmt::format("'{}' must be a table: [{}]", key, key));
        return;
    }
    handle(*node->as_table());
}

/// Calls `handle` with each table of the array of that name, if there is one.
void forTables(TableReader &parent, const char *key, const TableHandler &handle)
{
    const toml::node *const node = parent.node(key);
    if (!node)
        return;
    if (!node->is_array() || !node->as_array()->is_homogeneous<toml::table>()) {
        parent.complain(key, fmt::format("'{}' must be a list of tables, each beginning with [[{}]]", key, key));
        return;
    }
    for (const toml::node &element : *node->as_array())
        handle(*element.as_table());
}

void readMilliseconds(TableReader &reader, const char *key, Milliseconds &time, int lowest)
{
    int number = static_cast<int>(time.count());
    reader.read(key, number, lowest, LONGEST_MS);
    time = Milliseconds(number);
}

void checkLinkAddress(TableReader &reader, const LinkConfig &link)
{
    if (reader.has("tcp") == reader.has("serial")) {
        reader.complain("serial", "one of 'tcp' and 'serial' must be given, and only one");
        return;
    }
    const char *const key = reader.has("tcp") ? "tcp" : "serial";
    const toml::node *const text = reader.node(key);
    if (!text || !text->is_string())
        return; // complained about already
    if (link.tcp.empty() && link.serial.empty()) {
        reader.complain(key, fmt::format("'{}' must not be empty", key));
        return;
    }
    try {
        parseLinkAddress(link.tcp, link.serial);
    } catch (const UsageError &error) {
        reader.complain(key, error.what());
    }
}

void readLink(const toml::table &table, LinkConfig &link, Problems &problems)
{
    TableReader reader(table, "link", problems);
    reader.read("tcp", link.tcp);
    reader.read("serial", link.serial);
    readMilliseconds(reader, "timeout_ms", link.timeout, 1);
    readMilliseconds(reader, "poll_interval_ms", link.pollInterval, 0);
    checkLinkAddress(reader, link);
    reader.finish();
}

void readDriver(const toml::table &table, DriverConfig &driver, Problems &problems)
{
    TableReader reader(table, "driver", problems);
    reader.read("instance", driver.instance, 0, std::numeric_limits<int>::max());
    reader.read("cache_only_writes", driver.cacheOnlyWrites);
    reader.read("retry_limit", driver.retryLimit, 1, HIGHEST_RETRY_LIMIT);
    reader.read("merge_gap", driver.mergeGap, 0, HIGHEST_MERGE_GAP);
    if (driver.mergeGap == 1)
        reader.complain("merge_gap", "1 would cut the writing of a 32-bit value in two; give 0, or 2 and more");
    reader.finish();
}

void readType(TableReader &reader, std::optional<ValueType> &type)
{
    std::string name;
    reader.read("type", name);
    if (name.empty())
        return;
    type = valueTypeFromName(name);
    if (!type)
        reader.complain("type", fmt::format("unknown type '{}'; there are {}", name, allValueTypeNames()));
}

void readScale(TableReader &reader, NamedAddress &address)
{
    reader.read("scale", address.scale);
    if (address.scale == 0)
        reader.complain("scale", "'scale' must not be 0");
    if (address.scale != 1 && (address.type == ValueType::Bit || address.type == ValueType::Hex))
        reader.complain("scale", fmt::format("a value of type {} takes no scale", nameOf(*address.type)));
}

/// A plain number may stand without quotes; one with a point would lose its last zeros.
void readAddressText(TableReader &reader, NamedAddress &address)
{
    const toml::node *const node = reader.node("address");
    reader.require("address");
    if (!node)
        return;
    address.position = reader.positionOf(*node);
    if (!node->is_string() && !node->is_integer()) {
        reader.complain("address", "'address' must be a text in quotes, such as \"100\" or \"100.5\"");
        return;
    }
    address.addressText = scalarText(*node);
}

/// Names stand left of '=' in the lines that write values, and in CSV columns that people edit.
void checkName(TableReader &reader, const std::string &name)
{
    if (reader.has("name") && (name.empty() || name.find_first_of("=\r\n") != std::string::npos))
        reader.complain("name", "a name must not be empty and has no '=' and no line break");
}

void readNamedAddress(TableReader &reader, const char *noun, NamedAddress &address)
{
    reader.read("name", address.name);
    reader.rename(fmt::format("{} '{}'", noun, address.name));
    reader.require("name");
    checkName(reader, address.name);
    reader.read("station", address.station, 0, HIGHEST_STATION);
    reader.require("register");
    reader.read("register", address.regName);
    readAddressText(reader, address);
    readType(reader, address.type);
    readScale(reader, address);
    reader.read("unit", address.unit);
}

void readItemValues(TableReader &reader, RecipeItemConfig &item)
{
    const toml::node *const node = reader.node("value");
    if (!node)
        return;
    if (const toml::array *const list = node->as_array())
        for (const toml::node &element : *list)
            item.values.push_back(scalarText(element));
    else
        item.values.push_back(scalarText(*node));
    if (item.values.size() != 1 && item.values.size() != static_cast<std::size_t>(item.count))
        reader.complain("value", fmt::format("{} values for {} addresses", item.values.size(), item.count));
}

RecipeItemConfig readItem(const toml::table &table, const std::string &recipe, Problems &problems)
{
    RecipeItemConfig item;
    TableReader reader(table, fmt::format("recipe '{}'", recipe), problems);
    readNamedAddress(reader, fmt::format("recipe '{}', item", recipe).c_str(), item.address);
    reader.read("count", item.count, 1, HIGHEST_ITEM_COUNT);
    readItemValues(reader, item);
    reader.finish();
    return item;
}

NamedAddress readValue(const toml::table &table, Problems &problems)
{
    NamedAddress value;
    TableReader reader(table, "value", problems);
    readNamedAddress(reader, "value", value);
    reader.finish();
    return value;
}

RecipeConfig readRecipe(const toml::table &table, Problems &problems)
{
    RecipeConfig recipe;
    TableReader reader(table, "recipe", problems);
    reader.read("name", recipe.name);
    reader.rename(fmt::format("recipe '{}'", recipe.name));
    reader.require("name");
    reader.require("item");
    std::set<std::string> names;
    forTables(reader, "item", [&](const toml::table &item) {
        recipe.items.push_back(readItem(item, recipe.name, problems));
        const std::string &name = recipe.items.back().address.name;
        if (!names.insert(name).second)
            problems.add(item.source(), fmt::format("recipe '{}' has two items '{}'", recipe.name, name));
    });
    reader.finish();
    return recipe;
}

/// Adds to `names`; says so when the name was there before.
void claimName(std::set<std::string> &names, const char *noun, const std::string &name, const toml::table &table,
               Problems &problems)
{
    if (!name.empty() && !names.insert(name).second)
        problems.add(table.source(), fmt::format("there are two {}s '{}'", noun, name));
}

Config readConfig(const toml::table &root, Problems &problems)
{
    Config config;
    TableReader reader(root, "configuration", problems);
    reader.require("link");
    forTable(
        reader, "link", [&](const toml::table &table) { readLink(table, config.link, problems); });
    forTable(reader, "driver", [&](const toml::table &table) { readDriver(table, config.driver, problems); });
    std::set<std::string> valueNames;
    forTables(reader, "value", [&](const toml::table &table) {
        config.values.push_back(readValue(table, problems));
        claimName(valueNames, "value", config.values.back().name, table, problems);
    });
    std::set<std::string> recipeNames;
    forTables(reader, "recipe", [&](const toml::table &table) {
        config.recipes.push_back(readRecipe(table, problems));
        claimName(recipeNames, "recipe", config.recipes.back().name, table, problems);
    });
    reader.finish();
    return config;
}

} // namespace

Config parseConfig(std::string_view text, const std::string &fileName)
{
    Problems problems(fileName);
    Config config;
    try {
        config = readConfig(toml::parse(text, fileName), problems);
    } catch (const toml::parse_error &error) {
        problems.add(error.source(), std::string(error.description()));
    }
    problems.throwIfAny();
    return config;
}

Config loadConfig(const std::string &fileName)
{
    std::ifstream file(fileName);
    file.peek(); // a folder can be opened, but not read
    if (!file.is_open() || file.bad())
        throw UsageError(fileName + ": the file cannot be read");
    return parseConfig(std::string(std::istreambuf_iterator<char>(file), {}), fileName);
}

} // namespace vshost

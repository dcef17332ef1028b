#include "tableReader.h"

#include "errors.h"

#include <fmt/format.h>

namespace vshost {

std::string Problems::positionOf(const toml::source_region &region) const
{
    return fmt::format("{}:{}:{}", m_fileName, region.begin.line, region.begin.column);
}

void Problems::add(const toml::source_region &region, const std::string &text)
{
    m_lines.push_back(positionOf(region) + ": " + text);
}

void Problems::throwIfAny() const
{
    if (any())
        throw UsageError(fmt::format("{}", fmt::join(m_lines, "\n")));
}

const toml::node *TableReader::node(const char *key)
{
    m_read.insert(key);
    return m_table.get(key);
}

void TableReader::complain(const char *key, const std::string &text)
{
    const toml::node *const place = m_table.get(key);
    m_problems.add(place ? place->source() : m_table.source(), m_subject + ": " + text);
}

void TableReader::read(const char *key, std::string &text)
{
    const toml::node *const found = node(key);
    if (!found)
        return;
    if (!found->is_string()) {
        complain(key, fmt::format("'{}' must be a text in quotes", key));
        return;
    }
    text = **found->as_string();
}

void TableReader::read(const char *key, bool &flag)
{
    const toml::node *const found = node(key);
    if (!found)
        return;
    if (!found->is_boolean()) {
        complain(key, fmt::format("'{}' must be true or false", key));
        return;
    }
    flag = **found->as_boolean();
}

void TableReader::read(const char *key, double &number)
{
    const toml::node *const found = node(key);
    if (!found)
        return;
    if (!found->is_number()) {
        complain(key, fmt::format("'{}' must be a number", key));
        return;
    }
    number = *found->value<double>();
}

void TableReader::read(const char *key, int &number, int lowest, int highest)
{
    const toml::node *const found = node(key);
    if (!found)
        return;
    const toml::value<std::int64_t> *const integer = found->as_integer();
    if (!integer || **integer < lowest || **integer > highest) {
        complain(key, fmt::format("'{}' must be a whole number from {} to {}", key, lowest, highest));
        return;
    }
    number = static_cast<int>(**integer);
}

void TableReader::require(const char *key)
{
    if (!has(key))
        complain(key, fmt::format("'{}' is missing", key));
}

void TableReader::finish()
{
    for (const auto &entry : m_table)
        if (m_read.count(entry.first.str()) == 0)
            m_problems.add(entry.first.source(), fmt::format("{}: unknown key '{}'", m_subject, entry.first.str()));
}

std::string scalarText(const toml::node &node)
{
    if (const auto *text = node.as_string())
        return **text;
    if (const auto *flag = node.as_boolean())
        return **flag ? "1" : "0";
    if (const auto *integer = node.as_integer())
        return std::to_string(**integer);
    if (const auto *real = node.as_floating_point())
        return fmt::format("{}", **real);
    return std::string();
}

} // namespace vshost

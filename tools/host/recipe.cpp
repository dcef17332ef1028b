#include "recipe.h"

#include "errors.h"

#include <QtCore/QVector>

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <tuple>

namespace vshost {

namespace {

const std::vector<std::string> COLUMNS = {"name", "station", "register", "address", "value"};
enum { NAME, STATION, REGISTER, ADDRESS, VALUE };

/// The field of a named column; empty where the table has no such column.
class RowReader {
public:
    explicit RowReader(const CsvRow &header)
    {
        for (std::size_t i = 0; i < header.fields.size(); ++i)
            m_columns[header.fields[i]] = i;
    }

    bool has(const std::string &column) const { return m_columns.count(column) != 0; }

    std::string field(const CsvRow &row, const std::string &column) const
    {
        const auto found = m_columns.find(column);
        const bool there = found != m_columns.end() && found->second < row.fields.size();
        return there ? row.fields[found->second] : std::string();
    }

private:
    std::map<std::string, std::size_t> m_columns;
};

std::vector<std::string> addressFields(const Value &value)
{
    return {value.name, std::to_string(value.place.station), value.place.regName.toStdString(),
            value.place.addressText};
}

/// Addresses that an item occupies.
int addressesOf(const Value &value) { return value.format.wideKind ? 1 : value.place.count; }

RecipeItem &itemNamed(std::vector<RecipeItem> &items, const std::string &name)
{
    const auto found =
        std::find_if(items.begin(), items.end(), [&name](const RecipeItem &item) { return item.value.name == name; });
    if (found == items.end())
        throw UsageError(fmt::format("the recipe has no item '{}'", name));
    return *found;
}

void takeRow(std::vector<RecipeItem> &items, const RowReader &reader, const CsvRow &row)
{
    RecipeItem &item = itemNamed(items, reader.field(row, COLUMNS[NAME]));
    const std::vector<std::string> expected = addressFields(item.value);
    for (std::size_t column = STATION; column <= ADDRESS; ++column) {
        const std::string given = reader.field(row, COLUMNS[column]);
        if (!given.empty() && given != expected[column]) {
            throw UsageError(fmt::format("item '{}' has {} {} in the recipe, not {}", item.value.name, COLUMNS[column],
                                         expected[column], given));
        }
    }
    item.text = reader.field(row, COLUMNS[VALUE]);
    bytesOf(item.value.format, item.text);
}

} // namespace

Recipe::Recipe(const RecipeConfig &config, const RegisterKinds &kinds)
{
    std::vector<std::string> problems;
    for (const RecipeItemConfig &item : config.items) {
        try {
            addItems(item, kinds);
        } catch (const UsageError &error) {
            problems.push_back(fmt::format("{}: recipe '{}', item '{}': {}", item.address.position, config.name,
                                           item.address.name, error.what()));
        }
    }
    if (!problems.empty())
        throw UsageError(fmt::format("{}", fmt::join(problems, "\n")));
    sortAndPlace(kinds);
    refuseOverlaps();
}

void Recipe::addItems(const RecipeItemConfig &config, const RegisterKinds &kinds)
{
    const RegisterKind *const kind = kinds.find(config.address.regName);
    if (kind && kind->size == KindSize::Bit)
        throw UsageError(fmt::format("{} holds bits, and bits cannot be in a recipe", kind->name));
    const Value first = kinds.resolve(config.address, Access::Write);
    for (int i = 0; i < config.count; ++i) {
        RecipeItem item;
        item.value = i == 0 ? first : kinds.following(first, i, Access::Write);
        item.value.name += config.count > 1 ? fmt::format("[{}]", i) : "";
        item.position = config.address.position;
        if (!config.values.empty()) {
            item.text = config.values[config.values.size() == 1 ? 0 : static_cast<std::size_t>(i)];
            bytesOf(item.value.format, item.text);
        }
        m_items.push_back(std::move(item));
    }
}

void Recipe::sortAndPlace(const RegisterKinds &kinds)
{
    const auto order = [&kinds](const RecipeItem &item) {
        const Place &place = item.value.place;
        return std::make_tuple(place.station, kinds.orderOf(place.regName), place.address);
    };
    std::stable_sort(m_items.begin(), m_items.end(),
                     [&order](const RecipeItem &a, const RecipeItem &b) { return order(a) < order(b); });
    for (RecipeItem &item : m_items) {
        item.offset = m_words;
        m_words += static_cast<std::size_t>(item.value.place.count);
    }
}

void Recipe::refuseOverlaps() const
{
    for (std::size_t i = 1; i < m_items.size(); ++i) {
        const Place &before = m_items[i - 1].value.place;
        const Place &place = m_items[i].value.place;
        const bool sameKind = before.station == place.station && before.regName == place.regName;
        if (sameKind && place.address < before.address + addressesOf(m_items[i - 1].value)) {
            throw UsageError(fmt::format("{}: items '{}' and '{}' overlap at {}", m_items[i].position,
                                         m_items[i - 1].value.name, m_items[i].value.name, addressLabel(place)));
        }
    }
}

QVector<_RCP_VAR_PRO> Recipe::plan(int instance) const
{
    QVector<_RCP_VAR_PRO> plan;
    for (const RecipeItem &item : m_items) {
        _RCP_VAR_PRO planned;
        planned.instanceId = instance;
        planned.station = item.value.place.station;
        planned.regName = item.value.place.regName;
        planned.address = item.value.place.address;
        planned.count = item.value.place.count;
        planned.bufferOffset = static_cast<qint32>(item.offset);
        plan.append(planned);
    }
    return plan;
}

void Recipe::takeValues(const std::vector<CsvRow> &rows, const std::string &fileName)
{
    const RowReader reader(rows.empty() ? CsvRow() : rows.front());
    if (!reader.has(COLUMNS[NAME]) || !reader.has(COLUMNS[VALUE])) {
        throw UsageError(
            fmt::format("{}: the first line must name the columns, with 'name' and 'value' among them", fileName));
    }
    for (std::size_t i = 1; i < rows.size(); ++i) {
        try {
            takeRow(m_items, reader, rows[i]);
        } catch (const UsageError &error) {
            throw UsageError(fmt::format("{}:{}: {}", fileName, rows[i].line, error.what()));
        }
    }
}

void Recipe::store(std::vector<quint16> &buffer) const
{
    for (const RecipeItem &item : m_items) {
        if (item.text.empty())
            throw UsageError(fmt::format("{}: item '{}' has no value to download", item.position, item.value.name));
        const ValueBytes bytes = bytesOf(item.value.format, item.text);
        for (std::size_t word = 0; word < static_cast<std::size_t>(item.value.place.count); ++word)
            buffer[item.offset + word] = static_cast<quint16>(bytes[2 * word] | bytes[2 * word + 1] << 8);
    }
}

std::string Recipe::table(const std::vector<quint16> &buffer) const
{
    std::string text = csvLine(COLUMNS);
    for (const RecipeItem &item : m_items) {
        ValueBytes bytes = {};
        for (std::size_t word = 0; word < static_cast<std::size_t>(item.value.place.count); ++word) {
            bytes[2 * word] = static_cast<std::uint8_t>(buffer[item.offset + word]);
            bytes[2 * word + 1] = static_cast<std::uint8_t>(buffer[item.offset + word] >> 8);
        }
        std::vector<std::string> fields = addressFields(item.value);
        fields.push_back(textOf(item.value.format, bytes));
        text += csvLine(fields);
    }
    return text;
}

} // namespace vshost

/// A recipe: its items in the order and the places in which the driver transfers them.
///
/// The driver takes the values of a run of addresses from the recipe buffer as one piece. The items are therefore put
/// in the order of station, register kind and address, and their values lie in the buffer one after another.
#ifndef VSHOST_RECIPE_H
#define VSHOST_RECIPE_H

#include "csv.h"
#include "registerKinds.h"

#include <QtCore/QVector>

namespace vshost {

struct RecipeItem {
    Value value;
    SourcePosition position;
    /// What a download writes, as the configuration or a table gives it; empty: not given.
    std::string text;
    /// Place in the buffer, in 16-bit words.
    std::size_t offset = 0;
};

class Recipe {
public:
    /// Resolves and places the items; one with a count becomes that many, "name[0]" and so on. Throws UsageError with
    /// a line for each item that is wrong.
    Recipe(const RecipeConfig &config, const RegisterKinds &kinds);

    const std::vector<RecipeItem> &items() const { return m_items; }
    std::size_t words() const { return m_words; }

    /// The items for the driver.
    QVector<_RCP_VAR_PRO> plan(int instance) const;

    /// Takes values from a table with the columns name and value; other columns are there for people, but where they
    /// name another address than the recipe has, the table is refused. Throws UsageError that begins with `fileName`.
    void takeValues(const std::vector<CsvRow> &rows, const std::string &fileName);

    /// Puts the items' values into the buffer, or reads them out of it.
    void store(std::vector<quint16> &buffer) const;
    std::string table(const std::vector<quint16> &buffer) const;

private:
    void addItems(const RecipeItemConfig &config, const RegisterKinds &kinds);
    void sortAndPlace(const RegisterKinds &kinds);
    void refuseOverlaps() const;

    std::vector<RecipeItem> m_items;
    std::size_t m_words = 0;
};

} // namespace vshost

#endif

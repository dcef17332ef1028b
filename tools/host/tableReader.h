/// Reads the keys of one TOML table and notices those that nobody asked for.
#ifndef VSHOST_TABLE_READER_H
#define VSHOST_TABLE_READER_H

#include "tomlReader.h"

#include <set>
#include <string>
#include <vector>

namespace vshost {

/// What is wrong with a file, one line for each, in the order found.
class Problems {
public:
    explicit Problems(std::string fileName) : m_fileName(std::move(fileName)) {}

    std::string positionOf(const toml::source_region &region) const;
    void add(const toml::source_region &region, const std::string &text);
    bool any() const { return !m_lines.empty(); }
    /// Throws UsageError with all lines when there are any.
    void throwIfAny() const;

private:
    std::string m_fileName;
    std::vector<std::string> m_lines;
};

/// Reads the keys of `table`; a missing key leaves the target as it is. `subject` begins every message: "value
/// 'level'". Both the table and the problems must outlive the reader.
class TableReader {
public:
    TableReader(const toml::table &table, std::string subject, Problems &problems)
        : m_table(table), m_subject(std::move(subject)), m_problems(problems)
    {
    }

    void rename(std::string subject) { m_subject = std::move(subject); }
    bool has(const char *key) const { return m_table.contains(key); }

    void read(const char *key, std::string &text);
    void read(const char *key, bool &flag);
    void read(const char *key, double &number);
    void read(const char *key, int &number, int lowest, int highest);
    /// The node itself, for what the other calls do not cover; null when missing.
    const toml::node *node(const char *key);

    void require(const char *key);
    /// Reports the keys that were never read.
    void finish();

    /// At the key, or at the table where the key is missing.
    void complain(const char *key, const std::string &text);
    std::string positionOf(const toml::node &node) const { return m_problems.positionOf(node.source()); }

private:
    const toml::table &m_table;
    std::string m_subject;
    Problems &m_problems;
    std::set<std::string, std::less<>> m_read;
};

/// The text of a string, whole number, number or truth value as it would be typed; empty for any other node.
std::string scalarText(const toml::node &node);

} // namespace vshost

#endif

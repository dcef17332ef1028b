/// Tables as text: fields parted by commas, put in double quotes where they hold a comma, a quote or a line break; a
/// quote inside quotes is doubled.
#ifndef VSHOST_CSV_H
#define VSHOST_CSV_H

#include <string>
#include <vector>

namespace vshost {

struct CsvRow {
    /// Line of the file where the row begins, from 1.
    int line = 1;
    std::vector<std::string> fields;
};

/// Empty lines are left out. Throws UsageError with the line for a quote that is never closed or text behind one.
std::vector<CsvRow> parseCsv(const std::string &text);

/// One row with its line break.
std::string csvLine(const std::vector<std::string> &fields);

} // namespace vshost

#endif

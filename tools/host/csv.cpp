#include "csv.h"

#include "errors.h"

namespace vshost {

namespace {

/// Walks once through the text.
class CsvParser {
public:
    explicit CsvParser(const std::string &text) : m_text(text) {}

    std::vector<CsvRow> parse()
    {
        while (m_at < m_text.size())
            parseRow();
        return std::move(m_rows);
    }

private:
    bool atEnd() const { return m_at >= m_text.size(); }
    bool atLineEnd() const { return atEnd() || m_text[m_at] == '\n' || m_text[m_at] == '\r'; }

    void parseRow()
    {
        CsvRow row;
        row.line = m_line;
        row.fields.push_back(parseField());
        while (!atEnd() && m_text[m_at] == ',') {
            ++m_at;
            row.fields.push_back(parseField());
        }
        skipLineEnd();
        if (row.fields.size() > 1 || !row.fields.front().empty())
            m_rows.push_back(std::move(row));
    }

    std::string parseField()
    {
        if (!atEnd() && m_text[m_at] == '"')
            return parseQuoted();
        std::string field;
        while (!atLineEnd() && m_text[m_at] != ',')
            field += m_text[m_at++];
        return field;
    }

    std::string parseQuoted()
    {
        const int firstLine = m_line;
        std::string field;
        for (++m_at; !atEnd(); ++m_at) {
            const bool quote = m_text[m_at] == '"';
            const bool doubled = quote && m_at + 1 < m_text.size() && m_text[m_at + 1] == '"';
            if (quote && !doubled) {
                ++m_at;
                checkEndOfField();
                return field;
            }
            m_at += doubled ? 1 : 0;
            m_line += m_text[m_at] == '\n' ? 1 : 0;
            field += m_text[m_at];
        }
        throw UsageError("line " + std::to_string(firstLine) + ": a quote is not closed");
    }

    void checkEndOfField() const
    {
        if (!atLineEnd() && m_text[m_at] != ',')
            throw UsageError("line " + std::to_string(m_line) + ": text behind a closing quote");
    }

    void skipLineEnd()
    {
        if (!atEnd() && m_text[m_at] == '\r')
            ++m_at;
        if (!atEnd() && m_text[m_at] == '\n')
            ++m_at;
        ++m_line;
    }

    const std::string &m_text;
    std::size_t m_at = 0;
    int m_line = 1;
    std::vector<CsvRow> m_rows;
};

std::string quoted(const std::string &field)
{
    std::string text = "\"";
    for (const char character : field)
        text.append(character == '"' ? 2 : 1, character);
    return text + '"';
}

} // namespace

std::vector<CsvRow> parseCsv(const std::string &text) { return CsvParser(text).parse(); }

std::string csvLine(const std::vector<std::string> &fields)
{
    std::string line;
    for (const std::string &field : fields) {
        line += &field == &fields.front() ? "" : ",";
        line += field.find_first_of(",\"\r\n") == std::string::npos ? field : quoted(field);
    }
    return line + '\n';
}

} // namespace vshost

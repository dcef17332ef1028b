/// The parts of vshost that need neither link nor driver: replies in a stream of bytes, configurations, values as
/// text, and tables.
#include "config.h"
#include "csv.h"
#include "errors.h"
#include "replyCollector.h"
#include "valueType.h"

#include <gtest/gtest.h>

namespace vshost {
namespace {

using Wire = std::vector<std::uint8_t>;

Wire joined(const Wire &a, const Wire &b)
{
    Wire all = a;
    all.insert(all.end(), b.begin(), b.end());
    return all;
}

// ---- Replies ----

/// A good reply of station 1 with two data bytes, both equal to DLE.
const Wire DOUBLED = {0x10, 0x02, 0x01, 0x03, 0x00, 0x00, 0x10, 0x10, 0x10, 0x10, 0x10, 0x03, '2', '4'};
/// Station 16, whose number is doubled, and a body that ends with DLE ETX as data.
const Wire STATION_16 = {0x10, 0x02, 0x10, 0x10, 0x03, 0x00, 0x00, 0x10, 0x10, 0x03, 0x10, 0x03, '2', '6'};
const Wire ACKNOWLEDGEMENT = {0x10, 0x02, 0x02, 0x01, 0x00, 0x00, 0x10, 0x03, '0', '3'};

TEST(ReplyCollector, findsAReplyWhereverItsBytesArePartedAndWhateverStandsAround)
{
    const struct {
        Wire before, reply, behind;
    } rows[] = {
        {{}, DOUBLED, {}},
        {{}, STATION_16, {}},
        {{}, ACKNOWLEDGEMENT, DOUBLED},
        {{0x00, 0xFF}, DOUBLED, {}},
        {{0x10}, DOUBLED, {}},
        {{0x10, 0x10}, DOUBLED, {}},
        {{0x10, 0x03, 0x02}, DOUBLED, {}},
        {{0x02, 0x10}, DOUBLED, {}},
        {Wire(DOUBLED.begin(), DOUBLED.begin() + 5), ACKNOWLEDGEMENT, {}}, // one that breaks off
    };
    for (const auto &row : rows) {
        const Wire stream = joined(row.before, row.reply);
        for (std::size_t split = 0; split <= stream.size(); ++split) {
            ReplyCollector collector;
            EXPECT_EQ(collector.take(stream.data(), split), split);
            EXPECT_EQ(collector.complete(), split == stream.size());
            const Wire rest = joined(Wire(stream.begin() + static_cast<long>(split), stream.end()), row.behind);
            EXPECT_EQ(collector.take(rest.data(), rest.size()), stream.size() - split) << "nothing behind the reply";
            EXPECT_TRUE(collector.complete());
            EXPECT_EQ(collector.bytes(), row.reply) << "parted at " << split;
        }
    }
}

TEST(ReplyCollector, NamesTheStation)
{
    ReplyCollector collector;
    EXPECT_FALSE(collector.isFrom(0));
    collector.take(STATION_16.data(), STATION_16.size());
    EXPECT_TRUE(collector.isFrom(16));
    EXPECT_FALSE(collector.isFrom(3));
}

TEST(ReplyCollector, KeepsWhatThereIsOfABrokenReply)
{
    ReplyCollector collector;
    collector.take(DOUBLED.data(), DOUBLED.size() - 1);
    EXPECT_FALSE(collector.complete());
    EXPECT_EQ(collector.bytes().size(), DOUBLED.size() - 1);
    collector.reset();
    EXPECT_TRUE(collector.bytes().empty());
}

// ---- Configurations ----

const char LINK[] = "[link]\ntcp = \"127.0.0.1:8000\"\n";

std::string complaintAbout(const std::string &text)
{
    try {
        parseConfig(text, "f");
    } catch (const UsageError &error) {
        return error.what();
    }
    return "nothing";
}

TEST(Config, IsRefusedWithThePlaceAndTheReason)
{
    struct Row {
        std::string text;
        std::string complaint;
    };
    const std::string link = LINK;
    const std::string value = link + "[[value]]\nname = \"a\"\nregister = \"D\"\naddress = \"1\"\n";
    const Row rows[] = {
        {"", "f:1:1: configuration: 'link' is missing"},
        {"[link]\n", "f:1:1: link: one of 'tcp' and 'serial' must be given, and only one"},
        {link + "serial = \"/dev/x\"\n", "f:3:10: link: one of 'tcp' and 'serial' must be given, and only one"},
        {"[link]\ntcp = 5\n", "f:2:7: link: 'tcp' must be a text in quotes"},
        {"[link]\nserial = \"\"\n", "f:2:10: link: 'serial' must not be empty"},
        {link + "timeout_ms = 0\n", "f:3:14: link: 'timeout_ms' must be a whole number from 1 to 60000"},
        {link + "speed = 1\n", "f:3:1: link: unknown key 'speed'"},
        {link + "[driver]\nmerge_gap = 1\n", "f:4:13: driver: 1 would cut the writing of a 32-bit value in two; "
                                             "give 0, or 2 and more"},
        {link + "[driver]\ncache_only_writes = 1\n", "f:4:21: driver: 'cache_only_writes' must be true or false"},
        {link + "[[value]]\nregister = \"D\"\naddress = 1\n", "f:3:1: value '': 'name' is missing"},
        {value + "adress = 2\n", "f:7:1: value 'a': unknown key 'adress'"},
        {value + "station = 255\n", "f:7:11: value 'a': 'station' must be a whole number from 0 to 254"},
        {value + "type = \"int8\"\n", "f:7:8: value 'a': unknown type 'int8'; there are bit, int16, uint16, int32, "
                                      "uint32, float32, hex"},
        {value + "type = \"hex\"\nscale = 2\n", "f:8:9: value 'a': a value of type hex takes no scale"},
        {link + "[[value]]\nname = \"a\"\nregister = \"D_bit\"\naddress = 100.10\n",
         "f:6:11: value 'a': 'address' must be a text in quotes, such as \"100\" or \"100.5\""},
        {value + "[[value]]\nname = \"a\"\nregister = \"D\"\naddress = \"2\"\n", "f:7:1: there are two values 'a'"},
        {link + "[value]\nname = \"a\"\n",
         "f:3:1: configuration: 'value' must be a list of tables, each beginning with [[value]]"},
        {link + "[[recipe]]\nname = \"r\"\n", "f:3:1: recipe 'r': 'item' is missing"},
        {link + "gr\u00F6\u00DFe = 1\n", "f:3:3: Error while parsing key-value pair: expected '=', saw '\u00F6'"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(complaintAbout(row.text), row.complaint) << row.text;
}

TEST(Config, CannotBeReadFromAFolderOrFromNothing)
{
    for (const std::string name : {"/", "/nothing/there.toml"}) {
        try {
            loadConfig(name);
            ADD_FAILURE() << name;
        } catch (const UsageError &error) {
            EXPECT_EQ(error.what(), name + ": the file cannot be read");
        }
    }
}

TEST(Config, TellsAllThatIsWrongAtOnce)
{
    const std::string complaint = complaintAbout(std::string(LINK) + "a = 1\nb = 2\n");
    EXPECT_EQ(complaint, "f:3:1: link: unknown key 'a'\nf:4:1: link: unknown key 'b'");
}

TEST(Config, HoldsWhatTheFileSays)
{
    const Config config = parseConfig(std::string(LINK) + "[driver]\nretry_limit = 5\n[[value]]\nname = \"a\"\n"
                                                          "register = \"D\"\naddress = 7\nscale = 0.5\n",
                                      "f");
    EXPECT_EQ(config.link.tcp, "127.0.0.1:8000");
    EXPECT_EQ(config.driver.retryLimit, 5);
    ASSERT_EQ(config.values.size(), 1U);
    EXPECT_EQ(config.values[0].addressText, "7");
    EXPECT_EQ(config.values[0].scale, 0.5);
    EXPECT_EQ(config.values[0].position, "f:8:11");
}

// ---- Values ----

TEST(Value, ReadsAndWritesTheSameBytes)
{
    struct Row {
        ValueFormat format;
        std::string given;
        ValueBytes bytes;
        std::string shown;
    };
    const Row rows[] = {
        {{ValueType::Bit, 1, false}, "on", {1, 0, 0, 0}, "1"},
        {{ValueType::Bit, 1, false}, "false", {0, 0, 0, 0}, "0"},
        {{ValueType::Uint16, 1, false}, "65535", {0xFF, 0xFF, 0, 0}, "65535"},
        {{ValueType::Uint16, 1, false}, "0x1234", {0x34, 0x12, 0, 0}, "4660"},
        {{ValueType::Int16, 1, false}, "0xFFFE", {0xFE, 0xFF, 0, 0}, "-2"},
        {{ValueType::Int16, 0.1, false}, "-4.2", {0xD6, 0xFF, 0xFF, 0xFF}, "-4.2"},
        {{ValueType::Uint32, 1, false}, "4294967295", {0xFF, 0xFF, 0xFF, 0xFF}, "4294967295"},
        {{ValueType::Int32, 1, true}, "-2", {0xFE, 0xFF, 0xFF, 0xFF}, "-2"},
        {{ValueType::Float32, 1, false}, "0.1", {0xCD, 0xCC, 0xCC, 0x3D}, "0.1"},
        {{ValueType::Hex, 1, false}, "0x2a", {0x2A, 0, 0, 0}, "0x002A"},
        {{ValueType::Hex, 1, true}, "0x2a", {0x2A, 0, 0, 0}, "0x0000002A"},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(bytesOf(row.format, row.given), row.bytes) << row.given;
        EXPECT_EQ(textOf(row.format, row.bytes), row.shown) << row.given;
    }
}

TEST(Value, RefusesWhatItCannotHold)
{
    struct Row {
        ValueFormat format;
        const char *given;
    };
    const Row rows[] = {
        {{ValueType::Bit, 1, false}, "2"},          {{ValueType::Uint16, 1, false}, "65536"},
        {{ValueType::Uint16, 1, false}, "-1"},      {{ValueType::Uint16, 1, false}, "1.5"},
        {{ValueType::Uint16, 1, false}, ""},        {{ValueType::Uint16, 1, false}, "12x"},
        {{ValueType::Uint16, 1, false}, "0x12345"}, {{ValueType::Int16, 1, false}, "32768"},
        {{ValueType::Int16, 0.1, false}, "3276.8"}, {{ValueType::Uint32, 1, true}, "4294967296"},
        {{ValueType::Float32, 1, false}, "1e39"},   {{ValueType::Float32, 1, false}, "nan"},
        {{ValueType::Hex, 1, false}, "0x"},
    };
    for (const Row &row : rows)
        EXPECT_THROW(bytesOf(row.format, row.given), UsageError) << row.given;
}

// ---- Tables ----

TEST(Csv, GivesBackWhatWasWritten)
{
    const std::vector<std::string> fields = {"plain", "", "a,b", "say \"so\"", "two\nlines"};
    const std::vector<CsvRow> rows = parseCsv(csvLine(fields) + "\r\n" + csvLine({"next"}));
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].fields, fields);
    EXPECT_EQ(rows[1].fields, std::vector<std::string>{"next"});
    EXPECT_EQ(rows[1].line, 4);
}

TEST(Csv, RefusesAQuoteThatIsNotClosedAndTextBehindOne)
{
    EXPECT_THROW(parseCsv("a,\"b\nc"), UsageError);
    EXPECT_THROW(parseCsv("a,\"b\"c\n"), UsageError);
}

} // namespace
} // namespace vshost

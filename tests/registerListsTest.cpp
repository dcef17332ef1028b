#include "support/driverTest.h"

#include "model/registerTable.h"
#include "serviceForProtocol/identity/addressText.h"

namespace {

struct KindRow {
    const char *name;
    std::vector<std::string> description;
    unsigned deviceCode;
    int lowest;
    int highest;
};

const KindRow KINDS[] = {
    {"32C", {"DDD", "200", "255", "2", "1"}, 0xAD, 200, 255},
    {"C", {"DDD", "0", "199", "1", "1"}, 0xAC, 0, 199},
    {"T", {"DDD", "0", "511", "1", "1"}, 0xA8, 0, 511},
    {"R", {"DDDDD", "0", "25999", "1", "1"}, 0xA2, 0, 25999},
    {"SD", {"DDDD", "9000", "9511", "1", "1"}, 0xA1, 9000, 9511},
    {"D", {"DDDD", "0", "8999", "1", "1"}, 0xA0, 0, 8999},
    {"X", {"OOO", "0", "571", "0", "1"}, 0x90, 0, 377},
    {"Y", {"OOO", "0", "571", "0", "1"}, 0x91, 0, 377},
    {"M", {"DDDD", "0", "8191", "0", "1"}, 0x92, 0, 8191},
    {"S", {"DDDD", "0", "4095", "0", "1"}, 0x93, 0, 4095},
    {"SM", {"DDDD", "9000", "9511", "0", "1"}, 0x94, 9000, 9511},
    {"D_bit", {"DDDD.D", "0.0", "8999.15", "0", "1"}, 0x95, 0, 143999},
    {"R_bit", {"DDDDD.H", "0.0", "25999.15", "0", "1"}, 0x97, 0, 415999},
    {"T_Coil", {"DDD", "0", "511", "0", "1"}, 0x98, 0, 511},
    {"T_Contact", {"DDD", "0", "511", "0", "1"}, 0x99, 0, 511},
    {"C_Coil", {"DDD", "0", "255", "0", "1"}, 0x9C, 0, 255},
    {"C_Contact", {"DDD", "0", "255", "0", "1"}, 0x9D, 0, 255},
};

TEST(RegisterTable, describesEveryKindToTheHost)
{
    int kind = 0;
    for (const KindRow &row : KINDS) {
        SCOPED_TRACE(row.name);
        QStringList texts;
        EXPECT_EQ(intf_getRegDiscription(qt(row.name), texts), 0);
        EXPECT_EQ(plain(texts), row.description);
        EXPECT_EQ(plain(REG_LIST.at(kind)), row.name);
        EXPECT_EQ(ADDRESS_RANGE_FUNC[kind], row.deviceCode);
        const ADDRESS_RANGE &range = ADDRESS_RANGE_PRO.at(kind);
        int number = -1;
        EXPECT_EQ(a2i(range.minAddr, number, range.addrFormat, qt(row.name)), 1);
        EXPECT_EQ(number, row.lowest);
        EXPECT_EQ(a2i(range.maxAddr, number, range.addrFormat, qt(row.name)), 1);
        EXPECT_EQ(number, row.highest);
        ++kind;
    }
    EXPECT_EQ(kind, REG_LIST.size());
}

TEST(RegisterTable, describesNothingForAnUnknownKind)
{
    QStringList texts(qt("kept"));
    for (const char *name : {"Q", "d", "", "D ", "D_Bit"})
        EXPECT_EQ(intf_getRegDiscription(qt(name), texts), 0);
    EXPECT_EQ(texts.size(), 1);
}

TEST(RegisterTable, listsKindsByTypeBehindWhatTheListHolds)
{
    const std::vector<std::string> bits = {"X",     "Y",      "M",         "S",      "SM",       "D_bit",
                                           "R_bit", "T_Coil", "T_Contact", "C_Coil", "C_Contact"};
    const std::vector<std::string> wordKinds = {"32C", "C", "T", "R", "SD", "D"};
    const struct {
        int type;
        int result;
        const std::vector<std::string> &names;
    } rows[] = {{0, 1, bits}, {1, 1, wordKinds}, {2, 0, wordKinds}, {-1, 0, wordKinds}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.type);
        QStringList names(qt("kept"));
        EXPECT_EQ(intf_getRegListByType(row.type, names), row.result);
        EXPECT_EQ(plain(names.takeFirst()), "kept");
        EXPECT_EQ(plain(names), row.names);
    }
}

} // namespace

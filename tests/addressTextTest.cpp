#include "support/driverTest.h"

#include "model/registerTable.h"
#include "serviceForProtocol/identity/addressText.h"
#include "tanek_vs/bitAddress.h"
#include "tanek_vs/registerNames.h"

#include <rapidcheck/gtest.h>

namespace {

const int UNTOUCHED = 777;

struct CheckRow {
    const char *regName;
    const char *text;
    int count;
    int access; // word-access flag, or data type
    int result;
    int number;
};

TEST(AddressText, isCheckedForAccessFormAndRange)
{
    const CheckRow rows[] = {
        {"D", "8999", 1, 1, 0, 8999},
        {"D", "8999", 2, 1, 2, 8999},
        {"D", " 12 ", 1, 7, 0, 12},
        {"D", "x", 1, 1, 4, 0},
        {"D", "", 1, 1, 4, 0},
        {"D", "-1", 1, 1, 2, -1},
        {"D", "2147483648", 1, 1, 4, 0},
        {"D", "8999", -5, 1, 0, 8999},
        {"SD", "8999", 1, 1, 2, 8999},
        {"SD", "9511", 1, 1, 0, 9511},
        {"X", "17", 1, 0, 0, 15},
        {"X", "18", 1, 0, 4, 0},
        {"X", "571", 1, 0, 0, 377},
        {"X", "572", 1, 0, 2, 378},
        {"X", "570", 3, 0, 2, 376},
        {"D_bit", "100.5", 1, 0, 0, 1605},
        {"D_bit", "100", 1, 0, 4, UNTOUCHED},
        {"D_bit", "100.5.1", 1, 0, 4, UNTOUCHED},
        {"D_bit", "100.x", 1, 0, 4, UNTOUCHED},
        {"D_bit", "8999.15", 1, 0, 0, 143999},
        {"D_bit", "8999.16", 1, 0, 2, 144000},
        {"D_bit", "5.20", 1, 0, 0, 100},
        {"D_bit", "-1.3", 1, 0, 2, -13},
        {"D_bit", "0.-1", 1, 0, 4, UNTOUCHED},
        {"D_bit", "200000000.0", 1, 0, 4, UNTOUCHED},
        {"R_bit", "25999.15", 1, 0, 0, 415999},
        {"R_bit", "1.a", 1, 0, 4, UNTOUCHED},
        {"D", "1", 1, 0, 1, UNTOUCHED},
        {"M", "1", 1, 1, 1, UNTOUCHED},
        {"D_bit", "1.1", 1, 1, 1, UNTOUCHED},
        {"32C", "254", 3, 1, 0, 254},
        {"32C", "255", 3, 1, 2, 255},
        {"32C", "199", 1, 1, 2, 199},
        {"32C", "254", 4, 1, 0, 254},
        {"32C", "255", 2147483647, 1, 2, 255},
        {"Q", "x", -1, 0, 3, UNTOUCHED},
        {"d", "1", 1, 1, 3, UNTOUCHED},
    };
    for (const CheckRow &row : rows) {
        SCOPED_TRACE(std::string(row.regName) + " " + row.text + " count " + std::to_string(row.count));
        int number = UNTOUCHED;
        EXPECT_EQ(intf_checkAddrValidity(qt(row.regName), qt(row.text), &number, row.count, row.access), row.result);
        EXPECT_EQ(number, row.number);
    }
}

TEST(AddressText, onlyReadOnlyKindsRefuseTheWritingModes)
{
    // Every kind of today's table can be written, so the rule is tested on its own.
    for (int mode = -1; mode <= 3; ++mode) {
        EXPECT_EQ(isWriteToReadOnly(qt("R"), mode), mode == 1 || mode == 2) << mode;
        EXPECT_FALSE(isWriteToReadOnly(qt("RW"), mode) || isWriteToReadOnly(qt("W"), mode)) << mode;
    }
}

TEST(AddressText, isCheckedForTheHostsDataType)
{
    const CheckRow rows[] = {
        {"32C", "200", 2, 2, 5, UNTOUCHED},
        {"32C", "x", 2, 2, 5, UNTOUCHED},
        {"32C", "200", 2, 1, 0, 200},
        {"32C", "200", 2, 3, 0, 200},
        {"32C", "200", 2, 5, 0, 200},
        {"32C", "200", 2, 6, 0, 200},
        {"32C", "256", 2, 9, 2, 256},
        {"32C", "255", 3, 9, 2, 255},
        {"32C", "200", 2, -1, 1, UNTOUCHED},
        {"D", "1", 1, -1, 1, UNTOUCHED},
        {"D", "9", 1, 2, 0, 9},
        {"M", "1", 1, 0, 1, UNTOUCHED},
        {"M", "100", 8, -1, 0, 100},
        {"M", "8191", 2, -1, 2, 8191},
        {"Q", "", 1, -1, 3, UNTOUCHED},
        {"D", "y", 1, 0, 4, 0},
    };
    for (const CheckRow &row : rows) {
        for (int accessMode : {0, 1, 2}) {
            SCOPED_TRACE(std::string(row.regName) + " " + row.text + " type " + std::to_string(row.access));
            int number = UNTOUCHED;
            EXPECT_EQ(intf_checkAddr(qt(row.regName), qt(row.text), &number, row.access, row.count, accessMode),
                      row.result);
            EXPECT_EQ(number, row.number);
        }
    }
}

TEST(AddressText, formatDecidesTheBase)
{
    const struct {
        const char *text;
        const char *format;
        int result;
        int number;
    } rows[] = {{"1f", "HHH", 1, 31}, {"17", "OO", 1, 15}, {"17", "D", 1, 17},        {"17", "", 1, 17},
                {"17", "ZZ", 1, 17},  {"9", "O", -1, 0},   {"1.15", "DDDD.H", 1, 31}, {"1.f", "DDDD.H", -1, UNTOUCHED}};
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.text) + " as " + row.format);
        int number = UNTOUCHED;
        EXPECT_EQ(a2i(qt(row.text), number, qt(row.format), qt("D_bit")), row.result);
        EXPECT_EQ(number, row.number);
    }
    EXPECT_EQ(addr_str2int(qt("1.1"), qt("D")), 0);
    EXPECT_EQ(plain(addr_int2str(16, qt("R_bit"))), "1.0");
    EXPECT_EQ(plain(addr_int2str(16, qt("D"))), "");
}

TEST(RegisterNames, areFoundExactly)
{
    for (int kind = 0; kind < REG_LIST.size(); ++kind)
        EXPECT_EQ(getIndexFromRegName(REG_LIST.at(kind)), kind);
    for (const char *name : {"d", "", "D_", "C_contact", " D"})
        EXPECT_EQ(getIndexFromRegName(qt(name)), -1) << name;
}

RC_GTEST_PROP(AddressText, ofEveryKindComesBackAsItsNumber, ())
{
    const int kind = *rc::gen::inRange(0, static_cast<int>(REG_LIST.size()));
    const QString name = REG_LIST.at(kind);
    const ADDRESS_RANGE &row = ADDRESS_RANGE_PRO.at(kind);
    int lowest = 0;
    int highest = 0;
    a2i(row.minAddr, lowest, row.addrFormat, name);
    a2i(row.maxAddr, highest, row.addrFormat, name);
    const int number = *rc::gen::inRange(lowest, highest + 1);

    QVector<QString> texts;
    QVector<int> numbers;
    RC_ASSERT(intf_multiCopy(name, number, 1, 1, texts, numbers) == 1);
    int parsed = UNTOUCHED;
    RC_ASSERT(intf_checkAddrValidity(name, texts.at(0), &parsed, 1, row.valueWidth == qt("1") ? 0 : 1) == 0);
    RC_ASSERT(parsed == number);
}

} // namespace

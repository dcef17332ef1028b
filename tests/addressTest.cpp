/// Register kinds and address texts, as the host's editor uses them.
#include "model/asciiNumber.h"
#include "serviceForProtocol/addresses/addressText.h"
#include "serviceForProtocol/addresses/multiCopy.h"
#include "support/driverTest.h"
#include "support/kinds.h"
#include "tanek_vs/bitAddress.h"
#include "tanek_vs/registerNames.h"

#include <rapidcheck/gtest.h>

namespace {

const int UNTOUCHED = 777;
const int LOWEST_INT = -2147483647 - 1;

struct CheckRow {
    const char *regName;
    const char *text;
    int count;
    int wantedAs; // word-access flag, or data type
    int result;
    int number;
};

TEST(AddressCheck, judgesAccessFormAndRange)
{
    const CheckRow rows[] = {
        {"D", "8999", 1, 1, 0, 8999},
        {"D", "8999", 2, 1, 2, 8999},
        {"D", " 12 ", 1, 7, 0, 12},
        {"D", "", 1, 1, 4, 0},
        {"D", "-1", 1, 1, 2, -1},
        {"D", "2147483648", 1, 1, 4, 0},
        {"D", "8999", -5, 1, 0, 8999},
        {"SD", "8999", 1, 1, 2, 8999},
        {"SD", "9511", 1, 1, 0, 9511},
        {"X", "18", 1, 0, 4, 0},
        {"X", "571", 1, 0, 0, 377},
        {"X", "572", 1, 0, 2, 378},
        {"X", "570", 3, 0, 2, 376},
        {"D_bit", "100.5", 1, 0, 0, 1605},
        {"D_bit", "100", 1, 0, 4, UNTOUCHED},
        {"D_bit", "100.5.1", 1, 0, 4, UNTOUCHED},
        {"D_bit", "8999.15", 1, 0, 0, 143999},
        {"D_bit", "8999.16", 1, 0, 2, 144000},
        {"D_bit", "5.20", 1, 0, 0, 100},
        {"D_bit", "-1.3", 1, 0, 2, -13},
        {"D_bit", "0.-1", 1, 0, 4, UNTOUCHED},
        {"D_bit", "200000000.0", 1, 0, 4, UNTOUCHED},
        {"R_bit", "1.a", 1, 0, 4, UNTOUCHED},
        {"D", "1", 1, 0, 1, UNTOUCHED},
        {"M", "1", 1, 1, 1, UNTOUCHED},
        {"32C", "254", 3, 1, 0, 254},
        {"32C", "255", 3, 1, 2, 255},
        {"32C", "199", 1, 1, 2, 199},
        {"32C", "255", 2147483647, 1, 2, 255},
        {"Q", "x", -1, 0, 3, UNTOUCHED},
        {"d", "1", 1, 1, 3, UNTOUCHED},
    };
    for (const CheckRow &row : rows) {
        SCOPED_TRACE(std::string(row.regName) + " " + row.text + " count " + std::to_string(row.count));
        int number = UNTOUCHED;
        EXPECT_EQ(intf_checkAddrValidity(qt(row.regName), qt(row.text), &number, row.count, row.wantedAs), row.result);
        EXPECT_EQ(number, row.number);
    }
}

TEST(AddressCheck, judgesTheHostsDataType)
{
    std::vector<CheckRow> rows = {
        {"32C", "200", 2, -1, 1, UNTOUCHED}, {"32C", "x", 2, 2, 5, UNTOUCHED}, {"32C", "256", 2, 9, 2, 256},
        {"32C", "255", 3, 9, 2, 255},        {"D", "1", 1, -1, 1, UNTOUCHED},  {"D", "9", 1, 2, 0, 9},
        {"M", "1", 1, 0, 1, UNTOUCHED},      {"M", "100", 8, -1, 0, 100},      {"M", "8191", 2, -1, 2, 8191},
        {"Q", "", 1, -1, 3, UNTOUCHED},      {"D", "y", 1, 0, 4, 0},
    };
    for (const int type : {0, 2, 4, 7, 8, 10})
        rows.push_back({"32C", "200", 2, type, 5, UNTOUCHED});
    for (const int type : {1, 3, 5, 6, 9})
        rows.push_back({"32C", "200", 2, type, 0, 200});
    for (const CheckRow &row : rows) {
        for (const int accessMode : {0, 1, 2}) {
            SCOPED_TRACE(std::string(row.regName) + " " + row.text + " type " + std::to_string(row.wantedAs));
            int number = UNTOUCHED;
            EXPECT_EQ(intf_checkAddr(qt(row.regName), qt(row.text), &number, row.wantedAs, row.count, accessMode),
                      row.result);
            EXPECT_EQ(number, row.number);
        }
    }
    // Every kind of today's table can be written, so the rule for others is tested on its own.
    for (const int mode : {-1, 0, 1, 2, 3}) {
        EXPECT_EQ(isWriteToReadOnly(qt("R"), mode), mode == 1 || mode == 2) << mode;
        EXPECT_FALSE(isWriteToReadOnly(qt("RW"), mode) || isWriteToReadOnly(qt("W"), mode)) << mode;
    }
}

TEST(AddressText, isReadInTheBaseOfItsFormat)
{
    const struct {
        const char *text, *format;
        int result, number;
    } rows[] = {{"1f", "HHH", 1, 31},        {"17", "OO", 1, 15},       {"17", "D", 1, 17},
                {"17", "", 1, 17},           {"17", "ZZ", 1, 17},       {"9", "O", -1, 0},
                {"10", "OD", -1, UNTOUCHED}, {"1.15", "DDDD.H", 1, 31}, {"1.f", "DDDD.H", -1, UNTOUCHED}};
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

TEST(AsciiNumber, isReadAlikeByEveryQt)
{
    const struct {
        const char *utf8;
        int base;
        bool isNumber;
        int number;
    } rows[] = {
        {"12", 10, true, 12},
        {" \t\n\v\f\r-12 \t", 10, true, -12},
        {"+7", 10, true, 7},
        {"2147483647", 10, true, 2147483647},
        {"-2147483648", 10, true, LOWEST_INT},
        {"2147483648", 10, false, 0},
        {"-2147483649", 10, false, 0},
        {"", 10, false, 0},
        {"-", 10, false, 0},
        {"+-1", 10, false, 0},
        {"1 2", 10, false, 0},
        {"1,000", 10, false, 0},
        {"0x4", 10, false, 0},
        {"78", 8, false, 0},
        {"-0xFf", 16, true, -255},
        {"0X1g", 16, false, 0},
        {"0x", 16, false, 0},
        {"\u0663", 10, false, 0},  // an Arabic digit
        {"\u22125", 10, false, 0}, // the minus of typesetters
        {"\u00a05", 10, false, 0}, // a space that does not break
        {"\uff15", 10, false, 0},  // a digit of full width
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.utf8);
        int number = UNTOUCHED;
        EXPECT_EQ(readNumber(QString::fromUtf8(row.utf8), row.base, number), row.isNumber);
        EXPECT_EQ(number, row.number);
    }
}

TEST(RegisterTable, describesEveryKindToTheHost)
{
    int index = 0;
    for (const Kind &kind : kinds()) {
        SCOPED_TRACE(kind.name);
        QStringList description;
        EXPECT_EQ(intf_getRegDiscription(qt(kind.name), description), 0);
        EXPECT_EQ(plain(description), kind.description);
        EXPECT_EQ(getIndexFromRegName(qt(kind.name)), index);
        EXPECT_EQ(plain(REG_LIST.at(index)), kind.name);
        EXPECT_EQ(ADDRESS_RANGE_FUNC[index], kind.deviceCode);
        const RegisterKind &row = REGISTER_KINDS.at(index);
        EXPECT_EQ(std::make_pair(row.lowest, row.highest), std::make_pair(kind.lowest, kind.highest));
        EXPECT_EQ(std::make_pair(row.valueWidth, row.unitWidth), std::make_pair(kind.valueWidth, kind.unitWidth));
        EXPECT_EQ(plain(row.keyName), kind.unitName);
        ++index;
    }
    EXPECT_EQ(index, REG_LIST.size());
    QStringList description;
    for (const char *name : {"Q", "d", "", "D ", " D", "D_Bit", "D_", "C_contact"}) {
        EXPECT_EQ(intf_getRegDiscription(qt(name), description), 0);
        EXPECT_EQ(getIndexFromRegName(qt(name)), -1) << name;
    }
    EXPECT_TRUE(description.isEmpty());
}

TEST(RegisterTable, listsKindsByTypeBehindWhatTheListHolds)
{
    for (const int type : {0, 1, 2, -1}) {
        std::vector<std::string> expected = {"kept"};
        for (const Kind &kind : kinds())
            if (kind.holdsBits() == (type == 0))
                expected.push_back(kind.name);
        QStringList names(qt("kept"));
        EXPECT_EQ(intf_getRegListByType(type, names), type == 0 || type == 1);
        EXPECT_EQ(plain(names), expected) << type;
    }
}

/// What a call gives and appends to the two vectors: "1: 10=8, 11=9".
template <typename Call> std::string copiesOf(Call call)
{
    QVector<QString> texts(1, qt("kept"));
    QVector<int> numbers(1, 9);
    const int result = call(texts, numbers);
    EXPECT_TRUE(plain(texts.at(0)) == "kept" && numbers.at(0) == 9 && texts.size() == numbers.size());
    std::vector<std::string> copies;
    for (int i = 1; i < texts.size(); ++i)
        copies.push_back(plain(texts.at(i)) + "=" + std::to_string(numbers.at(i)));
    return std::to_string(result) + ": " + joined(copies);
}

TEST(MultiCopy, generatesAddressesInTheKindsOwnForm)
{
    const struct {
        const char *regName;
        int start, number, step;
        const char *copies;
    } rows[] = {
        {"D", 100, 3, 1, "1: 100=100, 101=101, 102=102"},
        {"X", 8, 3, 1, "1: 10=8, 11=9, 12=10"},
        {"M", 0, 3, -1, "1: 0=0, 16=16, 32=32"},
        {"M", 0, 2, -2, "1: 0=0, 32=32"},
        {"D", 0, 2, -2, "1: 0=0, 2=2"},
        {"D_bit", 0, 2, -1, "1: 0.0=0, 0.1=1"},
        {"32C", 200, 3, -1, "1: 200=200, 201=201, 202=202"},
        {"32C", 200, 2, -2, "1: 200=200, 201=201"},
        {"D", 5, 2, 0, "1: 5=5, 6=6"},
        {"D", 5, 2, -5, "1: 5=5, 6=6"},
        {"D", 8998, 3, 1, "2: 8998=8998, 8999=8999, 8999=8999"},
        {"X", 377, 2, 1, "2: 571=377, 571=377"},
        {"D_bit", 1605, 2, 16, "1: 100.5=1605, 101.5=1621"},
        {"R_bit", 415999, 2, 1, "2: 25999.15=415999, 25999.15=415999"},
        {"SD", 0, 1, 1, "1: 0=0"},
        {"D", 8000, 3, 2147483647, "2: 8000=8000, 8999=8999, 8999=8999"},
        {"D", -1, 2, 1, "1: 4294967295=-1, 0=0"},
        {"X", LOWEST_INT, 1, 1, "1: 20000000000=-2147483648"},
        {"D", 5, 0, 1, "1: "},
        {"D", 5, -3, 1, "1: "},
        {"Q", 5, 3, 1, "0: "},
        {"D", 5, 416001, 1, "0: "},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.regName) + " " + std::to_string(row.start) + " step " + std::to_string(row.step));
        EXPECT_EQ(copiesOf([&](QVector<QString> &texts, QVector<int> &numbers) {
                      return intf_multiCopy(qt(row.regName), row.start, row.number, row.step, texts, numbers);
                  }),
                  row.copies);
    }
}

TEST(MultiCopy, followsTheFormat)
{
    const struct {
        const char *regName, *format;
        const char *copies;
    } rows[] = {
        {"D", "HHH", "2: 1e=30, 1f=31, top=31"},
        {"D", "ZZ", "2: =30, =31, top=31"},
        {"D", "", "2: =30, =31, top=31"},
        {"D", "DDDD.D", "2: "},
        {"D_bit", "DDDD.D", "2: 1.14=30, 1.15=31, top=31"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.format);
        EXPECT_EQ(copiesOf([&](QVector<QString> &texts, QVector<int> &numbers) {
                      return multiCp(qt(row.regName), qt(row.format), 30, 3, 1, texts, numbers, 31, qt("top"));
                  }),
                  row.copies);
    }
}

RC_GTEST_PROP(AddressText, isValidOnlyWhereItMeansWhatItsNumbersOwnTextMeans, ())
{
    const Kind &kind = *rc::gen::elementOf(kinds());
    const int access = kind.holdsBits() ? 0 : 1;
    const bool isInRange = *rc::gen::arbitrary<bool>();
    int number = *rc::gen::inRange(kind.lowest, kind.highest + 1);
    if (!isInRange) {
        const auto text = *rc::gen::container<std::string>(rc::gen::elementOf(std::string("0123456789.-+ xAf")));
        const int result = intf_checkAddrValidity(qt(kind.name), qt(text), &number, 1, access);
        RC_ASSERT(result == 0 || result == 2 || result == 4);
        if (result != 0)
            return;
    }
    QVector<QString> texts;
    QVector<int> numbers;
    RC_ASSERT(intf_multiCopy(qt(kind.name), number, 1, 1, texts, numbers) == 1);
    int parsed = UNTOUCHED;
    RC_ASSERT(intf_checkAddrValidity(qt(kind.name), texts.at(0), &parsed, 1, access) == 0);
    RC_ASSERT(parsed == number);
}

} // namespace

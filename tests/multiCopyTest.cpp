#include "support/driverTest.h"

#include "serviceForProtocol/planning/multiCopy.h"

namespace {

struct Copies {
    std::vector<std::string> texts;
    std::vector<int> numbers;
    int result;
};

bool operator==(const Copies &left, const Copies &right)
{
    return left.texts == right.texts && left.numbers == right.numbers && left.result == right.result;
}

std::ostream &operator<<(std::ostream &out, const Copies &copies)
{
    return out << ::testing::PrintToString(copies.texts) << ::testing::PrintToString(copies.numbers) << copies.result;
}

Copies copiesOf(const QVector<QString> &texts, const QVector<int> &numbers, int result)
{
    Copies copies = {{}, {}, result};
    for (int i = 0; i < texts.size(); ++i) {
        copies.texts.push_back(plain(texts.at(i)));
        copies.numbers.push_back(numbers.at(i));
    }
    EXPECT_EQ(texts.size(), numbers.size());
    return copies;
}

TEST(MultiCopy, generatesAddressesInTheKindsOwnForm)
{
    const int lowest = -2147483647 - 1;
    const struct {
        const char *regName;
        int start, number, step;
        Copies copies;
    } rows[] = {
        {"D", 100, 3, 1, {{"100", "101", "102"}, {100, 101, 102}, 1}},
        {"X", 8, 3, 1, {{"10", "11", "12"}, {8, 9, 10}, 1}},
        {"X", 250, 3, 1, {{"372", "373", "374"}, {250, 251, 252}, 1}},
        {"M", 0, 3, -1, {{"0", "16", "32"}, {0, 16, 32}, 1}},
        {"M", 0, 2, -2, {{"0", "32"}, {0, 32}, 1}},
        {"D", 0, 2, -2, {{"0", "2"}, {0, 2}, 1}},
        {"D_bit", 0, 2, -1, {{"0.0", "0.1"}, {0, 1}, 1}},
        {"32C", 200, 3, -1, {{"200", "201", "202"}, {200, 201, 202}, 1}},
        {"32C", 200, 2, -2, {{"200", "201"}, {200, 201}, 1}},
        {"D", 5, 2, 0, {{"5", "6"}, {5, 6}, 1}},
        {"D", 5, 2, -5, {{"5", "6"}, {5, 6}, 1}},
        {"D", 8998, 3, 1, {{"8998", "8999", "8999"}, {8998, 8999, 8999}, 2}},
        {"X", 377, 2, 1, {{"571", "571"}, {377, 377}, 2}},
        {"D_bit", 1605, 2, 16, {{"100.5", "101.5"}, {1605, 1621}, 1}},
        {"R_bit", 415999, 2, 1, {{"25999.15", "25999.15"}, {415999, 415999}, 2}},
        {"SD", 0, 1, 1, {{"0"}, {0}, 1}},
        {"D", 8000, 3, 2147483647, {{"8000", "8999", "8999"}, {8000, 8999, 8999}, 2}},
        {"D", -1, 2, 1, {{"4294967295", "0"}, {-1, 0}, 1}},
        {"X", lowest, 1, 1, {{"20000000000"}, {lowest}, 1}},
        {"D", 5, 0, 1, {{}, {}, 1}},
        {"D", 5, -3, 1, {{}, {}, 1}},
        {"Q", 5, 3, 1, {{}, {}, 0}},
        {"D", 5, 2147483647, 1, {{}, {}, 0}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.regName) + " " + std::to_string(row.start) + " step " + std::to_string(row.step));
        QVector<QString> texts(1, qt("kept"));
        QVector<int> numbers(1, 9);
        const int result = intf_multiCopy(qt(row.regName), row.start, row.number, row.step, texts, numbers);
        EXPECT_EQ(plain(texts.at(0)), "kept");
        texts.remove(0);
        numbers.remove(0);
        EXPECT_EQ(copiesOf(texts, numbers, result), row.copies);
    }
}

TEST(MultiCopy, followsTheFormat)
{
    const struct {
        const char *regName, *format;
        Copies copies;
    } rows[] = {
        {"D", "HHH", {{"1e", "1f", "top"}, {30, 31, 31}, 2}},
        {"D", "ZZ", {{"", "", "top"}, {30, 31, 31}, 2}},
        {"D", "", {{"", "", "top"}, {30, 31, 31}, 2}},
        {"D", "DDDD.D", {{}, {}, 2}},
        {"D_bit", "DDDD.D", {{"1.14", "1.15", "top"}, {30, 31, 31}, 2}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.format);
        QVector<QString> texts;
        QVector<int> numbers;
        const int result = multiCp(qt(row.regName), qt(row.format), 30, 3, 1, texts, numbers, 31, qt("top"));
        EXPECT_EQ(copiesOf(texts, numbers, result), row.copies);
    }
}

} // namespace

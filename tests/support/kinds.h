/// The register kinds as the tests know them, written apart from the driver's table.
#ifndef TESTS_KINDS_H
#define TESTS_KINDS_H

#include <string>
#include <vector>

struct Kind {
    const char *name;
    /// The kind whose units hold the values.
    const char *unitName;
    int lowest;
    int highest;
    unsigned deviceCode;
    /// Bits in a value and in a unit.
    int valueWidth;
    int unitWidth;
    /// What the driver tells the host's editor: format, lowest, highest, size and access.
    std::vector<std::string> description;

    bool holdsBits() const { return valueWidth == 1; }
    bool isBitInWord() const { return valueWidth != unitWidth; }
    /// What a host counts for one value, and the bytes that it takes.
    int hostCount() const { return valueWidth == 32 ? 2 : 1; }
    int bytes() const { return valueWidth == 1 ? 1 : valueWidth / 8; }
};

inline const std::vector<Kind> &kinds()
{
    static const std::vector<Kind> KINDS = {
        {"32C", "32C", 200, 255, 0xAD, 32, 32, {"DDD", "200", "255", "2", "1"}},
        {"C", "C", 0, 199, 0xAC, 16, 16, {"DDD", "0", "199", "1", "1"}},
        {"T", "T", 0, 511, 0xA8, 16, 16, {"DDD", "0", "511", "1", "1"}},
        {"R", "R", 0, 25999, 0xA2, 16, 16, {"DDDDD", "0", "25999", "1", "1"}},
        {"SD", "SD", 9000, 9511, 0xA1, 16, 16, {"DDDD", "9000", "9511", "1", "1"}},
        {"D", "D", 0, 8999, 0xA0, 16, 16, {"DDDD", "0", "8999", "1", "1"}},
        {"X", "X", 0, 377, 0x90, 1, 1, {"OOO", "0", "571", "0", "1"}},
        {"Y", "Y", 0, 377, 0x91, 1, 1, {"OOO", "0", "571", "0", "1"}},
        {"M", "M", 0, 8191, 0x92, 1, 1, {"DDDD", "0", "8191", "0", "1"}},
        {"S", "S", 0, 4095, 0x93, 1, 1, {"DDDD", "0", "4095", "0", "1"}},
        {"SM", "SM", 9000, 9511, 0x94, 1, 1, {"DDDD", "9000", "9511", "0", "1"}},
        {"D_bit", "D", 0, 143999, 0x95, 1, 16, {"DDDD.D", "0.0", "8999.15", "0", "1"}},
        {"R_bit", "R", 0, 415999, 0x97, 1, 16, {"DDDDD.H", "0.0", "25999.15", "0", "1"}},
        {"T_Coil", "T_Coil", 0, 511, 0x98, 1, 1, {"DDD", "0", "511", "0", "1"}},
        {"T_Contact", "T_Contact", 0, 511, 0x99, 1, 1, {"DDD", "0", "511", "0", "1"}},
        {"C_Coil", "C_Coil", 0, 255, 0x9C, 1, 1, {"DDD", "0", "255", "0", "1"}},
        {"C_Contact", "C_Contact", 0, 255, 0x9D, 1, 1, {"DDD", "0", "255", "0", "1"}},
    };
    return KINDS;
}

inline const Kind &kindNamed(const std::string &name)
{
    std::size_t i = 0;
    while (kinds().at(i).name != name)
        ++i;
    return kinds()[i];
}

#endif

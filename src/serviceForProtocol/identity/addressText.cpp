#include "serviceForProtocol/identity/addressText.h"

#include "model/deviceUnits.h"
#include "model/registerTable.h"
#include "tanek_vs/bitAddress.h"
#include "tanek_vs/driver.h"
#include "tanek_vs/registerNames.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace {

enum AddressCheck {
    AddressValid = 0,
    AddressAccessMismatch = 1,
    AddressOutOfRange = 2,
    AddressKindUnknown = 3,
    AddressUnreadable = 4,
    AddressTypeMismatch = 5,
    AddressReadOnly = 6
};

const int DATA_TYPE_BIT = -1;
const int DATA_TYPES_OF_32_BIT_KINDS[] = {1, 3, 5, 6, 9};
const int WRITING_MODES[] = {1, 2};

template <std::size_t size> bool contains(const int (&numbers)[size], int number)
{
    return std::find(numbers, numbers + size, number) != numbers + size;
}

int baseOfFormat(const QString &addrFormat)
{
    if (addrFormat.endsWith(QLatin1Char('O')))
        return 8;
    return addrFormat.endsWith(QLatin1Char('H')) ? 16 : 10;
}

struct NumberRange {
    int lowest;
    int highest;
};

NumberRange rangeOf(int kind)
{
    const ADDRESS_RANGE &row = ADDRESS_RANGE_PRO.at(kind);
    NumberRange range = {0, 0};
    a2i(row.maxAddr, range.highest, row.addrFormat, REG_LIST.at(kind));
    a2i(row.minAddr, range.lowest, row.addrFormat, REG_LIST.at(kind));
    return range;
}

/// In real numbers: three words are one and a half 32-bit counters.
bool isInRange(const NumberRange &range, int number, int count, int unitWidth)
{
    const double end = number + static_cast<double>(count) * WORD_WIDTH / unitWidth;
    return number >= range.lowest && end <= static_cast<double>(range.highest) + 1;
}

/// The last steps of both checks: read the text, test the range.
AddressCheck checkText(int kind, const QString &addressText, int *address, int count, bool bitAccess)
{
    const ADDRESS_RANGE &row = ADDRESS_RANGE_PRO.at(kind);
    if (a2i(addressText, *address, row.addrFormat, REG_LIST.at(kind)) != 1)
        return AddressUnreadable;
    if (!isInRange(rangeOf(kind), *address, count, bitAccess ? WORD_WIDTH : unitWidthOf(kind)))
        return AddressOutOfRange;
    *address = addrOffset(REG_LIST.at(kind), *address);
    return AddressValid;
}

/// The checks that the kind alone decides.
AddressCheck checkAccess(int kind, int dataType, int accessMode)
{
    const bool bitAccess = dataType == DATA_TYPE_BIT;
    if (bitAccess != (valueWidthOf(kind) == 1))
        return AddressAccessMismatch;
    if (isWriteToReadOnly(ADDRESS_RANGE_PRO.at(kind).access, accessMode))
        return AddressReadOnly;
    if (valueWidthOf(kind) == 32 && !contains(DATA_TYPES_OF_32_BIT_KINDS, dataType))
        return AddressTypeMismatch;
    return AddressValid;
}

} // namespace

bool isWriteToReadOnly(const QString &access, int accessMode)
{
    return access == QString::fromLatin1("R") && contains(WRITING_MODES, accessMode);
}

bool isMixedFormat(const QString &addrFormat)
{
    return !addrFormat.isEmpty() && addrFormat.count(addrFormat.at(0)) != addrFormat.size();
}

int a2i(const QString &addressText, int &address, const QString &addrFormat, const QString &regName)
{
    if (isMixedFormat(addrFormat)) {
        const int number = addr_str2int(addressText, regName);
        if (number == -1)
            return -1;
        address = number;
        return 1;
    }
    bool isNumber = false;
    address = addressText.toInt(&isNumber, baseOfFormat(addrFormat));
    return isNumber ? 1 : -1;
}

int hostUnitsOf(int kind)
{
    const NumberRange range = rangeOf(kind);
    const int units = range.highest - range.lowest + 1;
    return valueWidthOf(kind) == 1 ? units : units * unitWidthOf(kind) / WORD_WIDTH;
}

int hostUnitsOfLargestKind()
{
    int most = 0;
    for (int kind = 0; kind < REGISTER_KIND_COUNT; ++kind)
        most = std::max(most, hostUnitsOf(kind));
    return most;
}

bool isSensibleRun(const QString &regName, int address, int count)
{
    const int kind = getIndexFromRegName(regName);
    return kind >= 0 && address >= 0 && count >= 1 && count <= hostUnitsOf(kind) &&
           address <= std::numeric_limits<int>::max() - (count - 1);
}

int intf_checkAddrValidity(const QString &regName, const QString &addressText, int *address, int count, int wordAccess)
{
    int unwanted = 0;
    const int kind = getIndexFromRegName(regName);
    if (kind < 0)
        return AddressKindUnknown;
    const bool bitAccess = wordAccess == 0;
    if (bitAccess != (valueWidthOf(kind) == 1))
        return AddressAccessMismatch;
    return checkText(kind, addressText, address ? address : &unwanted, count, bitAccess);
}

int intf_checkAddr(const QString &regName, const QString &addressText, int *address, int dataType, int count,
                   int accessMode)
{
    int unwanted = 0;
    const int kind = getIndexFromRegName(regName);
    if (kind < 0)
        return AddressKindUnknown;
    const AddressCheck access = checkAccess(kind, dataType, accessMode);
    if (access != AddressValid)
        return access;
    return checkText(kind, addressText, address ? address : &unwanted, count, dataType == DATA_TYPE_BIT);
}

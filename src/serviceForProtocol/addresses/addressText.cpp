#include "serviceForProtocol/addresses/addressText.h"

#include "model/addressForm.h"
#include "model/asciiNumber.h"
#include "model/deviceUnits.h"
#include "model/registerTable.h"
#include "tanek_vs/bitAddress.h"
#include "tanek_vs/registerNames.h"

#include <tanek_vs/driver.h>

#include <QtCore/QString>

#include <algorithm>
#include <cstddef>

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

/// Results of reading a text.
const int READ = 1;
const int UNREADABLE = -1;
/// Base of a format whose letter names none.
const int DEFAULT_BASE = 10;

const int DATA_TYPE_BIT = -1;
const int DATA_TYPES_OF_32_BIT_KINDS[] = {1, 3, 5, 6, 9};
const int WRITING_MODES[] = {1, 2};

template <std::size_t size> bool contains(const int (&numbers)[size], int number)
{
    return std::find(numbers, numbers + size, number) != numbers + size;
}

/// In real numbers: three words are one and a half 32-bit counters.
bool isInRange(const RegisterKind &kind, int number, int count, int unitWidth)
{
    const double end = number + static_cast<double>(count) * WORD_WIDTH / unitWidth;
    return number >= kind.lowest && end <= static_cast<double>(kind.highest) + 1;
}

/// The last steps of both checks: read the text, test the range.
AddressCheck checkText(int index, const QString &addressText, int *address, int count, bool bitAccess)
{
    const RegisterKind &kind = REGISTER_KINDS.at(index);
    int unwanted = 0;
    int &number = address ? *address : unwanted;
    if (a2i(addressText, number, ADDRESS_RANGE_PRO.at(index).addrFormat, kind.name) != READ)
        return AddressUnreadable;
    if (!isInRange(kind, number, count, bitAccess ? WORD_WIDTH : kind.unitWidth))
        return AddressOutOfRange;
    number = addrOffset(kind.name, number);
    return AddressValid;
}

bool holdsBits(int index) { return REGISTER_KINDS.at(index).holdsBits(); }

/// The checks that the kind alone decides.
AddressCheck checkAccess(int index, int dataType, int accessMode)
{
    if ((dataType == DATA_TYPE_BIT) != holdsBits(index))
        return AddressAccessMismatch;
    if (isWriteToReadOnly(ADDRESS_RANGE_PRO.at(index).access, accessMode))
        return AddressReadOnly;
    const bool is32Bit = REGISTER_KINDS.at(index).valueWidth == 32;
    return is32Bit && !contains(DATA_TYPES_OF_32_BIT_KINDS, dataType) ? AddressTypeMismatch : AddressValid;
}

} // namespace

bool isWriteToReadOnly(const QString &access, int accessMode)
{
    return access == QString::fromLatin1("R") && contains(WRITING_MODES, accessMode);
}

int a2i(const QString &addressText, int &address, const QString &addrFormat, const QString &regName)
{
    if (isMixedFormat(addrFormat)) {
        const int number = addr_str2int(addressText, regName);
        if (number == UNREADABLE)
            return UNREADABLE;
        address = number;
        return READ;
    }
    const int base = addrFormat.isEmpty() ? 0 : baseOfLetter(addrFormat.at(addrFormat.size() - 1));
    return readNumber(addressText, base == 0 ? DEFAULT_BASE : base, address) ? READ : UNREADABLE;
}

int intf_checkAddrValidity(const QString &regName, const QString &addressText, int *address, int count, int wordAccess)
{
    const int kind = getIndexFromRegName(regName);
    if (kind < 0)
        return AddressKindUnknown;
    const bool bitAccess = wordAccess == 0;
    if (bitAccess != holdsBits(kind))
        return AddressAccessMismatch;
    return checkText(kind, addressText, address, count, bitAccess);
}

int intf_checkAddr(const QString &regName, const QString &addressText, int *address, int dataType, int count,
                   int accessMode)
{
    const int kind = getIndexFromRegName(regName);
    if (kind < 0)
        return AddressKindUnknown;
    const AddressCheck access = checkAccess(kind, dataType, accessMode);
    return access != AddressValid ? access : checkText(kind, addressText, address, count, dataType == DATA_TYPE_BIT);
}

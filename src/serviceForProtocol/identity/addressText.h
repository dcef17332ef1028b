/// Address texts in the form of their register kind, and the check of addresses at the driver's door.
#ifndef TANEK_VS_ADDRESS_TEXT_H
#define TANEK_VS_ADDRESS_TEXT_H

#include <QtCore/QString>

/// True when not all characters of an address format are the same: such an address is word, point and bit.
bool isMixedFormat(const QString &addrFormat);

/// Turns an address text into its number.
/// @param address receives the number. A text of one number stores 0 when it cannot be read; a text of word and bit
///        that cannot be read stores nothing.
/// @return 1, or -1 when the text cannot be read.
int a2i(const QString &addressText, int &address, const QString &addrFormat, const QString &regName);

/// Whether that access mode of the host's writes to a kind with that `access` in the register table.
bool isWriteToReadOnly(const QString &access, int accessMode);

/// Does this run, its count in host terms, make sense for a call that works on the controller's memory? It does when
/// the kind is known, the count is at least 1 and no more than the kind holds, and every address number from the
/// first to the last is an int that is not negative. Addresses above the kind's highest pass.
bool isSensibleRun(const QString &regName, int address, int count);

/// Bits or 16-bit words that the kind with that index holds in all.
int hostUnitsOf(int kind);

/// The same of the kind that holds the most.
int hostUnitsOfLargestKind();

#endif

/// Texts of addresses of single bits inside words: word number, point, bit number, both decimal, such as 100.5.
#ifndef TANEK_VS_BIT_ADDRESS_H
#define TANEK_VS_BIT_ADDRESS_H

#include <QtCore/QString>

/// The address number 16 * word + bit; neither part is bounded by itself. 0 when `regName` is not of a bit inside
/// words, -1 when the text is not two numbers around one point or the number does not fit an int.
int addr_str2int(const QString &addressText, const QString &regName);

/// The text of an address number; empty when `regName` is not of a bit inside words.
QString addr_int2str(int address, const QString &regName);

/// Where the kind's addresses start on the controller relative to their numbers: nowhere else for any kind, so the
/// number comes back unchanged.
int addrOffset(const QString &regName, int address);

#endif

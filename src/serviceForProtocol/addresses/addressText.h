/// Address texts in the form of their register kind, and the checks that a host's editor makes of them.
#ifndef TANEK_VS_ADDRESS_TEXT_H
#define TANEK_VS_ADDRESS_TEXT_H

#include <QtCore/QString>

/// Turns an address text into its number.
/// @param address receives the number. A text of one number stores 0 when it cannot be read; a text of word and bit
///        that cannot be read stores nothing.
/// @return 1, or -1 when the text cannot be read.
int a2i(const QString &addressText, int &address, const QString &addrFormat, const QString &regName);

/// Whether that access mode of the host's writes to a kind with that `access` in the register table.
bool isWriteToReadOnly(const QString &access, int accessMode);

#endif

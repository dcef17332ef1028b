/// The forms that address texts have, and the numbers that they stand for.
#ifndef TANEK_VS_ADDRESS_FORM_H
#define TANEK_VS_ADDRESS_FORM_H

#include <QtCore/QChar>
#include <QtCore/QString>

/// True for an address format of more than one letter, such as "DDDD.D": its texts are word, point and bit.
bool isMixedFormat(const QString &addrFormat);

/// Base of the numbers that a letter of an address format stands for: decimal "D", octal "O", hexadecimal "H"; 0 for
/// any other.
int baseOfLetter(QChar letter);

/// The number 16 * word + bit of a text such as 100.5, both parts decimal and not bounded by themselves. -1 when the
/// text is not two numbers around one point, or the number does not fit an int.
int readWordAndBit(const QString &text);

#endif

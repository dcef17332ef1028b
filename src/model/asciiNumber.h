/// Whole numbers read from text in ASCII alone, so that every Qt reads them alike in every language of the process.
#ifndef TANEK_VS_ASCII_NUMBER_H
#define TANEK_VS_ASCII_NUMBER_H

#include <QtCore/QString>

/// Reads a number of that base (2 to 16): digits, a sign in front of them or not, spaces around them or not; "0x" may
/// stand before the digits of base 16.
/// @param number receives the number; 0 when the text is anything else, or the number does not fit an int.
/// @return whether the text is a number.
bool readNumber(const QString &text, int base, int &number);

/// The same in base 10; 0 for what is no number.
int numberOrZero(const QString &text);

#endif

/// Register-kind names: which kind a name means, and what can be told from the name itself.
#ifndef TANEK_VS_REGISTER_NAMES_H
#define TANEK_VS_REGISTER_NAMES_H

#include <QtCore/QString>

/// Index of the kind in REG_LIST, compared exactly; -1 when there is none of that name.
int getIndexFromRegName(const QString &regName);

/// Bits in one value and in one device unit of the kind with that index.
int valueWidthOf(int kind);
int unitWidthOf(int kind);

/// True for the kinds that address single bits inside words, such as "D_bit".
bool namesBitInWord(const QString &regName);

/// The name before its first underscore: the kind whose words hold the bits of "D_bit" is "D".
QString nameOfWords(const QString &regName);

#endif

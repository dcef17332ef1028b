#include "tanek_vs/registerNames.h"

#include "model/registerTable.h"

int getIndexFromRegName(const QString &regName) { return static_cast<int>(REG_LIST.indexOf(regName)); }

int valueWidthOf(int kind) { return ADDRESS_RANGE_PRO.at(kind).valueWidth.toInt(); }

int unitWidthOf(int kind) { return ADDRESS_RANGE_PRO.at(kind).unitWidth.toInt(); }

bool namesBitInWord(const QString &regName) { return regName.contains(QString::fromLatin1("_bit")); }

QString nameOfWords(const QString &regName) { return regName.split(QLatin1Char('_')).first(); }

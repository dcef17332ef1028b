#include "tanek_vs/bitAddress.h"

#include "tanek_vs/registerNames.h"

#include <QtCore/QStringList>

#include <limits>

namespace {

const int BITS_PER_WORD = 16;
const int UNREADABLE = -1;

} // namespace

int addr_str2int(const QString &addressText, const QString &regName)
{
    if (!namesBitInWord(regName))
        return 0;
    const QStringList parts = addressText.split(QLatin1Char('.'));
    if (parts.size() != 2)
        return UNREADABLE;
    bool wordRead = false;
    bool bitRead = false;
    const qint64 word = parts.at(0).toInt(&wordRead, 10);
    const qint64 bit = parts.at(1).toInt(&bitRead, 10);
    const qint64 address = BITS_PER_WORD * word + bit;
    const bool fits = address >= std::numeric_limits<int>::min() && address <= std::numeric_limits<int>::max();
    return wordRead && bitRead && fits ? static_cast<int>(address) : UNREADABLE;
}

QString addr_int2str(int address, const QString &regName)
{
    if (!namesBitInWord(regName))
        return QString();
    return QString::number(address / BITS_PER_WORD) + QLatin1Char('.') + QString::number(address % BITS_PER_WORD);
}

int addrOffset(const QString &, int address) { return address; }

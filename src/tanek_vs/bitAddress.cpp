#include "tanek_vs/bitAddress.h"

#include "model/addressForm.h"
#include "model/deviceUnits.h"
#include "tanek_vs/registerNames.h"

#include <QtCore/QChar>
#include <QtCore/QString>

namespace {

bool isOfBitInWord(const QString &regName)
{
    const RegisterKind *kind = registerKind(regName);
    return kind && kind->isBitInWord;
}

} // namespace

int addr_str2int(const QString &addressText, const QString &regName)
{
    return isOfBitInWord(regName) ? readWordAndBit(addressText) : 0;
}

QString addr_int2str(int address, const QString &regName)
{
    if (!isOfBitInWord(regName))
        return QString();
    return QString::number(address / WORD_WIDTH) + QLatin1Char('.') + QString::number(address % WORD_WIDTH);
}

int addrOffset(const QString &, int address) { return address; }

/// The tables and then the driver's state, in one translation unit: only so does the language promise that the tables
/// are built before the constructor that copies from them, and destroyed after it.
#include "model/addressForm.h"
#include "model/asciiNumber.h"
#include "model/deviceUnits.h"
#include "model/protocol.h"
#include "model/registerTable.h"

#include <QtCore/QChar>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>
#include <QtCore/QtGlobal>

namespace {

QString text(const char *latin1) { return QString::fromLatin1(latin1); }

struct KindTexts {
    const char *name;
    const char *addrFormat;
    const char *minAddr;
    const char *maxAddr;
    const char *valueWidth;
    const char *access;
    const char *unitWidth;
};

const KindTexts KINDS[REGISTER_KIND_COUNT] = {
    {"32C", "DDD", "200", "255", "32", "RW", "32"},
    {"C", "DDD", "0", "199", "16", "RW", "16"},
    {"T", "DDD", "0", "511", "16", "RW", "16"},
    {"R", "DDDDD", "0", "25999", "16", "RW", "16"},
    {"SD", "DDDD", "9000", "9511", "16", "RW", "16"},
    {"D", "DDDD", "0", "8999", "16", "RW", "16"},
    {"X", "OOO", "0", "571", "1", "RW", "1"},
    {"Y", "OOO", "0", "571", "1", "RW", "1"},
    {"M", "DDDD", "0", "8191", "1", "RW", "1"},
    {"S", "DDDD", "0", "4095", "1", "RW", "1"},
    {"SM", "DDDD", "9000", "9511", "1", "RW", "1"},
    {"D_bit", "DDDD.D", "0.0", "8999.15", "1", "RW", "16"},
    {"R_bit", "DDDDD.H", "0.0", "25999.15", "1", "RW", "16"},
    {"T_Coil", "DDD", "0", "511", "1", "RW", "1"},
    {"T_Contact", "DDD", "0", "511", "1", "RW", "1"},
    {"C_Coil", "DDD", "0", "255", "1", "RW", "1"},
    {"C_Contact", "DDD", "0", "255", "1", "RW", "1"},
};

QList<QString> namesOfKinds()
{
    QList<QString> names;
    for (const KindTexts &kind : KINDS)
        names.append(text(kind.name));
    return names;
}

QList<ADDRESS_RANGE> rangesOfKinds()
{
    QList<ADDRESS_RANGE> ranges;
    for (const KindTexts &kind : KINDS) {
        ADDRESS_RANGE range;
        range.addrFormat = text(kind.addrFormat);
        range.minAddr = text(kind.minAddr);
        range.maxAddr = text(kind.maxAddr);
        range.valueWidth = text(kind.valueWidth);
        range.access = text(kind.access);
        range.unitWidth = text(kind.unitWidth);
        ranges.append(range);
    }
    return ranges;
}

const int HIGHEST_OF_SIX_DIGITS = 999999;
const int HIGHEST_OF_FIVE_DIGITS = 99999;
const int FIRST_SPECIAL_NUMBER = 9000;

/// An address of the table, which can be read.
int numberOf(const QString &addressText, const ADDRESS_RANGE &row, int base)
{
    if (isMixedFormat(row.addrFormat))
        return readWordAndBit(addressText);
    int number = 0;
    readNumber(addressText, base, number);
    return number;
}

RegisterKind numericRow(const QString &name, const ADDRESS_RANGE &row, quint32 deviceCode)
{
    RegisterKind kind = RegisterKind();
    kind.name = name;
    kind.valueWidth = numberOrZero(row.valueWidth);
    kind.unitWidth = numberOrZero(row.unitWidth);
    kind.deviceCode = static_cast<quint8>(deviceCode);
    kind.isBitInWord = name.contains(text("_bit"));
    kind.keyName = kind.holdsBits() && !kind.isBitInWord ? name : name.split(QLatin1Char('_')).first();
    kind.base = baseOfLetter(row.addrFormat.at(0));
    kind.lowest = numberOf(row.minAddr, row, kind.base);
    kind.highest = numberOf(row.maxAddr, row, kind.base);
    kind.firstNumber = name == text("SD") || name == text("SM") ? FIRST_SPECIAL_NUMBER : 0;
    kind.highestInRequest =
        kind.isBitInWord ? WORD_WIDTH * HIGHEST_OF_FIVE_DIGITS + WORD_WIDTH - 1 : HIGHEST_OF_SIX_DIGITS;
    return kind;
}

QVector<RegisterKind> numericRows()
{
    QVector<RegisterKind> kinds;
    for (int i = 0; i < REGISTER_KIND_COUNT; ++i)
        kinds.append(numericRow(REG_LIST.at(i), ADDRESS_RANGE_PRO.at(i), ADDRESS_RANGE_FUNC[i]));
    return kinds;
}

} // namespace

const QString PROCOTOL_NAME = text("tanek_vs");
const QString PROCOTOL_VERSION = text("2.0.0.0");
const QString PROCOTOL_DEFALT_COM_PAR = text("19200,8,NONE,1");
const QString PROCOTOL_DEFALT_IP_PAR = text("192.168.0.10,8000");
const QString PROCOTOL_PAR_HMI_SET_MODE = text("0_0");

const QList<QString> REG_LIST = namesOfKinds();
const QList<ADDRESS_RANGE> ADDRESS_RANGE_PRO = rangesOfKinds();
const quint32 ADDRESS_RANGE_FUNC[REGISTER_KIND_COUNT] = {0xAD, 0xAC, 0xA8, 0xA2, 0xA1, 0xA0, 0x90, 0x91, 0x92,
                                                         0x93, 0x94, 0x95, 0x97, 0x98, 0x99, 0x9C, 0x9D};
const QVector<RegisterKind> REGISTER_KINDS = numericRows();

Protocol driver;

Protocol::Protocol()
{
    for (int kind = 0; kind < REGISTER_KIND_COUNT; ++kind)
        regNames.append(REG_LIST.at(kind));
}

Protocol::~Protocol() = default;

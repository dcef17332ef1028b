/// The tables and then the driver's state, in one translation unit: only so does the language promise that the tables
/// are built before the constructor that copies from them, and destroyed after it.
#include "model/protocol.h"
#include "model/registerTable.h"

namespace {

QString text(const char *latin1) { return QString::fromLatin1(latin1); }

struct RegisterKind {
    const char *name;
    const char *addrFormat;
    const char *minAddr;
    const char *maxAddr;
    const char *valueWidth;
    const char *access;
    const char *unitWidth;
};

const RegisterKind KINDS[REGISTER_KIND_COUNT] = {
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
    for (const RegisterKind &kind : KINDS)
        names.append(text(kind.name));
    return names;
}

QList<ADDRESS_RANGE> rangesOfKinds()
{
    QList<ADDRESS_RANGE> ranges;
    for (const RegisterKind &kind : KINDS) {
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

Protocol driver;

Protocol::Protocol()
{
    for (int kind = 0; kind < REGISTER_KIND_COUNT; ++kind)
        regNames.append(REG_LIST.at(kind));
}

Protocol::~Protocol() = default;

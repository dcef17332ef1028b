/// What the driver knows about the controller's seventeen register kinds, and who it says it is.
///
/// Three tables share one index, the register-kind index: a kind's place in REG_LIST. -1 stands for no kind.
#ifndef TANEK_VS_REGISTER_TABLE_H
#define TANEK_VS_REGISTER_TABLE_H

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

enum { REGISTER_KIND_COUNT = 17 };

/// One kind's row. The columns are texts, as the host's editor shows them.
struct ADDRESS_RANGE {
    /// One letter repeated: a number, decimal "D", octal "O" or hexadecimal "H". Two letters: word, point and bit.
    QString addrFormat;
    /// Lowest and highest address in the kind's own form.
    QString minAddr;
    QString maxAddr;
    /// Bits in one value: "1", "16" or "32".
    QString valueWidth;
    /// "RW", "R" or "W".
    QString access;
    /// Bits in one device unit, the step of transfers and of the cache.
    QString unitWidth;
};

extern const QList<QString> REG_LIST;
extern const QList<ADDRESS_RANGE> ADDRESS_RANGE_PRO;
/// The device codes that requests carry.
extern const quint32 ADDRESS_RANGE_FUNC[REGISTER_KIND_COUNT];

extern const QString PROCOTOL_NAME;
extern const QString PROCOTOL_VERSION;
/// Default baud rate, data bits, parity and stop bits.
extern const QString PROCOTOL_DEFALT_COM_PAR;
/// Default network address and port.
extern const QString PROCOTOL_DEFALT_IP_PAR;
extern const QString PROCOTOL_PAR_HMI_SET_MODE;

#endif

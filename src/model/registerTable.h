/// What the driver knows about the controller's seventeen register kinds, and who it says it is.
///
/// All tables share one index, the register-kind index: a kind's place in REG_LIST. -1 stands for no kind.
#ifndef TANEK_VS_REGISTER_TABLE_H
#define TANEK_VS_REGISTER_TABLE_H

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QVector>
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

/// The same row in numbers, made from the texts when the library is loaded, so that no call reads a text.
struct RegisterKind {
    QString name;
    /// The name under which the units are cached: the bits of "D_bit" lie in the units of "D".
    QString keyName;
    int valueWidth;
    int unitWidth;
    quint8 deviceCode;
    /// Lowest and highest address number.
    int lowest;
    int highest;
    /// Base of the number in an address text.
    int base;
    /// The name has "_bit" in it: an address is that of a bit, 16 * word + bit, and the units are the words.
    bool isBitInWord;
    /// What its users number from: 9000 for the special registers, which the controller numbers from 0 on like all.
    int firstNumber;
    /// The highest number that a request has room for: six decimal digits, of a bit in a word five and the bit's one.
    int highestInRequest;

    bool holdsBits() const { return valueWidth == 1; }
};

/// Whether two names share their text, as those of one kind do everywhere in the driver: the quick half of a
/// comparison.
inline bool sharesText(const QString &left, const QString &right) { return left.constData() == right.constData(); }

inline bool isSameName(const QString &left, const QString &right) { return sharesText(left, right) || left == right; }

extern const QList<QString> REG_LIST;
extern const QList<ADDRESS_RANGE> ADDRESS_RANGE_PRO;
/// The device codes that requests carry.
extern const quint32 ADDRESS_RANGE_FUNC[REGISTER_KIND_COUNT];
extern const QVector<RegisterKind> REGISTER_KINDS;

extern const QString PROCOTOL_NAME;
extern const QString PROCOTOL_VERSION;
/// Default baud rate, data bits, parity and stop bits.
extern const QString PROCOTOL_DEFALT_COM_PAR;
/// Default network address and port.
extern const QString PROCOTOL_DEFALT_IP_PAR;
extern const QString PROCOTOL_PAR_HMI_SET_MODE;

#endif

/// The records that a host and the driver hand to each other.
///
/// Field order and widths are a binary interface: a host compiled against one release must go on working with the
/// next. Fields that the driver never reads keep their places for the same reason. All records are plain values; a
/// copy owns its strings and bytes.
#ifndef TANEK_VS_RECORDS_H
#define TANEK_VS_RECORDS_H

#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <cstdint>

/// Bytes in the `frame` of a FRAME_PRO and in the `data` of a VARIABLE or KEY_ADDRESS.
enum { RECORD_BUFFER_SIZE = 1024 };

/// The station that addresses all stations: writes to it are never answered, reads from it are never sent.
enum { BROADCAST_STATION = 255 };

/// One request: a run of device units of one register kind on one station.
struct VARIABLE {
    /// The host's own value (last argument of intf_setData or intf_addConditionRead), carried and never interpreted;
    /// 4 in the read blocks of the poll list.
    std::uintptr_t hostContext = 0;
    qint32 station = 0;
    /// One of the seventeen register-kind names, such as "D", "X", "D_bit".
    QString regName;
    /// Address number: the plain number of a word or bit, 16 * word + bit for "D_bit" and "R_bit".
    qint32 address = 0;
    /// Device units: bits for bit kinds, 16-bit words for word kinds, counters for "32C".
    qint32 count = 0;
    /// Values of a write: one byte (0 or 1) per bit, two per word, four per counter, least significant byte first.
    quint8 data[RECORD_BUFFER_SIZE] = {};
};

/// One request frame, ready to send, with what the driver needs to judge the reply.
struct FRAME_PRO {
    /// The bytes to send; the first `frameLength` of them are valid.
    quint8 frame[RECORD_BUFFER_SIZE] = {};
    qint32 frameLength = 0;
    /// Bytes of the expected reply after doubled DLE bytes are reduced to one; 0: no reply is expected.
    qint32 replyLength = 0;
    /// Index of the first data byte in that reply: 6 for reads, 0 for writes.
    qint32 dataOffset = 0;
    /// Units whose values the reply carries; 0 for writes.
    qint32 readCount = 0;
    /// Neither set nor read by the driver.
    qint32 reserved = 0;
    /// The request that the frame was built for.
    VARIABLE variable;
};

/// One address that the host polls, or wants read once.
struct KEY_ADDRESS {
    /// `hostLabel`, `hostTag` and `hostNote` belong to the host: copied with the record, never read.
    QString hostLabel;
    qint32 hostTag = 0;
    /// 16-bit words from the start of the recipe buffer; of no meaning outside recipes.
    qint32 bufferOffset = 0;
    qint32 station = 0;
    QString regName;
    QString hostNote;
    /// Address number, as in VARIABLE.
    qint32 address = 0;
    /// -1: a long condition read is cut as writes of bits are cut, else as writes of words. Read by those alone.
    qint32 unitCode = 0;
    /// Bits for kinds of bits ("D_bit" and "R_bit" included), 16-bit words for all others: a 32-bit counter is two.
    qint32 count = 0;
    /// Not read from a host's record.
    quint8 data[RECORD_BUFFER_SIZE] = {};
};

/// One recipe item: a run of addresses and the place of its values in the recipe buffer.
struct _RCP_VAR_PRO {
    /// The driver instance that the item belongs to: the first number of its property text.
    qint32 instanceId = 0;
    qint32 station = 0;
    QString regName;
    /// Address number, as in VARIABLE.
    qint32 address = 0;
    /// Bits or 16-bit words, as in KEY_ADDRESS.
    qint32 count = 0;
    /// Place of the item's first value, in 16-bit words from the start of the recipe buffer.
    qint32 bufferOffset = 0;
    /// Belongs to the host; never read.
    qint32 hostTag = 0;
};

#endif

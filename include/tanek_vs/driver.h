/// The nineteen calls through which a host uses the driver.
///
/// A host either links the library or loads it with dlopen and looks these names up. All of a loaded library's state
/// is one object, so a process has one driver per loaded copy of the library.
///
/// Terms. *Station*: number of a controller on the link; 255 addresses all. *Register kind*: one of the seventeen
/// names that intf_getRegListByType gives, compared exactly. *Address number*: the int that intf_checkAddr makes of
/// an address text. *Host count*: single bits for kinds of bits ("D_bit" and "R_bit" included), 16-bit words for all
/// others, so that one 32-bit counter of "32C" counts as two.
///
/// Threads. intf_getSendFrame and intf_dealRcvFrame are called in turn on one thread, the communication thread.
/// intf_setData and intf_getData may be called from any thread at any time, from inside the callback too.
/// intf_initProperty, intf_addrMerge, intf_setRcpAddress and intf_addConditionRead change what the communication
/// thread works on: the host calls them on that thread, or while it is not inside the driver. intf_initProperty needs
/// every other thread out of the driver, and so do intf_setAddrValueChangeCallBack and intf_SetDriverPropertyPage. The
/// rest read constants only, from any thread.
///
/// Errors are int results; nothing throws and nothing is logged. A call with arguments that make no sense changes
/// nothing: an unknown kind, a count below 1 or beyond what the kind holds, a negative address, a run that ends beyond
/// what a request has digits for (six of the unit's number; five of the word's for bits inside words), a null pointer.
/// An address above the kind's highest is not refused: that is for the host's editor, or the controller, to say.
#ifndef TANEK_VS_DRIVER_H
#define TANEK_VS_DRIVER_H

#include <tanek_vs/records.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QMutex>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#define TANEK_VS_EXPORT __attribute__((visibility("default")))

extern "C" {

/// The host's function that is told about changes, on the thread of the call that found the change and with no lock
/// of the driver held. It may call intf_getData and intf_setData and no other call. The result is ignored; the string
/// lives only during the call.
///
/// - (instance, station, register name, address): the shown value at that polled address changed, or a write to it
///   ended (see intf_setData). `instance` is the first number of the property text; name and address are those of a
///   unit of the poll list. Single bits of kinds of bits are reported when they are written even if they are not
///   polled. A host that draws a value anew at each report of it always shows what intf_getData gives, as long as it
///   draws all values once after intf_initProperty and intf_addrMerge, which report nothing.
///
///   A value that spans several units is reported unit by unit, each under its own address: of a text in D100 to D119
///   each word that changed, of a 32-bit value in D100 and D101 either word or both. While the first of them is being
///   reported the others may still hold their old contents: such a value is whole once intf_dealRcvFrame has returned,
///   and that is when to draw it. A counter of "32C" is one unit, and whole in its report.
/// - (-1, -1, "-1", status): the condition read queued last has ended: status 0 when it was read, -1 when given up.
/// - (0, -1, "RWI", n): a recipe upload has filled word n of the recipe buffer, whatever it held before.
typedef int (*ValueChangeCallback)(int instance, int station, QString &regName, int address);

// ---- Identity and configuration ----

/// Writes the number of the protocol type through `type`: 0.
TANEK_VS_EXPORT void intf_getProtocolType(int *type);

/// The driver's version, "2.0.0.0".
#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif
TANEK_VS_EXPORT QString intf_getVersion();
#ifdef __clang__
#pragma clang diagnostic pop
#endif

/// Overwrites `text` with the default parameters, separated by commas: the number 0; baud rate, data bits, parity and
/// stop bits of the serial line; the numbers 1 and 0; network address and port; protocol name; the register kinds.
TANEK_VS_EXPORT void intf_getDriverParameter(QString &text);

/// Configures the driver, or resets it: drops the poll plan, all queues, the cache and any frame in flight, so that all
/// values show 0 again, without reports. The callback and the recipe plan stay.
///
/// A recipe transfer is asked for through the host's control block, by the byte below, and goes ahead of all other
/// work, a download before an upload, always from its first block. The driver clears the byte when the transfer has
/// ended, well or not. It went well when each of its transactions was accepted: intf_dealRcvFrame gave 1 for every
/// frame, the last one clearing the byte. It ended early when intf_dealRcvFrame gave 2 and the byte is clear, or when
/// intf_getSendFrame cleared it: no block is planned, or one cannot be sent. A host that clears the byte itself stops
/// the transfer behind the block in flight. Values that an upload brought before it ended early stay in the buffer.
///
/// @param hostControlBlock host's bytes, at least 60117 of them: byte 60115 set to 1 asks for a recipe download, byte
///        60116 for an upload. The driver sets the byte to 0 when the transfer has ended and touches no other byte.
/// @param unused not looked at.
/// @param recipeBuffer host's 16-bit words, as many as the recipe items reach.
/// @param result receives 0.
/// @param property Latin-1 text of five numbers separated by '#': instance, cache-only writes (not 0: intf_setData
///        changes the cache and sends nothing), an ignored number, retry limit (bad replies until a transaction is
///        given up), merge gap (units that merging bridges; also words per write, with eight times as many bits). A
///        part that is not a number counts as 0; with fewer than five parts the settings stay as they were.
///        A retry limit below 1 is one of 1, a merge gap below 1 cuts writes at 32 words or 256 bits. 32-bit counters
///        are cut between counters, whatever the gap; 16 is a good gap for nearly all poll lists.
/// @param hostMutex guards the two request bytes; the driver holds it only while it reads or clears them.
/// The three host objects stay the host's and must live until the next intf_initProperty or the unloading. Each may be
/// null; there are no recipe transfers then.
/// @return 1, always.
TANEK_VS_EXPORT int intf_initProperty(quint8 *hostControlBlock, void *unused, quint16 *recipeBuffer, int *result,
                                      const char *property, QMutex *hostMutex);

/// Overwrites `text` with the property page's mode, "0_0".
TANEK_VS_EXPORT void intf_getDriverPropertyPage(QString &text);

/// Stores the property page's text, which nothing in the driver reads.
TANEK_VS_EXPORT void intf_SetDriverPropertyPage(const QString &text);

/// Registers the callback in place of any earlier one; null: changes are not reported.
TANEK_VS_EXPORT void intf_setAddrValueChangeCallBack(ValueChangeCallback callback);

// ---- Register lists and address texts, for the host's editor ----

/// Appends the names of the kinds of bits (`type` 0) or of words (any other `type`) to `names`.
/// @return 1 for `type` 0 and 1, else 0.
TANEK_VS_EXPORT int intf_getRegListByType(int type, QStringList &names);

/// Appends five texts about a kind to `texts`: address format, lowest and highest address, data size ("0" bit, "1"
/// word, "2" double word) and access ("0" read, "1" read and write, "2" write). An unknown kind appends nothing.
/// @return 0, always.
TANEK_VS_EXPORT int intf_getRegDiscription(const QString &regName, QStringList &texts);

/// Checks an address text and a host count, and turns the text into the address number.
///
/// @param address receives the number as soon as the text has been read; it is valid only with result 0.
/// @param count at least 1; smaller counts are not refused, and make addresses above the highest valid.
/// @param wordAccess 0: the host wants bits; any other value: words.
/// @return 0 valid; 1 bits wanted of a word kind or words of a bit kind; 2 out of range; 3 unknown kind; 4 the text
///         cannot be read in the kind's format.
TANEK_VS_EXPORT int intf_checkAddrValidity(const QString &regName, const QString &addressText, int *address, int count,
                                           int wordAccess);

/// The same check for a data type and an access mode.
///
/// @param dataType what the host makes of the value, as a number of the host's own list of types. The driver tells
///        apart: -1, a single bit, which kinds of bits want and all others refuse; 1, 3, 5, 6 and 9, the only ones
///        that a 32-bit kind takes; all others, which are alike.
/// @param accessMode 1 and 2 write; any other reads.
/// @return as intf_checkAddrValidity, and 5: the data type does not fit a 32-bit kind; 6: writing to a read-only kind.
TANEK_VS_EXPORT int intf_checkAddr(const QString &regName, const QString &addressText, int *address, int dataType,
                                   int count, int accessMode);

/// Generates `number` addresses from `start` on, and appends their texts and numbers to the two vectors.
///
/// @param step distance in address numbers; -1: that of 16-bit values, -2: that of 32-bit values; less than 1: 1.
/// @return 1 all are in the kind's range; 2 some lay above it and were replaced by the highest address; 0 unknown
///         kind, or more addresses wanted than the largest kind has (416000): nothing is appended.
TANEK_VS_EXPORT int intf_multiCopy(const QString &regName, int start, int number, int step, QVector<QString> &texts,
                                   QVector<int> &numbers);

// ---- What to read ----

/// Replaces the poll list: the driver reads these addresses in turn and reports their changes. The host's list is
/// only read. Keys that make no sense are left out.
/// @return the number of read requests that one round of the list takes.
TANEK_VS_EXPORT int intf_addrMerge(const QList<KEY_ADDRESS> *keys);

/// Queues a one-time read, whose values go into the cache as those of the poll list do. When the one queued last has
/// ended, the callback receives -1, -1, "-1" and the status. One that is given up takes all others with it, and the
/// callback is told only if it was the one queued last. The queue holds 513 requests; a further one replaces the last.
/// @param key its `unitCode` -1 cuts a long read as writes of bits are cut, any other as writes of words.
/// @param hostContext carried in the requests, never interpreted.
/// @return 1, always.
TANEK_VS_EXPORT int intf_addConditionRead(const KEY_ADDRESS *key, std::uintptr_t hostContext);

/// Replaces the recipe plan by those of `items` that belong to this instance. The items' values lie in the recipe
/// buffer in the order of their addresses, without gaps where the addresses have none. The vector is only read.
/// @return the number of items that belong to this instance.
TANEK_VS_EXPORT int intf_setRcpAddress(const QVector<_RCP_VAR_PRO> *items);

// ---- Transactions ----

/// Copies the next frame to send into the host's record: the one in flight until its transaction ends, else that of the
/// next transaction. A write, condition read or recipe block that fits no frame is given up here, reports included.
/// @return 1 when there is a frame: send the first `frameLength` bytes of `frame`, then pass what comes back to
///         intf_dealRcvFrame; 0 when there is nothing to send now. The next call may have something: 0 also comes
///         after a give-up here, after ten writes in a row when the poll list is empty, and while the write at the head
///         is just being posted by another thread.
TANEK_VS_EXPORT int intf_getSendFrame(FRAME_PRO *hostFrame);

/// Takes the bytes that came back for the frame in flight: all of the reply, from its start to its two check
/// characters, or an empty array when none came (also after a frame with `replyLength` 0).
///
/// A reply begins with DLE STX (10 02) and ends with DLE ETX (10 03) and two more characters, the checksum in
/// hexadecimal digits; between them a byte of 10 is sent twice. Its byte 2, the first behind DLE STX, is the number of
/// the station that replied. The driver does not look at it: a reply of another station is the host's to drop.
///
/// @param reply is changed: doubled DLE bytes are reduced to one.
/// @param description receives the transaction in words, such as "1#D100(10)", with ",error code:3" behind it when
///        the controller refused; empty when no frame is in flight.
/// @return 1 accepted; 8 refused, the same frame goes out again; 2 refused for the last time, the transaction is given
///         up; 0 no frame is in flight and the bytes were ignored.
TANEK_VS_EXPORT int intf_dealRcvFrame(QByteArray &reply, QString &description);

// ---- Values ----

/// Copies shown values out of the cache: what the host wrote while that write is outstanding, else what was read
/// last, zeros for what was never read.
///
/// Zeros that were read and zeros that were not look alike, and the first reading of a zero is no change and not
/// reported. A host that has to know looks at the transactions: a value was read once intf_dealRcvFrame has given 1 for
/// a frame with a `readCount` whose `variable` (station, register name, address, count) covers it. Bits inside words
/// are read by their words, "D_bit" 1605 by "D" 100.
///
/// @param count host count.
/// @param values receives one byte (0 or 1) per bit, two bytes per word, four per counter, least significant first;
///        an odd count of "32C" leaves its last word out.
/// @return 1, always.
TANEK_VS_EXPORT int intf_getData(int station, const QString &regName, int address, int count, quint8 *values);

/// Shows the values at once, reports what that changes, and queues them to be written. A waiting write to exactly the
/// same place is replaced. The queue holds 513 requests; a further one takes the place of the last, which is given up.
///
/// A write that is given up is reported, and what was read before is shown again. An acceptance is reported where it
/// changes what is shown, and of bits inside words always, once the last write of the word has ended.
/// `variable.hostContext` of the frame tells which write a transaction belongs to.
///
/// @param count host count, at most 1024 bits or 512 words; a larger write changes nothing (with cache-only writes,
///        which queue none, any count that the kind holds)
/// @param values laid out as for intf_getData, a bit being on with 1 and off with any other byte; only read.
/// @param hostContext carried in the requests, never interpreted.
/// @return 1, always.
TANEK_VS_EXPORT int intf_setData(int station, const QString &regName, int address, int count, const quint8 *values,
                                 std::uintptr_t hostContext);
}

#endif

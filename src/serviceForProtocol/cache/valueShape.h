/// How the values of a register kind lie on cache units.
///
/// Flagging, serving, mirroring and settling are loops over a shape; what a kind's widths mean is decided here alone.
/// A host counts 32-bit values as two 16-bit words, all others one by one.
///
/// | value width | unit width   | name   | units of a value | bytes of a unit | flags on units |
/// |-------------|--------------|--------|------------------|-----------------|----------------|
/// | 32          | not 8 or 16  |        | 1                | 4               | 0              |
/// | 32          | 16           |        | 2, low first     | 2               | 1, 2           |
/// | 32          | 8            |        | 4, lowest first  | 1               | 3, 4, 5, 6     |
/// | 16          | not 8        |        | 1                | 2               | 0              |
/// | 16          | 8            |        | 2, low first     | 1               | 1, 2           |
/// | 1 or 8      |              |        | 1                | 1               | 0              |
/// | 1 or 8      | 16           | `_bit` | a bit of a unit  | 2               | a monitor bit  |
/// | 1 or 8      | 8            | `_bit` | a bit of a unit  | 1               | a monitor bit  |
#ifndef TANEK_VS_VALUE_SHAPE_H
#define TANEK_VS_VALUE_SHAPE_H

#include "model/dataArea.h"

#include <QtCore/QString>

struct ValueShape {
    /// 0: the kind has no shape and nothing is done for it.
    int unitsPerValue = 0;
    int bytesPerUnit = 0;
    /// Not 0: addresses are those of single bits, so many to a unit.
    int bitsPerUnit = 0;
    /// Flag of a value's first unit; the following units have the following flags.
    int firstFlag = 0;
    /// What the host counts for one value.
    int hostCountPerValue = 1;
    /// The kind is cached under its whole name, and its writes are reported whether it is polled or not.
    bool isPlain = false;
    /// The name under which the units are cached.
    QString keyName;

    bool holdsBits() const { return bitsPerUnit != 0; }

    /// Units that a host count of whole values covers.
    qint64 unitsOf(int hostCount) const { return static_cast<qint64>(hostCount / hostCountPerValue) * unitsPerValue; }
};

/// The shape for these widths, whether or not a register kind has them.
ValueShape valueShape(int valueWidth, int unitWidth, const QString &regName);

/// The shape of a register kind; none for an unknown name.
ValueShape shapeOfKind(const QString &regName);

/// Where a single bit lies.
struct BitPlace {
    int unit;
    int bit;
};

/// Division and remainder truncate toward zero.
BitPlace placeOfBit(const ValueShape &shape, int bitAddress);

/// What the host sees of a unit: the written bytes while the write is outstanding, else those read.
const quint8 *shownBytes(const _DATA_ &area);

/// A unit's bytes as a number.
int unitContents(const ValueShape &shape, const quint8 *bytes);

#endif

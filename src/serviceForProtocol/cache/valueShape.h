/// How the values of a register kind lie on cache units.
///
/// Flagging, showing, mirroring and settling are loops over a shape; what a kind's widths mean is decided here alone.
/// A host counts 32-bit values as two 16-bit words, all others one by one.
///
/// | value width | unit width   | bits in units | units of a value | bytes of a unit | flags on units |
/// |-------------|--------------|---------------|------------------|-----------------|----------------|
/// | 32          | not 8 or 16  |               | 1                | 4               | 0              |
/// | 32          | 16           |               | 2, low first     | 2               | 1, 2           |
/// | 32          | 8            |               | 4, lowest first  | 1               | 3, 4, 5, 6     |
/// | 16          | not 8        |               | 1                | 2               | 0              |
/// | 16          | 8            |               | 2, low first     | 1               | 1, 2           |
/// | 1 or 8      |              | no            | 1                | 1               | 0              |
/// | 1 or 8      | 16           | yes           | a bit of a unit  | 2               | a monitor bit  |
/// | 1 or 8      | 8            | yes           | a bit of a unit  | 1               | a monitor bit  |
#ifndef TANEK_VS_VALUE_SHAPE_H
#define TANEK_VS_VALUE_SHAPE_H

#include "model/registerTable.h"

#include <QtCore/QtGlobal>

struct ValueShape {
    /// 0: there is no such shape and nothing is done for it.
    int unitsPerValue = 0;
    int bytesPerUnit = 0;
    /// Not 0: addresses are those of single bits, so many to a unit.
    int bitsPerUnit = 0;
    /// Flag of a value's first unit; the following units have the following flags.
    int firstFlag = 0;
    /// What the host counts for one value.
    int hostCountPerValue = 1;
    /// Writes are reported whether the unit is polled or not.
    bool isPlain = false;

    bool holdsBits() const { return bitsPerUnit != 0; }
};

/// The shape for these widths, whether or not a register kind has them.
ValueShape valueShape(int valueWidth, int unitWidth, bool isBitInUnit);

/// The shape of the values that a host reads and writes.
ValueShape shapeOfValues(const RegisterKind &kind);

/// The shape of the units that a read brings: whole ones, also where the host's addresses are those of bits.
ValueShape shapeOfUnits(const RegisterKind &kind);

#endif

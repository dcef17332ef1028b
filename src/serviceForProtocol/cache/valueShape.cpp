#include "serviceForProtocol/cache/valueShape.h"

#include "serviceForProtocol/cache/changeReports.h"
#include "tanek_vs/registerNames.h"

namespace {

ValueShape wholeUnits(int unitsPerValue, int bytesPerUnit, int firstFlag)
{
    ValueShape shape;
    shape.unitsPerValue = unitsPerValue;
    shape.bytesPerUnit = bytesPerUnit;
    shape.firstFlag = firstFlag;
    return shape;
}

ValueShape shapeOf32BitValues(int unitWidth)
{
    ValueShape shape = wholeUnits(1, 4, 0);
    if (unitWidth == 16)
        shape = wholeUnits(2, 2, 1);
    else if (unitWidth == 8)
        shape = wholeUnits(4, 1, 3);
    shape.hostCountPerValue = 2;
    return shape;
}

ValueShape shapeOf16BitValues(int unitWidth) { return unitWidth == 8 ? wholeUnits(2, 1, 1) : wholeUnits(1, 2, 0); }

ValueShape shapeOfBitsInUnits(int unitWidth)
{
    if (unitWidth != 16 && unitWidth != 8)
        return ValueShape();
    ValueShape shape = wholeUnits(1, unitWidth / 8, 0);
    shape.bitsPerUnit = unitWidth;
    return shape;
}

ValueShape shapeOfPlainUnits()
{
    ValueShape shape = wholeUnits(1, 1, 0);
    shape.isPlain = true;
    return shape;
}

ValueShape shapeOfWidths(int valueWidth, int unitWidth, bool bitInUnit)
{
    switch (valueWidth) {
    case 32:
        return shapeOf32BitValues(unitWidth);
    case 16:
        return shapeOf16BitValues(unitWidth);
    case 8:
    case 1:
        return bitInUnit ? shapeOfBitsInUnits(unitWidth) : shapeOfPlainUnits();
    default:
        return ValueShape();
    }
}

} // namespace

ValueShape valueShape(int valueWidth, int unitWidth, const QString &regName)
{
    ValueShape shape = shapeOfWidths(valueWidth, unitWidth, namesBitInWord(regName));
    shape.keyName = shape.isPlain ? regName : nameOfWords(regName);
    return shape;
}

ValueShape shapeOfKind(const QString &regName)
{
    const int kind = getIndexFromRegName(regName);
    return kind < 0 ? ValueShape() : valueShape(valueWidthOf(kind), unitWidthOf(kind), regName);
}

BitPlace placeOfBit(const ValueShape &shape, int bitAddress)
{
    const BitPlace place = {bitAddress / shape.bitsPerUnit, bitAddress % shape.bitsPerUnit};
    return place;
}

const quint8 *shownBytes(const _DATA_ &area) { return area.writePending ? area.writeValue : area.readValue; }

int unitContents(const ValueShape &shape, const quint8 *bytes)
{
    if (shape.bytesPerUnit == 4)
        return uchar2int32(bytes[0], bytes[1], bytes[2], bytes[3]);
    return shape.bytesPerUnit == 2 ? uchar2int16(bytes[0], bytes[1]) : bytes[0];
}

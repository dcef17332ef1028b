#include "serviceForProtocol/cache/valueShape.h"

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

} // namespace

ValueShape valueShape(int valueWidth, int unitWidth, bool isBitInUnit)
{
    switch (valueWidth) {
    case 32:
        return shapeOf32BitValues(unitWidth);
    case 16:
        return shapeOf16BitValues(unitWidth);
    case 8:
    case 1:
        return isBitInUnit ? shapeOfBitsInUnits(unitWidth) : shapeOfPlainUnits();
    default:
        return ValueShape();
    }
}

ValueShape shapeOfValues(const RegisterKind &kind)
{
    return valueShape(kind.valueWidth, kind.unitWidth, kind.isBitInWord);
}

ValueShape shapeOfUnits(const RegisterKind &kind) { return valueShape(kind.unitWidth, kind.unitWidth, false); }

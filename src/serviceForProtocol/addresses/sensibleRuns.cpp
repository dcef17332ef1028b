#include "serviceForProtocol/addresses/sensibleRuns.h"

#include "model/deviceUnits.h"

#include <QtCore/QtGlobal>

#include <algorithm>

int hostUnitsOf(const RegisterKind *kind)
{
    if (!kind)
        return 0;
    const int numbers = kind->highest - kind->lowest + 1;
    return kind->holdsBits() ? numbers : numbers * kind->unitWidth / WORD_WIDTH;
}

int hostUnitsOfLargestKind()
{
    int most = 0;
    for (const RegisterKind &kind : REGISTER_KINDS)
        most = std::max(most, hostUnitsOf(&kind));
    return most;
}

bool isSensible(const RegisterKind *kind, int address, int count)
{
    if (address < 0 || count < 1 || count > hostUnitsOf(kind))
        return false;
    const int numbers = kind->holdsBits() ? count : std::max(unitsOfWords(count, kind->unitWidth), 1);
    return static_cast<qint64>(address) + numbers - 1 <= kind->highestInRequest;
}

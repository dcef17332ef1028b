/// What the fuzz targets share: a failure that the fuzzer notices, and arguments worth trying.
#ifndef FUZZ_SUPPORT_H
#define FUZZ_SUPPORT_H

#include "support/wire.h"

#include <QtCore/QString>

#include <fuzzer/FuzzedDataProvider.h>

/// Ends the run with a report when `holds` is false.
inline void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// One of the seventeen kinds, or now and then any text.
inline QString anyRegName(FuzzedDataProvider &input)
{
    static const char *const KINDS[] = {"32C", "C",  "T",     "R",     "SD",     "D",         "X",      "Y",        "M",
                                        "S",   "SM", "D_bit", "R_bit", "T_Coil", "T_Contact", "C_Coil", "C_Contact"};
    const std::size_t choice = input.ConsumeIntegralInRange<std::size_t>(0, std::size(KINDS) + 1);
    if (choice < std::size(KINDS))
        return QString::fromLatin1(KINDS[choice]);
    return QString::fromStdString(input.ConsumeRandomLengthString(12));
}

/// Mostly small, sometimes near a limit, sometimes anything.
inline int anyNumber(FuzzedDataProvider &input)
{
    switch (input.ConsumeIntegralInRange<int>(0, 7)) {
    case 0:
        return input.ConsumeIntegral<int>();
    case 1:
        return input.PickValueInArray({-1, 0, 8000, 8255, 9000, 9999, 26000, 65535, 65536, 143984, 416000, 1 << 20});
    case 2:
        return input.ConsumeIntegralInRange<int>(0, 70000);
    default:
        return input.ConsumeIntegralInRange<int>(0, 80);
    }
}

#endif

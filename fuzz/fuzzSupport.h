/// What the fuzz targets share: arguments worth trying.
#ifndef FUZZ_SUPPORT_H
#define FUZZ_SUPPORT_H

#include "support/host.h"
#include "support/kinds.h"
#include "support/require.h"

#include <fuzzer/FuzzedDataProvider.h>

/// One of the seventeen kinds, or now and then any text.
inline std::string anyRegName(FuzzedDataProvider &input)
{
    const std::size_t choice = input.ConsumeIntegralInRange<std::size_t>(0, kinds().size() + 1);
    return choice < kinds().size() ? kinds()[choice].name : input.ConsumeRandomLengthString(12);
}

/// Mostly small, sometimes near a limit, sometimes anything.
inline int anyNumber(FuzzedDataProvider &input)
{
    switch (input.ConsumeIntegralInRange<int>(0, 7)) {
    case 0:
        return input.ConsumeIntegral<int>();
    case 1:
        return input.PickValueInArray(
            {-1, 0, 8000, 8255, 9000, 9999, 26000, 65535, 65536, 143984, 416000, 999999, 1000000, 1599999, 1600000});
    case 2:
        return input.ConsumeIntegralInRange<int>(0, 70000);
    default:
        return input.ConsumeIntegralInRange<int>(0, 80);
    }
}

#endif

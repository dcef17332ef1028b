/// Holds the records of the boundary to their layout: a host compiled long ago must find every field where it was.
#include <tanek_vs/records.h>

#include <QtCore/QString>

#include <cstddef>

namespace {

/// Offset of a field that has `strings` QStrings before it, which differ in size between Qt versions, and otherwise
/// lies at `on32` or `on64` in a 32-bit or 64-bit process.
constexpr std::size_t at(std::size_t strings, std::size_t on32, std::size_t on64)
{
    return strings * sizeof(QString) + (sizeof(void *) == 4 ? on32 : on64);
}

#define FIELD_LIES_AT(record, field, strings, on32, on64)                                                              \
    static_assert(offsetof(record, field) == at(strings, on32, on64), #record "." #field " has moved")

FIELD_LIES_AT(VARIABLE, hostContext, 0, 0, 0);
FIELD_LIES_AT(VARIABLE, station, 0, 4, 8);
FIELD_LIES_AT(VARIABLE, regName, 0, 8, 16);
FIELD_LIES_AT(VARIABLE, address, 1, 8, 16);
FIELD_LIES_AT(VARIABLE, count, 1, 12, 20);
FIELD_LIES_AT(VARIABLE, data, 1, 16, 24);
static_assert(sizeof(VARIABLE) == at(1, 1040, 1048), "VARIABLE has changed its size");

FIELD_LIES_AT(FRAME_PRO, frame, 0, 0, 0);
FIELD_LIES_AT(FRAME_PRO, frameLength, 0, 1024, 1024);
FIELD_LIES_AT(FRAME_PRO, replyLength, 0, 1028, 1028);
FIELD_LIES_AT(FRAME_PRO, dataOffset, 0, 1032, 1032);
FIELD_LIES_AT(FRAME_PRO, readCount, 0, 1036, 1036);
FIELD_LIES_AT(FRAME_PRO, reserved, 0, 1040, 1040);
FIELD_LIES_AT(FRAME_PRO, variable, 0, 1044, 1048);
static_assert(sizeof(FRAME_PRO) == at(1, 2084, 2096), "FRAME_PRO has changed its size");

FIELD_LIES_AT(KEY_ADDRESS, hostLabel, 0, 0, 0);
FIELD_LIES_AT(KEY_ADDRESS, hostTag, 1, 0, 0);
FIELD_LIES_AT(KEY_ADDRESS, bufferOffset, 1, 4, 4);
FIELD_LIES_AT(KEY_ADDRESS, station, 1, 8, 8);
FIELD_LIES_AT(KEY_ADDRESS, regName, 1, 12, 16);
FIELD_LIES_AT(KEY_ADDRESS, hostNote, 2, 12, 16);
FIELD_LIES_AT(KEY_ADDRESS, address, 3, 12, 16);
FIELD_LIES_AT(KEY_ADDRESS, unitCode, 3, 16, 20);
FIELD_LIES_AT(KEY_ADDRESS, count, 3, 20, 24);
FIELD_LIES_AT(KEY_ADDRESS, data, 3, 24, 28);
static_assert(sizeof(KEY_ADDRESS) == at(3, 1048, 1056), "KEY_ADDRESS has changed its size");

FIELD_LIES_AT(_RCP_VAR_PRO, instanceId, 0, 0, 0);
FIELD_LIES_AT(_RCP_VAR_PRO, station, 0, 4, 4);
FIELD_LIES_AT(_RCP_VAR_PRO, regName, 0, 8, 8);
FIELD_LIES_AT(_RCP_VAR_PRO, address, 1, 8, 8);
FIELD_LIES_AT(_RCP_VAR_PRO, count, 1, 12, 12);
FIELD_LIES_AT(_RCP_VAR_PRO, bufferOffset, 1, 16, 16);
FIELD_LIES_AT(_RCP_VAR_PRO, hostTag, 1, 20, 20);
static_assert(sizeof(_RCP_VAR_PRO) == at(1, 24, 24), "_RCP_VAR_PRO has changed its size");

} // namespace

#include "work.h"

const std::vector<WorkRow> &allWork()
{
    static const std::vector<WorkRow> ROWS = {
        {"unchanged", "a transaction of 32 words, nothing changed", [] { return pollWork(WORDS_PER_BLOCK, false); }},
        {"changed", "a transaction of 32 words, all changed and reported",
         [] { return pollWork(WORDS_PER_BLOCK, true); }},
        {"read", "`intf_getData` of 32 words", [] { return readWork(); }},
        {"write", "one word posted, sent and acknowledged", [] { return writeWork(); }},
        {"libmodbus", "libmodbus: request and reply of 32 words, RTU", [] { return modbusWork(); }},
        {"serialbus", "Qt SerialBus: request and reply of 32 words, PDU alone", [] { return serialBusWork(); }},
    };
    return ROWS;
}

/// The nineteen calls as a table, so that one host serves programs that link the driver and ones that load it.
#ifndef TESTS_CALLS_H
#define TESTS_CALLS_H

#include <tanek_vs/driver.h>

#define EACH_EXPORTED_CALL(DO)                                                                                         \
    DO(intf_getProtocolType)                                                                                           \
    DO(intf_getVersion)                                                                                                \
    DO(intf_getDriverParameter)                                                                                        \
    DO(intf_initProperty)                                                                                              \
    DO(intf_getDriverPropertyPage)                                                                                     \
    DO(intf_SetDriverPropertyPage)                                                                                     \
    DO(intf_getRegListByType)                                                                                          \
    DO(intf_setAddrValueChangeCallBack)                                                                                \
    DO(intf_getRegDiscription)                                                                                         \
    DO(intf_checkAddrValidity)                                                                                         \
    DO(intf_checkAddr)                                                                                                 \
    DO(intf_getSendFrame)                                                                                              \
    DO(intf_dealRcvFrame)                                                                                              \
    DO(intf_addrMerge)                                                                                                 \
    DO(intf_addConditionRead)                                                                                          \
    DO(intf_setRcpAddress)                                                                                             \
    DO(intf_multiCopy)                                                                                                 \
    DO(intf_getData)                                                                                                   \
    DO(intf_setData)

struct Calls {
#define DECLARE_CALL(name) decltype(&::name) name; // NOLINT(bugprone-macro-parentheses): declares the name
    EACH_EXPORTED_CALL(DECLARE_CALL)
#undef DECLARE_CALL
};

/// Those of the driver that the program is linked with; a template so that only who uses it is linked with them.
template <typename Table = Calls> Table linkedCalls()
{
#define LINKED_CALL(name) &::name,
    return Table{EACH_EXPORTED_CALL(LINKED_CALL)};
#undef LINKED_CALL
}

#endif

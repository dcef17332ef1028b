/// The driver, loaded the way a panel loads it: by path, its calls looked up by name.
#ifndef VSHOST_DRIVER_LIBRARY_H
#define VSHOST_DRIVER_LIBRARY_H

#include "tanek_vs/driver.h"

#include <string>

namespace vshost {

/// The nineteen calls.
struct DriverCalls {
    decltype(&intf_getProtocolType) getProtocolType = nullptr;
    decltype(&intf_getVersion) getVersion = nullptr;
    decltype(&intf_getDriverParameter) getDriverParameter = nullptr;
    decltype(&intf_initProperty) initProperty = nullptr;
    decltype(&intf_getDriverPropertyPage) getDriverPropertyPage = nullptr;
    decltype(&intf_SetDriverPropertyPage) setDriverPropertyPage = nullptr;
    decltype(&intf_setAddrValueChangeCallBack) setAddrValueChangeCallBack = nullptr;
    decltype(&intf_getRegListByType) getRegListByType = nullptr;
    decltype(&intf_getRegDiscription) getRegDiscription = nullptr;
    decltype(&intf_checkAddrValidity) checkAddrValidity = nullptr;
    decltype(&intf_checkAddr) checkAddr = nullptr;
    decltype(&intf_multiCopy) multiCopy = nullptr;
    decltype(&intf_addrMerge) addrMerge = nullptr;
    decltype(&intf_addConditionRead) addConditionRead = nullptr;
    decltype(&intf_setRcpAddress) setRcpAddress = nullptr;
    decltype(&intf_getSendFrame) getSendFrame = nullptr;
    decltype(&intf_dealRcvFrame) dealRcvFrame = nullptr;
    decltype(&intf_getData) getData = nullptr;
    decltype(&intf_setData) setData = nullptr;
};

/// Owns the loaded library; the calls are valid as long as it lives. All of the driver's state is in the library, so
/// a process loads it once.
class DriverLibrary {
public:
    /// @param path the library; empty: it is looked for next to the program, in the folders where a build or an
    ///        installation has it, and at last where the system's loader looks.
    /// Throws std::runtime_error that says what was tried, or which call is missing.
    explicit DriverLibrary(const std::string &path);
    ~DriverLibrary();
    DriverLibrary(const DriverLibrary &) = delete;
    DriverLibrary &operator=(const DriverLibrary &) = delete;

    const DriverCalls &calls() const { return m_calls; }
    const std::string &path() const { return m_path; }

private:
    void open(const std::string &path);
    void lookUpCalls();
    template <typename Call> void lookUp(Call &call, const char *name);

    void *m_handle = nullptr;
    std::string m_path;
    DriverCalls m_calls;
};

} // namespace vshost

#endif

#include "driverLibrary.h"

#include <dlfcn.h>
#include <filesystem>
#include <stdexcept>
#include <vector>

namespace vshost {

namespace {

namespace fs = std::filesystem;

const char LIBRARY_NAME[] = "libtanek_vs.so";

/// Where the library may lie, seen from the folder of the program: beside it, installed, and in a build tree.
const char *const PLACES[] = {".", "../lib", "../lib64", "../../src"};

std::string systemError()
{
    const char *const text = dlerror();
    return text ? text : "unknown error";
}

/// The first existing file of the usual places, else the bare name, which the system's loader looks up.
std::string usualPath()
{
    std::error_code failed;
    const fs::path program = fs::read_symlink("/proc/self/exe", failed);
    for (const char *place : PLACES) {
        const fs::path candidate = program.parent_path() / place / LIBRARY_NAME;
        if (!failed && fs::exists(candidate))
            return fs::weakly_canonical(candidate).string();
    }
    return LIBRARY_NAME;
}

} // namespace

DriverLibrary::DriverLibrary(const std::string &path)
{
    open(path.empty() ? usualPath() : path);
    try {
        lookUpCalls();
    } catch (...) {
        dlclose(m_handle);
        throw;
    }
}

DriverLibrary::~DriverLibrary() { dlclose(m_handle); }

void DriverLibrary::open(const std::string &path)
{
    // A name without a folder would be looked up by the system's loader alone, though the user means a file.
    const bool isFile = path != LIBRARY_NAME || fs::exists(path);
    m_path = isFile ? fs::absolute(path).string() : path;
    m_handle = dlopen(m_path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!m_handle)
        throw std::runtime_error("the driver cannot be loaded: " + systemError() + " (name it with --driver)");
}

template <typename Call> void DriverLibrary::lookUp(Call &call, const char *name)
{
    call = reinterpret_cast<Call>(dlsym(m_handle, name));
    if (!call)
        throw std::runtime_error(m_path + " is not a driver: it has no " + name);
}

void DriverLibrary::lookUpCalls()
{
    lookUp(m_calls.getProtocolType, "intf_getProtocolType");
    lookUp(m_calls.getVersion, "intf_getVersion");
    lookUp(m_calls.getDriverParameter, "intf_getDriverParameter");
    lookUp(m_calls.initProperty, "intf_initProperty");
    lookUp(m_calls.getDriverPropertyPage, "intf_getDriverPropertyPage");
    lookUp(m_calls.setDriverPropertyPage, "intf_SetDriverPropertyPage");
    lookUp(m_calls.setAddrValueChangeCallBack, "intf_setAddrValueChangeCallBack");
    lookUp(m_calls.getRegListByType, "intf_getRegListByType");
    lookUp(m_calls.getRegDiscription, "intf_getRegDiscription");
    lookUp(m_calls.checkAddrValidity, "intf_checkAddrValidity");
    lookUp(m_calls.checkAddr, "intf_checkAddr");
    lookUp(m_calls.multiCopy, "intf_multiCopy");
    lookUp(m_calls.addrMerge, "intf_addrMerge");
    lookUp(m_calls.addConditionRead, "intf_addConditionRead");
    lookUp(m_calls.setRcpAddress, "intf_setRcpAddress");
    lookUp(m_calls.getSendFrame, "intf_getSendFrame");
    lookUp(m_calls.dealRcvFrame, "intf_dealRcvFrame");
    lookUp(m_calls.getData, "intf_getData");
    lookUp(m_calls.setData, "intf_setData");
}

} // namespace vshost

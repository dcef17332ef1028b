/// The library as a panel uses it: loaded at run time by a program that knows the records and nineteen names.
#include "support/host.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <sstream>

namespace {

/// The library, from loading to unloading.
class Library {
public:
    Library() : m_handle(dlopen(TANEK_VS_LIBRARY, RTLD_NOW | RTLD_LOCAL)) { EXPECT_TRUE(m_handle) << dlerror(); }
    ~Library() { dlclose(m_handle); }
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

    Calls calls() const
    {
#define LOADED_CALL(name) reinterpret_cast<decltype(&::name)>(dlsym(m_handle, #name)),
        return Calls{EACH_EXPORTED_CALL(LOADED_CALL)};
#undef LOADED_CALL
    }

private:
    void *m_handle;
};

std::string outputOf(const std::string &command)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command.c_str(), "r"), pclose);
    std::string output;
    char buffer[256];
    while (pipe && fgets(buffer, sizeof buffer, pipe.get()))
        output += buffer;
    return output;
}

TEST(Boundary, exportsNineteenNamesAndNothingElse)
{
    std::istringstream symbols(outputOf(NM_COMMAND " -D --defined-only " TANEK_VS_LIBRARY));
    std::set<std::string> exported;
    std::string address, type, name;
    while (symbols >> address >> type >> name)
        exported.insert(name);
#define CALL_NAME(name) #name,
    EXPECT_EQ(exported, (std::set<std::string>{EACH_EXPORTED_CALL(CALL_NAME)}));
#undef CALL_NAME
    EXPECT_EQ(exported.size(), 19U);
}

TEST(Boundary, loadsUnloadsAndStartsAfresh)
{
    for (int i = 0; i < 3; ++i) {
        {
            const Library library;
            const Calls calls = library.calls();
            // The names of the kinds come from tables that must be built before the state that copies them.
            QString parameter;
            calls.intf_getDriverParameter(parameter);
            EXPECT_TRUE(parameter.endsWith(qt(",T_Coil,T_Contact,C_Coil,C_Contact")));
            EXPECT_EQ(plain(calls.intf_getVersion()), "2.0.0.0");
            Host host(calls);
            EXPECT_EQ(host.word(0), 0) << "a fresh cache";
            host.writes("D", 0, 1, words({7}));
        }
        void *handle = dlopen(TANEK_VS_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
        EXPECT_FALSE(handle);
    }
}

} // namespace

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

class Session : public ::testing::Test {
protected:
    /// The body of the next request, answered by that reply.
    std::string exchanges(const Bytes &answer, int result = 1)
    {
        if (host.sends() == "nothing")
            return "nothing";
        EXPECT_EQ(host.receives(answer), result);
        const Bytes sent = host.sentBytes();
        return hexText(Bytes(sent.begin() + 2, sent.end() - 4));
    }

    Library library;
    Calls calls = library.calls();
    Host host{calls};
};

TEST_F(Session, runsFromThePollListToARecipe)
{
    host.configures(2, 16);
    EXPECT_EQ(host.polls("D 100 2, M 0 3"), 2);
    EXPECT_EQ(exchanges({}, 8), "01 07 00 20 a0 00 01 00 02 00");
    EXPECT_EQ(host.description(), "1#D100(2)");
    EXPECT_EQ(exchanges(reply(words({0x0110, 5}))), "01 07 00 20 a0 00 01 00 02 00");
    EXPECT_EQ(host.reports(), "D 100, D 101");
    EXPECT_EQ(host.word(100), 0x0110);
    EXPECT_EQ(exchanges(reply({0x05})), "01 07 00 21 92 00 00 00 03 00");
    EXPECT_EQ(host.reports(), "M 0, M 2");

    host.writes("D", 100, 1, words({7}));
    EXPECT_EQ(host.word(100), 7);
    EXPECT_EQ(host.reports(), "D 100");
    EXPECT_EQ(exchanges(refusal(2), 8), "01 09 00 28 a0 00 01 00 01 00 07 00");
    EXPECT_EQ(host.description(), "1#D100(1),error code:2");
    EXPECT_EQ(exchanges(refusal(2), 2), "01 09 00 28 a0 00 01 00 01 00 07 00");
    EXPECT_EQ(host.word(100), 0x0110);
    EXPECT_EQ(host.reports(), "D 100");

    host.asksForCondition(key("D_bit", 1605, 1));
    EXPECT_EQ(exchanges(reply(words({0x20}))), "01 07 00 20 a0 00 01 00 01 00");
    EXPECT_EQ(host.reports(), "D 100, condition 0");

    EXPECT_EQ(host.plansRecipe("R 0 1 from 0, R 1 1 from 1"), 2);
    host.recipeBuffer[1] = 0x0302;
    host.asks(DOWNLOAD_BYTE);
    EXPECT_EQ(exchanges(acknowledgement()), "01 0b 00 28 a2 00 00 00 02 00 00 00 02 03");
    EXPECT_FALSE(host.isAsked(DOWNLOAD_BYTE));
    host.asks(UPLOAD_BYTE);
    EXPECT_EQ(exchanges(reply(words({8, 9}))), "01 07 00 20 a2 00 00 00 02 00");
    EXPECT_EQ(host.recipeBuffer[1], 9);
    EXPECT_FALSE(host.isAsked(UPLOAD_BYTE));
    EXPECT_EQ(host.reports(), "RWI 0, RWI 1");
}

} // namespace

/// The library as a panel uses it: loaded at run time by a program that knows the records and nineteen names.
#include "support/wire.h"
#include "tanek_vs/driver.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

const char *const EXPORTED_NAMES[] = {
    "intf_getProtocolType",
    "intf_getVersion",
    "intf_getDriverParameter",
    "intf_initProperty",
    "intf_getDriverPropertyPage",
    "intf_SetDriverPropertyPage",
    "intf_getRegListByType",
    "intf_setAddrValueChangeCallBack",
    "intf_getRegDiscription",
    "intf_checkAddrValidity",
    "intf_checkAddr",
    "intf_getSendFrame",
    "intf_dealRcvFrame",
    "intf_addrMerge",
    "intf_addConditionRead",
    "intf_setRcpAddress",
    "intf_multiCopy",
    "intf_getData",
    "intf_setData",
};

/// The library, from loading to unloading.
class Library {
public:
    Library() : m_handle(dlopen(TANEK_VS_LIBRARY, RTLD_NOW | RTLD_LOCAL)) { EXPECT_TRUE(m_handle) << dlerror(); }
    ~Library() { dlclose(m_handle); }
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

    template <typename Function> Function *call(const char *name) const
    {
        return reinterpret_cast<Function *>(dlsym(m_handle, name));
    }

private:
    void *m_handle;
};

#define CALL(library, name) (library).call<decltype(name)>(#name)

bool isLoaded()
{
    void *handle = dlopen(TANEK_VS_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    if (handle)
        dlclose(handle);
    return handle != nullptr;
}

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
    EXPECT_EQ(exported, (std::set<std::string>(std::begin(EXPORTED_NAMES), std::end(EXPORTED_NAMES))));
}

TEST(Boundary, loadsUnloadsAndStartsAfresh)
{
    for (int i = 0; i < 3; ++i) {
        {
            const Library library;
            for (const char *name : EXPORTED_NAMES)
                EXPECT_NE(library.call<void()>(name), nullptr) << name;
            // The names of the kinds come from tables that must be built before the state that copies them.
            QString parameter;
            CALL(library, intf_getDriverParameter)(parameter);
            EXPECT_TRUE(parameter.endsWith(QString::fromLatin1(",T_Coil,T_Contact,C_Coil,C_Contact")));
            EXPECT_EQ(CALL(library, intf_getVersion)().toStdString(), "2.0.0.0");

            quint8 value[2] = {9, 9};
            const QString name = QString::fromLatin1("D");
            CALL(library, intf_getData)(1, name, 0, 1, value);
            EXPECT_EQ(value[0], 0) << "a fresh cache";
            value[0] = 7;
            CALL(library, intf_setData)(1, name, 0, 1, value, 0);
        }
        EXPECT_FALSE(isLoaded());
    }
}

std::vector<std::string> reported;

int noteReport(int instance, int station, QString &regName, int address)
{
    std::ostringstream report;
    report << instance << " " << station << " " << regName.toStdString() << " " << address;
    reported.push_back(report.str());
    return 0;
}

/// A host's objects around the loaded library, and its side of the link.
class Session : public ::testing::Test {
protected:
    void SetUp() override
    {
        reported.clear();
        CALL(library, intf_setAddrValueChangeCallBack)(&noteReport);
        int result = -1;
        CALL(library, intf_initProperty)
        (controlBlock.data(), nullptr, recipeBuffer.data(), &result, "3#0#0#2#16", &hostMutex);
        EXPECT_EQ(result, 0);
    }

    static KEY_ADDRESS key(const char *regName, int address, int count)
    {
        KEY_ADDRESS wanted;
        wanted.station = 1;
        wanted.regName = QString::fromLatin1(regName);
        wanted.address = address;
        wanted.count = count;
        return wanted;
    }

    /// The body of the next request, answered by that reply.
    std::string exchanges(const Bytes &answer, int result = 1)
    {
        FRAME_PRO frame;
        if (CALL(library, intf_getSendFrame)(&frame) != 1)
            return "nothing";
        QByteArray bytes = arrayOf(answer);
        EXPECT_EQ(CALL(library, intf_dealRcvFrame)(bytes, description), result);
        return hexText(Bytes(frame.frame + 2, frame.frame + frame.frameLength - 4));
    }

    int word(int address)
    {
        quint8 value[2] = {};
        CALL(library, intf_getData)(1, QString::fromLatin1("D"), address, 1, value);
        return value[0] + 256 * value[1];
    }

    std::vector<std::string> reports() { return std::exchange(reported, {}); }

    Library library;
    std::vector<quint8> controlBlock = std::vector<quint8>(60117);
    std::vector<quint16> recipeBuffer = std::vector<quint16>(16);
    QMutex hostMutex;
    QString description;
};

using Reports = std::vector<std::string>;

TEST_F(Session, runsFromThePollListToARecipe)
{
    QList<KEY_ADDRESS> keys;
    keys << key("D", 100, 2) << key("M", 0, 3);
    EXPECT_EQ(CALL(library, intf_addrMerge)(&keys), 2);
    EXPECT_EQ(exchanges({}, 8), "01 07 00 20 a0 00 01 00 02 00");
    EXPECT_EQ(description.toStdString(), "1#D100(2)");
    EXPECT_EQ(exchanges(reply(words({0x0110, 5}))), "01 07 00 20 a0 00 01 00 02 00");
    EXPECT_EQ(reports(), (Reports{"3 1 D 100", "3 1 D 101"}));
    EXPECT_EQ(word(100), 0x0110);
    EXPECT_EQ(exchanges(reply({0x05})), "01 07 00 21 92 00 00 00 03 00");
    EXPECT_EQ(reports(), (Reports{"3 1 M 0", "3 1 M 2"}));

    const Bytes value = words({7});
    CALL(library, intf_setData)(1, QString::fromLatin1("D"), 100, 1, value.data(), 42);
    EXPECT_EQ(word(100), 7);
    EXPECT_EQ(reports(), Reports{"3 1 D 100"});
    EXPECT_EQ(exchanges(refusal(2), 8), "01 09 00 28 a0 00 01 00 01 00 07 00");
    EXPECT_EQ(description.toStdString(), "1#D100(1),error code:2");
    EXPECT_EQ(exchanges(refusal(2), 2), "01 09 00 28 a0 00 01 00 01 00 07 00");
    EXPECT_EQ(word(100), 0x0110);
    EXPECT_EQ(reports(), Reports{"3 1 D 100"});

    const KEY_ADDRESS once = key("D_bit", 1605, 1);
    EXPECT_EQ(CALL(library, intf_addConditionRead)(&once, 1), 1);
    EXPECT_EQ(exchanges(reply(words({0x20}))), "01 07 00 20 a0 00 01 00 01 00");
    EXPECT_EQ(reports(), (Reports{"3 1 D 100", "-1 -1 -1 0"}));

    QVector<_RCP_VAR_PRO> items(2);
    for (int i = 0; i < 2; ++i) {
        items[i].instanceId = 3;
        items[i].station = 1;
        items[i].regName = QString::fromLatin1("R");
        items[i].address = i;
        items[i].count = 1;
        items[i].bufferOffset = i;
    }
    EXPECT_EQ(CALL(library, intf_setRcpAddress)(&items), 2);
    recipeBuffer[1] = 0x0302;
    controlBlock[60115] = 1;
    EXPECT_EQ(exchanges(acknowledgement()), "01 0b 00 28 a2 00 00 00 02 00 00 00 02 03");
    EXPECT_EQ(controlBlock[60115], 0);
    controlBlock[60116] = 1;
    EXPECT_EQ(exchanges(reply(words({8, 9}))), "01 07 00 20 a2 00 00 00 02 00");
    EXPECT_EQ(recipeBuffer[1], 9);
    EXPECT_EQ(controlBlock[60116], 0);
    EXPECT_EQ(reports(), (Reports{"0 -1 RWI 0", "0 -1 RWI 1"}));
}

TEST_F(Session, servesTheHostsEditor)
{
    int number = -1;
    EXPECT_EQ(CALL(library, intf_checkAddrValidity)(QString::fromLatin1("X"), QString::fromLatin1("17"), &number, 1, 0),
              0);
    EXPECT_EQ(number, 15);
    EXPECT_EQ(CALL(library, intf_checkAddr)(QString::fromLatin1("D"), QString::fromLatin1("9000"), &number, 1, 1, 1),
              2);
    QStringList names;
    EXPECT_EQ(CALL(library, intf_getRegListByType)(0, names), 1);
    EXPECT_EQ(CALL(library, intf_getRegDiscription)(names.at(0), names), 0);
    EXPECT_EQ(names.size(), 11 + 5);
    QVector<QString> texts;
    QVector<int> numbers;
    EXPECT_EQ(CALL(library, intf_multiCopy)(QString::fromLatin1("X"), 376, 3, 1, texts, numbers), 2);
    EXPECT_EQ(numbers, (QVector<int>() << 376 << 377 << 377));
    EXPECT_EQ(texts.at(0).toStdString(), "570");
    int type = 9;
    CALL(library, intf_getProtocolType)(&type);
    CALL(library, intf_SetDriverPropertyPage)(QString::fromLatin1("1_1"));
    QString page;
    CALL(library, intf_getDriverPropertyPage)(page);
    EXPECT_EQ(page.toStdString() + std::to_string(type), "0_00");
}

} // namespace

/// Any text as a register name, an address, a property: an answer with a known code, and a number only for a text that
/// the number's own text means the same as.
#include "fuzzSupport.h"
#include "serviceForProtocol/cache/cacheReads.h"

namespace {

void checksAddress(FuzzedDataProvider &input)
{
    const QString regName = qt(anyRegName(input));
    const QString text = qt(input.ConsumeRandomLengthString(20));
    const int count = anyNumber(input);
    const int access = input.ConsumeIntegralInRange<int>(-1, 2);
    int number = -12345;
    const int validity = intf_checkAddrValidity(regName, text, &number, count, access);
    require(validity >= 0 && validity <= 4, "a code of the address check");
    int otherNumber = -12345;
    const int check = intf_checkAddr(regName, text, &otherNumber, anyNumber(input), count, access);
    require(check >= 0 && check <= 6, "a code of the address check with type and access");
    if (validity != 0 || count < 1) // smaller counts are not refused, and reach back over the end of the kind
        return;

    QVector<QString> texts;
    QVector<int> numbers;
    require(intf_multiCopy(regName, number, 1, 1, texts, numbers) == 1, "a valid address can be copied");
    require(numbers.at(0) == number, "the copy has the address");
    int again = -12345;
    require(intf_checkAddrValidity(regName, texts.at(0), &again, count, access) == 0 && again == number,
            "the text of a number means that number");
}

void asksForTexts(FuzzedDataProvider &input)
{
    QStringList texts;
    intf_getRegDiscription(qt(anyRegName(input)), texts);
    require(texts.isEmpty() || texts.size() == 5, "five texts or none");
    texts.clear();
    intf_getRegListByType(anyNumber(input), texts);
    require(texts.size() == 6 || texts.size() == 11, "kinds of words or of bits");
    const std::string any = input.ConsumeRandomLengthString(20);
    asc2hex(QByteArray(any.data(), static_cast<int>(any.size())), anyNumber(input));
    intf_SetDriverPropertyPage(qt(any));
}

void copiesAddresses(FuzzedDataProvider &input)
{
    QVector<QString> texts;
    QVector<int> numbers;
    const int number = std::min(anyNumber(input), 500);
    const std::string regName = anyRegName(input);
    const int start = anyNumber(input);
    const int result = intf_multiCopy(qt(regName), start, number, anyNumber(input), texts, numbers);
    require(texts.size() == numbers.size(), "a text for each number");
    require(numbers.size() == (result == 0 || number < 0 ? 0 : number), "as many as were wanted");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    FuzzedDataProvider input(bytes, size);
    checksAddress(input);
    copiesAddresses(input);
    asksForTexts(input);
    Host(linkedCalls()).configures(input.ConsumeRandomLengthString(40).c_str());
    return 0;
}

#include "registerKinds.h"

#include "errors.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <fmt/format.h>

#include <algorithm>

namespace vshost {

namespace {

/// Register lists of the driver.
enum { BIT_LIST = 0, WORD_LIST = 1 };

/// Order of the texts that describe a kind.
enum { FORMAT, LOWEST, HIGHEST, SIZE, ACCESS, DESCRIPTION_SIZE };

/// Results of the driver's address check.
enum { VALID, WRONG_ACCESS, OUT_OF_RANGE, UNKNOWN_KIND, UNREADABLE, TYPE_TOO_SHORT, READ_ONLY };

/// This host's codes for data types. The driver tells bits by -1, and takes 1, 3, 5, 6 and 9 as 32 bits wide.
int dataTypeCode(const ValueFormat &format)
{
    switch (format.type) {
    case ValueType::Bit:
        return -1;
    case ValueType::Uint16:
        return 0;
    case ValueType::Int32:
        return 1;
    case ValueType::Int16:
        return 2;
    case ValueType::Uint32:
        return 3;
    case ValueType::Float32:
        return 5;
    case ValueType::Hex:
        return format.wideKind ? 6 : 4;
    }
    return 0;
}

/// Access modes of this host.
enum { MODE_READ = 0, MODE_READ_WRITE = 1 };

KindSize sizeOf(const QString &code)
{
    if (code == QString::fromLatin1("0"))
        return KindSize::Bit;
    return code == QString::fromLatin1("2") ? KindSize::DoubleWord : KindSize::Word;
}

ValueType naturalType(const RegisterKind &kind)
{
    switch (kind.size) {
    case KindSize::Bit:
        return ValueType::Bit;
    case KindSize::DoubleWord:
        return ValueType::Uint32;
    case KindSize::Word:
        break;
    }
    return ValueType::Uint16;
}

const char *addressForm(const RegisterKind &kind)
{
    if (kind.addressFormat.find('.') != std::string::npos)
        return "a word, a point and a bit such as 100.5";
    return kind.addressFormat.front() == 'O' ? "an octal number" : "a decimal number";
}

std::string wrongAccess(const RegisterKind &kind, ValueType type)
{
    if (kind.size == KindSize::Bit)
        return fmt::format("{} holds bits, so that its values are of type bit, not {}", kind.name, nameOf(type));
    return fmt::format("{} holds words, so that its values cannot be of type bit", kind.name);
}

/// Address texts count in their own base; a bit text counts on from the last bit of a word into the next.
std::string addressTextAt(const RegisterKind &kind, int address)
{
    if (kind.addressFormat.find('.') != std::string::npos)
        return fmt::format("{}.{}", address / 16, address % 16);
    return kind.addressFormat.front() == 'O' ? fmt::format("{:o}", address) : std::to_string(address);
}

} // namespace

std::string addressLabel(const Place &place) { return place.regName.toStdString() + place.addressText; }

RegisterKinds::RegisterKinds(const DriverCalls &calls) : m_calls(calls)
{
    append(BIT_LIST);
    append(WORD_LIST);
}

void RegisterKinds::append(int listType)
{
    QStringList names;
    m_calls.getRegListByType(listType, names);
    for (int i = 0; i < names.size(); ++i) {
        const QString &name = names.at(i);
        QStringList texts;
        m_calls.getRegDiscription(name, texts);
        if (texts.size() < DESCRIPTION_SIZE)
            continue;
        m_kinds.push_back({name.toStdString(), texts[FORMAT].toStdString(), texts[LOWEST].toStdString(),
                           texts[HIGHEST].toStdString(), sizeOf(texts[SIZE]), texts[ACCESS] != QString::fromLatin1("2"),
                           texts[ACCESS] != QString::fromLatin1("0")});
    }
}

const RegisterKind *RegisterKinds::find(const std::string &name) const
{
    const auto found =
        std::find_if(m_kinds.begin(), m_kinds.end(), [&name](const RegisterKind &kind) { return kind.name == name; });
    return found == m_kinds.end() ? nullptr : &*found;
}

std::ptrdiff_t RegisterKinds::orderOf(const QString &regName) const
{
    return find(regName.toStdString()) - m_kinds.data();
}

void RegisterKinds::splitLabel(const std::string &label, NamedAddress &address) const
{
    const RegisterKind *longest = nullptr;
    for (const RegisterKind &kind : m_kinds) {
        const bool begins = label.compare(0, kind.name.size(), kind.name) == 0;
        if (begins && (!longest || kind.name.size() > longest->name.size()))
            longest = &kind;
    }
    if (!longest)
        throw UsageError(fmt::format("'{}' begins with no register kind (vshost registers lists them)", label));
    address.regName = longest->name;
    address.addressText = label.substr(longest->name.size());
}

Value RegisterKinds::resolve(const NamedAddress &address, Access access) const
{
    const RegisterKind *const kind = find(address.regName);
    if (!kind)
        throw UsageError(fmt::format("there is no register kind '{}' (vshost registers lists them)", address.regName));
    Value value;
    value.name = address.name;
    value.unit = address.unit;
    value.format = {address.type.value_or(naturalType(*kind)), address.scale, kind->size == KindSize::DoubleWord};
    if (value.format.scale != 1 && value.format.type == ValueType::Bit)
        throw UsageError("a bit takes no scale");
    value.place = {address.station, QString::fromStdString(address.regName), address.addressText, 0,
                   hostCount(value.format)};
    const int code = check(value, &value.place.address, value.place.count, access);
    if (code != VALID)
        refuse(code, *kind, value);
    return value;
}

Value RegisterKinds::following(const Value &first, int index, Access access) const
{
    const RegisterKind &kind = *find(first.place.regName.toStdString());
    const int unitsPerValue = kind.size == KindSize::DoubleWord ? 1 : first.place.count;
    Value value = first;
    value.place.addressText = addressTextAt(kind, first.place.address + index * unitsPerValue);
    const int code = check(value, &value.place.address, value.place.count, access);
    if (code != VALID)
        refuse(code, kind, value);
    return value;
}

int RegisterKinds::check(const Value &value, int *address, int count, Access access) const
{
    return m_calls.checkAddr(value.place.regName, QString::fromStdString(value.place.addressText), address,
                             dataTypeCode(value.format), count, access == Access::Write ? MODE_READ_WRITE : MODE_READ);
}

void RegisterKinds::refuse(int code, const RegisterKind &kind, const Value &value) const
{
    switch (code) {
    case WRONG_ACCESS:
        throw UsageError(wrongAccess(kind, value.format.type));
    case OUT_OF_RANGE:
        throw UsageError(fmt::format("a {} at address {} is out of range: {} goes from {} to {}",
                                     nameOf(value.format.type), value.place.addressText, kind.name, kind.lowest,
                                     kind.highest));
    case UNREADABLE:
        throw UsageError(fmt::format("'{}' is no address of {}, which takes {}", value.place.addressText, kind.name,
                                     addressForm(kind)));
    case TYPE_TOO_SHORT:
        throw UsageError(
            fmt::format("{} holds 32 bits, for which {} is too short", kind.name, nameOf(value.format.type)));
    case READ_ONLY:
        throw UsageError(fmt::format("{} cannot be written", kind.name));
    default:
        throw UsageError(fmt::format("the driver refuses {}{} (code {})", kind.name, value.place.addressText, code));
    }
}

} // namespace vshost

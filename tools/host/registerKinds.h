/// The register kinds as the driver lists them, and the check of addresses against them.
#ifndef VSHOST_REGISTER_KINDS_H
#define VSHOST_REGISTER_KINDS_H

#include "config.h"
#include "driverLibrary.h"

#include <QtCore/QString>

#include <string>
#include <vector>

namespace vshost {

enum class KindSize { Bit, Word, DoubleWord };

struct RegisterKind {
    std::string name;
    /// "DDDD" plain number, "OOO" octal, "DDDD.D" word and bit.
    std::string addressFormat;
    std::string lowest;
    std::string highest;
    KindSize size = KindSize::Word;
    bool readable = true;
    bool writable = true;
};

/// An address that the driver has accepted.
struct Place {
    int station = 1;
    QString regName;
    std::string addressText;
    /// The driver's number of the address.
    int address = 0;
    /// Bits or 16-bit words.
    int count = 1;
};

/// A named value with the place where it lives and the meaning of its bytes.
struct Value {
    std::string name;
    Place place;
    ValueFormat format;
    std::string unit;
};

/// "D100", "D_bit100.5".
std::string addressLabel(const Place &place);

enum class Access { Read, Write };

class RegisterKinds {
public:
    /// `calls` must outlive the object.
    explicit RegisterKinds(const DriverCalls &calls);

    /// Bit kinds first, then word kinds, each in the driver's order.
    const std::vector<RegisterKind> &all() const { return m_kinds; }
    /// Null when there is no such kind.
    const RegisterKind *find(const std::string &name) const;
    /// Place of the kind among those of its size class; the driver orders recipes by it.
    std::ptrdiff_t orderOf(const QString &regName) const;

    /// Parts "D_bit100.5" into "D_bit" and "100.5" at the end of the longest kind name; throws UsageError.
    void splitLabel(const std::string &label, NamedAddress &address) const;

    /// Has the driver check the address. Throws UsageError that says in words what is wrong, without saying where.
    Value resolve(const NamedAddress &address, Access access) const;

    /// The value `index` places behind `first`, which lies in the kind's range too.
    Value following(const Value &first, int index, Access access) const;

private:
    void append(int listType);
    int check(const Value &value, int *address, int count, Access access) const;
    [[noreturn]] void refuse(int code, const RegisterKind &kind, const Value &value) const;

    const DriverCalls &m_calls;
    std::vector<RegisterKind> m_kinds;
};

} // namespace vshost

#endif

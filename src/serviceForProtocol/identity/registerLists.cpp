/// The register kinds as the host's address editor offers them.
#include "model/registerTable.h"
#include "tanek_vs/registerNames.h"

#include <tanek_vs/driver.h>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <cstddef>

namespace {

const int TYPE_BITS = 0;
const int TYPE_WORDS = 1;

struct Code {
    const char *columnText;
    const char *code;
};

const Code DATA_SIZE_CODES[] = {{"1", "0"}, {"8", "1"}, {"16", "1"}, {"32", "2"}};
const Code ACCESS_CODES[] = {{"R", "0"}, {"RW", "1"}, {"W", "2"}};

template <std::size_t size> QString codeOf(const QString &columnText, const Code (&codes)[size])
{
    for (const Code &entry : codes)
        if (columnText == QString::fromLatin1(entry.columnText))
            return QString::fromLatin1(entry.code);
    return QString::fromLatin1("1");
}

} // namespace

int intf_getRegListByType(int type, QStringList &names)
{
    for (const RegisterKind &kind : REGISTER_KINDS)
        if (kind.holdsBits() == (type == TYPE_BITS))
            names.append(kind.name);
    return type == TYPE_BITS || type == TYPE_WORDS ? 1 : 0;
}

int intf_getRegDiscription(const QString &regName, QStringList &texts)
{
    const int kind = getIndexFromRegName(regName);
    if (kind < 0)
        return 0;
    const ADDRESS_RANGE &range = ADDRESS_RANGE_PRO.at(kind);
    texts << range.addrFormat << range.minAddr << range.maxAddr << codeOf(range.valueWidth, DATA_SIZE_CODES)
          << codeOf(range.access, ACCESS_CODES);
    return 0;
}

#include "tanek_vs/registerNames.h"

#include "model/registerTable.h"

#include <QtCore/QString>

int getIndexFromRegName(const QString &regName)
{
    for (int i = 0; i < REGISTER_KIND_COUNT; ++i)
        if (sharesText(REG_LIST.at(i), regName))
            return i;
    return static_cast<int>(REG_LIST.indexOf(regName));
}

const RegisterKind *registerKind(const QString &regName)
{
    const int index = getIndexFromRegName(regName);
    return index < 0 ? nullptr : &REGISTER_KINDS.at(index);
}

/// Which register kind a name means. Names compare exactly.
#ifndef TANEK_VS_REGISTER_NAMES_H
#define TANEK_VS_REGISTER_NAMES_H

#include "model/registerTable.h"

#include <QtCore/QString>

/// Index of the kind in REG_LIST; -1 when there is none of that name.
int getIndexFromRegName(const QString &regName);

/// The kind's row in numbers; null when there is none of that name.
const RegisterKind *registerKind(const QString &regName);

#endif

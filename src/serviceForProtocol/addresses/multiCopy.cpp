#include "serviceForProtocol/addresses/multiCopy.h"

#include "model/addressForm.h"
#include "model/deviceUnits.h"
#include "model/registerTable.h"
#include "serviceForProtocol/addresses/sensibleRuns.h"
#include "tanek_vs/bitAddress.h"
#include "tanek_vs/registerNames.h"

#include <tanek_vs/driver.h>

#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtCore/QtGlobal>

#include <algorithm>

namespace {

enum MultiCopyResult { MultiCopyRefused = 0, MultiCopyComplete = 1, MultiCopyClamped = 2 };

const int STEP_OF_WORDS = -1;
const int STEP_OF_DOUBLE_WORDS = -2;

int resolvedStep(int step, const QString &regName)
{
    const RegisterKind *kind = registerKind(regName);
    int resolved = step;
    if (kind && step == STEP_OF_WORDS)
        resolved = unitsOfWords(1, kind->unitWidth);
    else if (kind && step == STEP_OF_DOUBLE_WORDS)
        resolved = unitsOfWords(2, kind->unitWidth);
    return std::max(resolved, 1);
}

/// The address's text; empty when it cannot be made.
QString addressText(int address, const QString &addrFormat, const QString &regName)
{
    if (isMixedFormat(addrFormat))
        return addr_int2str(address, regName);
    const int base = addrFormat.isEmpty() ? 0 : baseOfLetter(addrFormat.at(0));
    return base == 0 ? QString() : QString::number(static_cast<quint32>(address), base);
}

} // namespace

int multiCp(const QString &regName, const QString &addrFormat, int start, int number, int step, QVector<QString> &texts,
            QVector<int> &numbers, int highest, const QString &highestText)
{
    const bool mixed = isMixedFormat(addrFormat);
    const qint64 distance = resolvedStep(step, regName);
    int result = MultiCopyComplete;
    for (int i = 0; i < number; ++i) {
        const qint64 address = start + i * distance;
        if (address > highest) {
            numbers.append(highest);
            texts.append(highestText);
            result = MultiCopyClamped;
            continue;
        }
        const QString text = addressText(static_cast<int>(address), addrFormat, regName);
        if (mixed && text.isEmpty())
            return MultiCopyClamped;
        numbers.append(static_cast<int>(address));
        texts.append(text);
    }
    return result;
}

int intf_multiCopy(const QString &regName, int start, int number, int step, QVector<QString> &texts,
                   QVector<int> &numbers)
{
    const int kind = getIndexFromRegName(regName);
    if (kind < 0 || number > hostUnitsOfLargestKind())
        return MultiCopyRefused;
    const ADDRESS_RANGE &row = ADDRESS_RANGE_PRO.at(kind);
    const int highest = REGISTER_KINDS.at(kind).highest;
    return multiCp(regName, row.addrFormat, start, number, step, texts, numbers, highest, row.maxAddr);
}

#include "serviceForProtocol/planning/multiCopy.h"

#include "model/registerTable.h"
#include "serviceForProtocol/identity/addressText.h"
#include "tanek_vs/bitAddress.h"
#include "tanek_vs/driver.h"
#include "tanek_vs/registerNames.h"

#include <algorithm>

namespace {

enum MultiCopyResult { MultiCopyRefused = 0, MultiCopyComplete = 1, MultiCopyClamped = 2 };

const int STEP_OF_WORDS = -1;
const int STEP_OF_DOUBLE_WORDS = -2;

int resolvedStep(int step, const QString &regName)
{
    const int kind = getIndexFromRegName(regName);
    const int unitWidth = kind < 0 ? 0 : unitWidthOf(kind);
    if (unitWidth > 0 && step == STEP_OF_WORDS)
        return std::max(16 / unitWidth, 1);
    if (unitWidth > 0 && step == STEP_OF_DOUBLE_WORDS)
        return std::max(32 / unitWidth, 1);
    return std::max(step, 1);
}

/// Base of a plain format; 0: the format's letter names none.
int baseOf(const QString &addrFormat)
{
    if (addrFormat.startsWith(QLatin1Char('D')))
        return 10;
    if (addrFormat.startsWith(QLatin1Char('O')))
        return 8;
    return addrFormat.startsWith(QLatin1Char('H')) ? 16 : 0;
}

/// The address's text; empty when it cannot be made.
QString addressText(int address, const QString &addrFormat, const QString &regName)
{
    if (isMixedFormat(addrFormat))
        return addr_int2str(address, regName);
    const int base = baseOf(addrFormat);
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
    int highest = 0;
    a2i(row.maxAddr, highest, row.addrFormat, regName);
    return multiCp(regName, row.addrFormat, start, number, step, texts, numbers, highest, row.maxAddr);
}

#include "model/addressForm.h"

#include "model/asciiNumber.h"
#include "model/deviceUnits.h"

#include <QtCore/QStringList>
#include <QtCore/QtGlobal>

#include <limits>

namespace {

const int UNREADABLE = -1;

} // namespace

bool isMixedFormat(const QString &addrFormat)
{
    return !addrFormat.isEmpty() && addrFormat.count(addrFormat.at(0)) != addrFormat.size();
}

int baseOfLetter(QChar letter)
{
    if (letter == QLatin1Char('D'))
        return 10;
    if (letter == QLatin1Char('O'))
        return 8;
    return letter == QLatin1Char('H') ? 16 : 0;
}

int readWordAndBit(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    int word = 0;
    int bit = 0;
    if (parts.size() != 2 || !readNumber(parts.at(0), 10, word) || !readNumber(parts.at(1), 10, bit))
        return UNREADABLE;
    const qint64 number = static_cast<qint64>(WORD_WIDTH) * word + bit;
    const bool fits = number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max();
    return fits ? static_cast<int>(number) : UNREADABLE;
}

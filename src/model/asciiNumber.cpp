#include "model/asciiNumber.h"

#include <QtCore/QChar>
#include <QtCore/QtGlobal>

#include <limits>

namespace {

const int NO_DIGIT = 99;

bool isSpace(QChar character)
{
    const ushort code = character.unicode();
    return code == ' ' || (code >= '\t' && code <= '\r');
}

int digitOf(QChar character)
{
    const ushort code = character.unicode();
    if (code >= '0' && code <= '9')
        return code - '0';
    if (code >= 'a' && code <= 'f')
        return code - 'a' + 10;
    return code >= 'A' && code <= 'F' ? code - 'A' + 10 : NO_DIGIT;
}

/// The characters from `begin` to in front of `end`.
struct Span {
    const QString &text;
    int begin;
    int end;

    bool isEmpty() const { return begin >= end; }
    bool beginsWith(char character) const { return !isEmpty() && text.at(begin) == QLatin1Char(character); }
};

Span withoutSpaces(const QString &text)
{
    Span span = {text, 0, static_cast<int>(text.size())};
    while (!span.isEmpty() && isSpace(text.at(span.begin)))
        ++span.begin;
    while (!span.isEmpty() && isSpace(text.at(span.end - 1)))
        --span.end;
    return span;
}

bool takeSign(Span &span)
{
    const bool isNegative = span.beginsWith('-');
    if (isNegative || span.beginsWith('+'))
        ++span.begin;
    return isNegative;
}

void takeBasePrefix(Span &span)
{
    const Span behindZero = {span.text, span.begin + 1, span.end};
    if (span.beginsWith('0') && (behindZero.beginsWith('x') || behindZero.beginsWith('X')))
        span.begin += 2;
}

} // namespace

bool readNumber(const QString &text, int base, int &number)
{
    number = 0;
    Span span = withoutSpaces(text);
    const bool isNegative = takeSign(span);
    if (base == 16)
        takeBasePrefix(span);
    if (span.isEmpty())
        return false;

    const qint64 most = static_cast<qint64>(std::numeric_limits<int>::max()) + (isNegative ? 1 : 0);
    qint64 value = 0;
    for (int i = span.begin; i < span.end; ++i) {
        const int digit = digitOf(text.at(i));
        value = value * base + digit;
        if (digit >= base || value > most)
            return false;
    }
    number = static_cast<int>(isNegative ? -value : value);
    return true;
}

int numberOrZero(const QString &text)
{
    int number = 0;
    readNumber(text, 10, number);
    return number;
}

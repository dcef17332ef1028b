#include "support/wire.h"

#include <numeric>

Bytes hex(const std::string &text) { return bytesOf(QByteArray::fromHex(text.c_str())); }

std::string hexText(const Bytes &bytes)
{
    static const char DIGITS[] = "0123456789abcdef";
    std::string text;
    for (unsigned char byte : bytes) {
        if (!text.empty())
            text += ' ';
        text += DIGITS[byte >> 4];
        text += DIGITS[byte & 15];
    }
    return text;
}

Bytes bytesOf(const QByteArray &array) { return Bytes(array.begin(), array.end()); }

QByteArray arrayOf(const Bytes &bytes)
{
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), static_cast<int>(bytes.size()));
}

Bytes words(std::initializer_list<int> values)
{
    Bytes bytes;
    for (int value : values) {
        bytes.push_back(static_cast<unsigned char>(value & 0xff));
        bytes.push_back(static_cast<unsigned char>(value >> 8 & 0xff));
    }
    return bytes;
}

Bytes envelope(const Bytes &body)
{
    const int sum = std::accumulate(body.begin(), body.end(), 0) & 0xff;
    static const char DIGITS[] = "0123456789ABCDEF";
    Bytes frame = {0x10, 0x02};
    frame.insert(frame.end(), body.begin(), body.end());
    frame.push_back(0x10);
    frame.push_back(0x03);
    frame.push_back(static_cast<unsigned char>(DIGITS[sum >> 4]));
    frame.push_back(static_cast<unsigned char>(DIGITS[sum & 15]));
    return frame;
}

Bytes doubled(const Bytes &frame)
{
    Bytes result(frame.begin(), frame.begin() + 2);
    for (auto byte = frame.begin() + 2; byte != frame.end() - 4; ++byte)
        result.insert(result.end(), *byte == 0x10 ? 2 : 1, *byte);
    result.insert(result.end(), frame.end() - 4, frame.end());
    return result;
}

Bytes reply(const Bytes &data, unsigned char station, unsigned char status)
{
    const auto length = data.size() + 1;
    Bytes body = {station, static_cast<unsigned char>(length & 0xff), static_cast<unsigned char>(length >> 8), status};
    body.insert(body.end(), data.begin(), data.end());
    return doubled(envelope(body));
}

/// Bytes as the tests write them down, and replies as a controller builds them. Written apart from the driver's codec,
/// so that a mistake there is not repeated here.
#ifndef TESTS_WIRE_H
#define TESTS_WIRE_H

#include <QtCore/QByteArray>

#include <initializer_list>
#include <string>
#include <vector>

using Bytes = std::vector<unsigned char>;

/// "10 02 ff" as bytes.
Bytes hex(const std::string &text);

/// Bytes as "10 02 ff".
std::string hexText(const Bytes &bytes);

Bytes bytesOf(const QByteArray &array);
QByteArray arrayOf(const Bytes &bytes);

/// 16-bit words, low byte first.
Bytes words(std::initializer_list<int> values);

/// Header, body and trailer with the body's checksum, undoubled.
Bytes envelope(const Bytes &body);

/// The frame with every DLE of its body doubled.
Bytes doubled(const Bytes &frame);

/// A reply with that status and data, as it goes over the wire.
Bytes reply(const Bytes &data, unsigned char station = 1, unsigned char status = 0);
inline Bytes acknowledgement() { return reply({}); }
inline Bytes refusal(unsigned char status) { return reply({}, 1, status); }

#endif

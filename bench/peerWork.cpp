#include "work.h"

#include <QtCore/QByteArray>
#include <QtCore/QDataStream>
#include <QtCore/QIODevice>
#include <QtSerialBus/QModbusClient>
#include <QtSerialBus/QModbusDataUnit>
#include <QtSerialBus/QModbusPdu>
#include <QtSerialBus/QModbusRequest>
#include <QtSerialBus/QModbusResponse>

#include <modbus.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace {

const int STATION = 1;

void expect(bool holds)
{
    if (!holds)
        throw std::system_error(errno, std::generic_category(), "a peer did not do its work");
}

std::uint16_t crcOf(const std::vector<std::uint8_t> &bytes)
{
    unsigned crc = 0xFFFF;
    for (const std::uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? crc >> 1 ^ 0xA001U : crc >> 1;
    }
    return static_cast<std::uint16_t>(crc);
}

/// Function code, size and values of the reply to a request for 32 words.
std::vector<std::uint8_t> replyPdu()
{
    std::vector<std::uint8_t> pdu = {3, 2 * WORDS_PER_BLOCK};
    pdu.resize(pdu.size() + BLOCK_BYTES, 7);
    return pdu;
}

/// The library wants a line: a pair of sockets, with the reply lying there before the request is made.
class ModbusWork : public Work {
public:
    ModbusWork() : m_context(modbus_new_rtu("/dev/null", 19200, 'N', 8, 1))
    {
        expect(socketpair(AF_UNIX, SOCK_STREAM, 0, m_sockets) == 0);
        expect(modbus_set_slave(m_context, STATION) == 0 && modbus_set_socket(m_context, m_sockets[0]) == 0);
        m_reply = replyPdu();
        m_reply.insert(m_reply.begin(), STATION);
        const std::uint16_t crc = crcOf(m_reply);
        m_reply.push_back(static_cast<std::uint8_t>(crc));
        m_reply.push_back(static_cast<std::uint8_t>(crc >> 8));
    }
    ~ModbusWork() override
    {
        modbus_free(m_context);
        close(m_sockets[0]);
        close(m_sockets[1]);
    }

    void run(std::size_t times) override
    {
        std::uint8_t request[64];
        std::uint16_t words[WORDS_PER_BLOCK] = {};
        for (std::size_t i = 0; i < times; ++i) {
            expect(write(m_sockets[1], m_reply.data(), m_reply.size()) == static_cast<ssize_t>(m_reply.size()));
            expect(modbus_read_registers(m_context, 0, WORDS_PER_BLOCK, words) == WORDS_PER_BLOCK);
            expect(read(m_sockets[1], request, sizeof request) > 0);
        }
        expect(words[WORDS_PER_BLOCK - 1] == 0x0707);
    }

private:
    modbus_t *m_context;
    int m_sockets[2] = {};
    std::vector<std::uint8_t> m_reply;
};

class SerialBusWork : public Work, private QModbusClient {
public:
    void run(std::size_t times) override
    {
        const std::vector<std::uint8_t> pdu = replyPdu();
        const QByteArray reply(reinterpret_cast<const char *>(pdu.data()), static_cast<int>(pdu.size()));
        for (std::size_t i = 0; i < times; ++i) {
            QByteArray sent;
            QDataStream out(&sent, QIODevice::WriteOnly);
            out << QModbusRequest(QModbusPdu::ReadHoldingRegisters, quint16(0), quint16(WORDS_PER_BLOCK));
            QModbusResponse response;
            QDataStream in(reply);
            in >> response;
            QModbusDataUnit unit;
            expect(processResponse(response, &unit) && unit.value(WORDS_PER_BLOCK - 1) == 0x0707);
        }
    }

private:
    bool open() override { return true; }
    void close() override {}
};

} // namespace

std::unique_ptr<Work> modbusWork() { return std::make_unique<ModbusWork>(); }

std::unique_ptr<Work> serialBusWork() { return std::make_unique<SerialBusWork>(); }

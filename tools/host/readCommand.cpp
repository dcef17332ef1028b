/// `vshost read`: polls the wanted addresses until each has been read once or given up.
#include "errors.h"
#include "oneShot.h"
#include "valueBoard.h"

#include <QtCore/QList>

#include <fmt/format.h>

namespace vshost {

namespace {

std::vector<Value> wantedValues(const RegisterKinds &kinds, const ReadOptions &options)
{
    if (options.link.station == BROADCAST_STATION)
        throw UsageError("station 255 addresses all stations, which can be written but not read");
    std::vector<Value> values;
    for (const std::string &label : options.addresses) {
        const NamedAddress address = parseLabel(kinds, label, options.type, options.link.station);
        try {
            const Value first = kinds.resolve(address, Access::Read);
            for (int i = 0; i < options.count; ++i) {
                values.push_back(i == 0 ? first : kinds.following(first, i, Access::Read));
                values.back().name = addressLabel(values.back().place);
            }
        } catch (const UsageError &error) {
            throw UsageError(label + ": " + error.what());
        }
    }
    return values;
}

class Reading : public TransactionListener {
public:
    Reading(ValueBoard &board, Verdict &verdict) : m_board(board), m_verdict(verdict) {}

    void accepted(const FRAME_PRO &frame) override { m_board.blockRead(frame.variable); }
    void givenUp(const FRAME_PRO &frame, const Failure &failure) override
    {
        m_board.blockFailed(frame.variable);
        m_verdict.failed(failure);
        Printer::notice(describe(frame.variable.station, failure));
    }

private:
    ValueBoard &m_board;
    Verdict &m_verdict;
};

} // namespace

int readCommand(const GeneralOptions &general, const ReadOptions &options)
{
    Host host(general, driverConfigOf(options.link));
    ValueBoard board(host.driver.calls(), wantedValues(host.kinds, options));
    const QList<KEY_ADDRESS> keys = board.pollKeys();
    host.driver.calls().addrMerge(&keys);
    Verdict verdict;
    Reading reading(board, verdict);
    runUntil(host, linkConfigOf(options.link), general.trace, reading, verdict, [&] { return board.settled(); });
    for (std::size_t i = 0; i < board.values().size(); ++i)
        if (board.state(i) == ValueBoard::State::Read)
            host.printer.reading(board.values()[i], shownBytes(host.driver.calls(), board.values()[i]));
    return verdict.exitCode();
}

} // namespace vshost

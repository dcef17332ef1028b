/// `vshost run`: polls the values of a configuration, prints their changes, and writes what standard input asks for.
#include "errors.h"
#include "lineReader.h"
#include "oneShot.h"
#include "recipe.h"
#include "valueBoard.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <fmt/format.h>

#include <algorithm>

namespace vshost {

namespace {

std::string trimmed(const std::string &text)
{
    static const char BLANKS[] = " \t\r\n";
    const std::size_t first = text.find_first_not_of(BLANKS);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

std::vector<Value> resolveAll(const RegisterKinds &kinds, const Config &config)
{
    std::vector<Value> values;
    std::vector<std::string> problems;
    for (const NamedAddress &address : config.values) {
        try {
            values.push_back(kinds.resolve(address, Access::Read));
        } catch (const UsageError &error) {
            problems.push_back(fmt::format("{}: value '{}': {}", address.position, address.name, error.what()));
        }
    }
    // A recipe is not used here, but what is wrong with it should be known before it is.
    for (const RecipeConfig &recipe : config.recipes) {
        try {
            Recipe(recipe, kinds);
        } catch (const UsageError &error) {
            problems.push_back(error.what());
        }
    }
    if (!problems.empty())
        throw UsageError(fmt::format("{}", fmt::join(problems, "\n")));
    return values;
}

/// Tells once when a station falls silent, and once when it is back.
class StationWatch {
public:
    void answered(int station)
    {
        if (m_silent.erase(station) != 0)
            Printer::notice(fmt::format("station {} answers again", station));
    }

    void failed(int station, const Failure &failure)
    {
        const bool known = failure.kind == Failure::Refused ? !m_refusals.insert(failure.transaction).second
                                                            : !m_silent.insert(station).second;
        if (!known)
            Printer::notice(describe(station, failure));
    }

private:
    std::set<int> m_silent;
    std::set<std::string> m_refusals;
};

class RunSession : public TransactionListener {
public:
    RunSession(Host &host, const Config &config)
        : m_host(host), m_cacheOnly(config.driver.cacheOnlyWrites),
          m_board(host.driver.calls(), resolveAll(host.kinds, config)),
          m_tracker(host.driver.calls(), [this](const WriteEnd &end) { m_host.printer.writeEnd(end, true); })
    {
        m_host.driver.onChange([this](int station, const QString &regName, int address) {
            m_board.markChanged(station, regName, address);
        });
        const QList<KEY_ADDRESS> keys = m_board.pollKeys();
        m_host.driver.calls().addrMerge(&keys);
    }
    ~RunSession() override { m_host.driver.onChange(nullptr); }

    /// A line of standard input; on its thread.
    void takeLine(const std::string &line);
    void finish() { m_tracker.finish(); }

    void beforeChoice() override
    {
        m_tracker.beforeChoice();
        printChanges();
    }
    void frameChosen(const FRAME_PRO &frame) override { m_tracker.frameChosen(frame); }
    void nothingToSend() override { m_tracker.nothingToSend(); }
    void accepted(const FRAME_PRO &frame) override
    {
        m_tracker.accepted(frame);
        m_watch.answered(frame.variable.station);
        if (!isWrite(frame))
            m_board.blockRead(frame.variable);
    }
    void givenUp(const FRAME_PRO &frame, const Failure &failure) override
    {
        m_tracker.givenUp(frame, failure);
        m_watch.failed(frame.variable.station, failure);
    }
    void afterReply() override { printChanges(); }

private:
    const Value &valueNamed(const std::string &name) const;
    void write(const std::string &line);
    void printChanges();

    Host &m_host;
    const bool m_cacheOnly;
    ValueBoard m_board;
    WriteTracker m_tracker;
    StationWatch m_watch;
};

void RunSession::takeLine(const std::string &line)
{
    const std::string text = trimmed(line);
    if (text.front() == '#')
        return;
    try {
        write(text);
    } catch (const UsageError &error) {
        Printer::notice(fmt::format("not written: '{}': {}", text, error.what()));
    }
}

void RunSession::write(const std::string &line)
{
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos)
        throw UsageError("a line is of the form NAME = VALUE");
    const std::string text = trimmed(line.substr(equals + 1));
    // Checked once more, since what may be read need not be writable.
    const Value value = m_host.kinds.following(valueNamed(trimmed(line.substr(0, equals))), 0, Access::Write);
    const ValueBytes bytes = bytesOf(value.format, text);
    if (!m_cacheOnly) {
        m_tracker.post(value, bytes, text);
        return;
    }
    m_host.driver.calls().setData(value.place.station, value.place.regName, value.place.address, value.place.count,
                                  bytes.data(), 0);
    Printer::notice(fmt::format("{} = {}: shown here only, since cache_only_writes is set", value.name, text));
}

const Value &RunSession::valueNamed(const std::string &name) const
{
    const std::vector<Value> &values = m_board.values();
    const auto found =
        std::find_if(values.begin(), values.end(), [&name](const Value &value) { return value.name == name; });
    if (found == values.end())
        throw UsageError(fmt::format("there is no value named '{}'", name));
    return *found;
}

void RunSession::printChanges()
{
    for (const ValueBoard::Change &change : m_board.takeChanges()) {
        const Value &value = m_board.values()[change.index];
        m_host.printer.change(value, change.bytes, m_tracker.isOutstanding(value.place));
    }
}

ExitCode verdictOf(const LinkKeeper &keeper, const Statistics &statistics)
{
    if (!keeper.everOpen())
        return EXIT_LINK;
    return statistics.empty() || statistics.anyAccepted() ? EXIT_OK : EXIT_SILENT;
}

} // namespace

int runCommand(const GeneralOptions &general, const RunOptions &options)
{
    const Config config = loadConfig(options.file);
    const LinkAddress address = parseLinkAddress(config.link.tcp, config.link.serial);
    Host host(general, config.driver);
    RunSession session(host, config);
    Printer::notice(host.driver.describe());
    if (options.time)
        host.stop.endAfter(*options.time);
    LinkKeeper keeper(address, host.stop, &Printer::notice);
    Communication communication(host.driver.calls(), keeper, host.stop, settingsOf(config.link, general.trace),
                                session);
    {
        LineReader lines(host.stop, [&session](const std::string &line) { session.takeLine(line); });
        while (!host.stop.requested())
            communication.step();
    }
    session.finish();
    Printer::notice(communication.statistics().table());
    return verdictOf(keeper, communication.statistics());
}

} // namespace vshost

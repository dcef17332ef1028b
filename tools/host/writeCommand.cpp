/// `vshost write`: posts all assignments, then runs until each has ended.
#include "errors.h"
#include "oneShot.h"

namespace vshost {

namespace {

struct Assignment {
    Value value;
    std::string text;
    ValueBytes bytes;
};

Assignment parseAssignment(const RegisterKinds &kinds, const WriteOptions &options, const std::string &text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
        throw UsageError("'" + text + "' is not of the form D100=42");
    Assignment assignment;
    const std::string label = text.substr(0, equals);
    assignment.text = text.substr(equals + 1);
    const NamedAddress address = parseLabel(kinds, label, options.type, options.link.station);
    try {
        assignment.value = kinds.resolve(address, Access::Write);
        assignment.bytes = bytesOf(assignment.value.format, assignment.text);
    } catch (const UsageError &error) {
        throw UsageError(label + ": " + error.what());
    }
    return assignment;
}

class Writing : public TransactionListener {
public:
    explicit Writing(WriteTracker &tracker) : m_tracker(tracker) {}

    void beforeChoice() override { m_tracker.beforeChoice(); }
    void frameChosen(const FRAME_PRO &frame) override { m_tracker.frameChosen(frame); }
    void nothingToSend() override { m_tracker.nothingToSend(); }
    void accepted(const FRAME_PRO &frame) override { m_tracker.accepted(frame); }
    void givenUp(const FRAME_PRO &frame, const Failure &failure) override { m_tracker.givenUp(frame, failure); }

private:
    WriteTracker &m_tracker;
};

void judge(const WriteEnd &end, Verdict &verdict)
{
    switch (end.outcome) {
    case WriteOutcome::Confirmed:
    case WriteOutcome::Sent:
    case WriteOutcome::Replaced:
        return;
    case WriteOutcome::GivenUp:
        verdict.failed(end.failure);
        return;
    default:
        verdict.failed(EXIT_OTHER);
    }
}

} // namespace

int writeCommand(const GeneralOptions &general, const WriteOptions &options)
{
    Host host(general, driverConfigOf(options.link));
    std::vector<Assignment> assignments;
    for (const std::string &text : options.assignments)
        assignments.push_back(parseAssignment(host.kinds, options, text));
    Verdict verdict;
    WriteTracker tracker(host.driver.calls(), [&](const WriteEnd &end) {
        host.printer.writeEnd(end, false);
        judge(end, verdict);
    });
    for (const Assignment &assignment : assignments)
        tracker.post(assignment.value, assignment.bytes, assignment.text);
    Writing writing(tracker);
    try {
        runUntil(
            host, linkConfigOf(options.link), general.trace, writing, verdict,
            [&] { return !tracker.anyOutstanding(); });
    } catch (const LinkError &) {
        tracker.finish();
        throw;
    }
    tracker.finish();
    return verdict.exitCode();
}

} // namespace vshost

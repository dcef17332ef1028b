/// Any bytes on the simulated controller's link, in frames or not: no crash, every answer is a whole reply, and damage
/// by faults stays within the answer.
#include "fuzzSupport.h"
#include "replyCollector.h"
#include "simulator/controller.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    FuzzedDataProvider input(bytes, size);
    const auto mode = input.ConsumeBool() ? vssim::BitWriteMode::LoneBit : vssim::BitWriteMode::WholeBytes;
    vssim::Controller controller({1, 16}, mode);
    const bool isFaulty = input.ConsumeBool();
    if (isFaulty) {
        static const char *const FAULTS[] = {"drop",    "flip:bits=3", "truncate",      "overlong",
                                             "garbage", "silence:n=1", "wrong-station", "error"};
        controller.addFault(input.PickValueInArray(FAULTS));
    }
    vssim::FrameReader reader;
    while (input.remaining_bytes() > 0) {
        const bool isFramed = input.ConsumeBool();
        const Bytes piece = input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(1, 600));
        for (const vssim::Frame &frame : reader.feed(isFramed ? doubled(envelope(piece)) : piece)) {
            const auto answer = controller.answer(frame);
            if (!answer || isFaulty)
                continue;
            vshost::ReplyCollector collector;
            const std::size_t taken = collector.take(answer->bytes.data(), answer->bytes.size());
            require(collector.complete() && taken == answer->bytes.size(), "an answer is one whole reply");
        }
    }
    return 0;
}

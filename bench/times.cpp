/// Times of the work that bench/work.h lists, and how they grow.
#include "work.h"

#include <benchmark/benchmark.h>

namespace {

void repeats(benchmark::State &state, Work &work)
{
    const std::size_t batch = 100;
    while (state.KeepRunningBatch(batch))
        work.run(batch);
}

void transactionOf(benchmark::State &state) { repeats(state, *pollWork(static_cast<int>(state.range(0)), true)); }

void postBehind(benchmark::State &state) { repeats(state, *postWork(static_cast<int>(state.range(0)))); }

void plan(benchmark::State &state)
{
    const PollList list(static_cast<int>(state.range(0)));
    for (auto _ : state)
        list.handOver();
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

int main(int argc, char **argv)
{
    for (const WorkRow &row : allWork())
        benchmark::RegisterBenchmark(row.name.c_str(),
                                     [row](benchmark::State &state) { repeats(state, *row.prepare()); });
    benchmark::RegisterBenchmark("changed_of", transactionOf)->Arg(96)->Arg(992)->Arg(9984)->Arg(99968);
    benchmark::RegisterBenchmark("post_behind", postBehind)->Arg(0)->Arg(512);
    benchmark::RegisterBenchmark("plan_keys", plan)
        ->RangeMultiplier(10)
        ->Range(100, 100000)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

/// Counts what the whole program takes from the heap.
#ifndef BENCH_ALLOCATIONS_H
#define BENCH_ALLOCATIONS_H

#include <cstddef>

struct Heap {
    std::size_t allocations;
    /// In use now.
    std::size_t bytes;
    /// The most that was in use since the start, or since the last forgetPeak().
    std::size_t peakBytes;
};

Heap heapNow();
void forgetPeak();

#endif

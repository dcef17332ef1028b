/// glibc's allocator under its own names, with a count in front of it. The library under measurement calls it as well:
/// a program's functions stand in for those of the libraries it loads.
#include "allocations.h"

#include <algorithm>

#include <malloc.h>

extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t number, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void __libc_free(void *block);
}

namespace {

Heap heap = {0, 0, 0};

void *taken(void *block)
{
    if (block) {
        ++heap.allocations;
        heap.bytes += malloc_usable_size(block);
        heap.peakBytes = std::max(heap.peakBytes, heap.bytes);
    }
    return block;
}

void given(void *block)
{
    if (block)
        heap.bytes -= malloc_usable_size(block);
}

} // namespace

extern "C" {
void *malloc(std::size_t size) { return taken(__libc_malloc(size)); }
void *calloc(std::size_t number, std::size_t size) { return taken(__libc_calloc(number, size)); }
void *realloc(void *block, std::size_t size)
{
    given(block);
    return taken(__libc_realloc(block, size));
}
void free(void *block)
{
    given(block);
    __libc_free(block);
}
}

Heap heapNow() { return heap; }

void forgetPeak() { heap.peakBytes = heap.bytes; }

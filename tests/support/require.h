/// What has to hold wherever a host is driven, be it by a test or by a fuzzer: the program ends where it does not.
#ifndef TESTS_REQUIRE_H
#define TESTS_REQUIRE_H

#include <cstdio>
#include <cstdlib>

inline void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

#endif

// Trace, profile, person rights, password encoding, messages, preconditions.
#include "dvnkernn.h"

#include <cstdio>
#include <cstdlib>

void dvnkFail(const char* kind, const char* text, const char* file, int line) {
    std::fprintf(stderr, "%s failed: %s (%s:%d)\n", kind, text ? text : "", file ? file : "?", line);
    std::abort();
}

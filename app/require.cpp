// Vantorel. MIT licence, see LICENSE.
// The end of a process whose invariant is broken.
#include "app/require.h"

#include <cstdio>
#include <cstdlib>

#include "app/log.h"

namespace vantorel {

void requiredObjectMissing(const char* name) {
    flushLog(1.0);
    std::fprintf(stderr, "Vantorel: required object is missing: %s\n", name);
    std::abort();
}

} // namespace vantorel

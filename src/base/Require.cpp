#include "base/Require.h"

#include <cstdio>
#include <cstdlib>

namespace kelvaro {

void requirementFailed(const char* condition, const char* file, int line) noexcept {
    std::fprintf(stderr, "kelvaro: broken precondition \"%s\" at %s:%d\n", condition, file, line);
    std::abort();
}

} // namespace kelvaro

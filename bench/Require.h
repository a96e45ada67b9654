#pragma once

// A benchmark whose set-up failed measures nothing worth reporting: it stops at the first failed call.

#include "foundation/ZoltaResult.h"

#include <cstdio>
#include <cstdlib>

namespace bench {

inline HRESULT Require(HRESULT result, const char* what)
{
    if (FAILED(result)) {
        std::fprintf(stderr, "%s failed: 0x%x\n", what, static_cast<unsigned>(result));
        std::exit(1);
    }
    return result;
}

}  // namespace bench

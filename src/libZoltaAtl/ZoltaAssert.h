#pragma once

// Contract checks of the foundations. They stay active in release builds: the rest of the
// system relies on a broken contract ending the process rather than corrupting memory.

#include <cstdio>
#include <cstdlib>

namespace zolta_detail {

[[noreturn]] inline void AssertionFailed(const char* text, const char* file, int line)
{
    std::fprintf(stderr, "Assertion failed: \"%s\" at %s:%d\n", text, file, line);
    std::fflush(stderr);
    std::abort();
}

}  // namespace zolta_detail

// Checks expr; the message quotes the expression as written.
#define ZOLTA_ASSERT(expr) ((expr) ? static_cast<void>(0) : ::zolta_detail::AssertionFailed(#expr, __FILE__, __LINE__))

// Checks cond; the message quotes text instead of the source spelling, so that a check written
// as `p != nullptr` can report the conventional "p != __null".
#define ZOLTA_ASSERT_TEXT(cond, text)                                                                                  \
    ((cond) ? static_cast<void>(0) : ::zolta_detail::AssertionFailed(text, __FILE__, __LINE__))

#pragma once

// The one road of the libraries' diagnostic lines (printf-style, "%s" taking a wide string).
// They go nowhere: the calls stay to mark the places a diagnostic belongs.
inline void Trace(const wchar_t*, ...)
{}

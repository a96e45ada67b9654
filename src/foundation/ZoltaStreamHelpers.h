#pragma once

#include "foundation/ZoltaStreams.h"

#include <cstdint>

// Seek-and-patch operations for writers that lay out a file with forward references: a field is
// written as zero, the data it refers to goes to the end, and the field is patched afterwards.
// Positions are 32-bit because the fields that hold them are.

// The current position (a Seek of 0 from the current place); 0 on failure or without a stream.
std::uint32_t GetPosition(IStream* stream);
// Moves to `offset` from the start.
[[nodiscard]] HRESULT SetPosition(IStream* stream, std::uint32_t offset);
// Four bytes in the machine's order.
[[nodiscard]] HRESULT WriteWord(IStream* stream, std::uint32_t value);
// `size` bytes, then `size` modulo 4 zero bytes: not a padding to a multiple of four but exactly
// that many, which the image format depends on (it only ever meets sizes divisible by 2 or 4).
// Null `data` with a non-zero size gives E_INVALIDARG.
[[nodiscard]] HRESULT WriteBytes(IStream* stream, const void* data, std::uint32_t size);
// Writes `value` at `base + offset` and returns to where the stream was.
[[nodiscard]] HRESULT PatchWord(IStream* stream, std::uint32_t base, std::uint32_t offset, std::uint32_t value);
// Points the field at `base + offset` to the current position, then writes `text` and its
// terminator there, in wide characters. A null text is written as the empty string.
[[nodiscard]] HRESULT PatchString(IStream* stream, std::uint32_t base, std::uint32_t offset, const wchar_t* text);

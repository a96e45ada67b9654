#pragma once

#include "foundation/ZoltaResult.h"

#include <cstddef>
#include <cstdint>

// Wide text of the gallery records. A field holds either a heap copy (array allocator), the
// one shared empty string, or text inside a registered image; GalleryFreeText tells them
// apart, so every text field is released through it.

// The shared empty string. Never freed, never written.
const wchar_t* GalleryEmptyString();

// Blank: null, empty, or the single character U+FFFE that files hold for an empty value.
bool IsBlankText(const wchar_t* text);

// Replaces the field's text by a heap copy of `value` (null and "" give the shared empty
// string). E_OUTOFMEMORY leaves the field as it was.
[[nodiscard]] HRESULT GalleryAssignText(const wchar_t*& field, const wchar_t* value);

// A heap copy of `count` characters of `value` plus a terminator; null when out of memory.
wchar_t* GalleryCopyText(const wchar_t* value, std::size_t count);

// Frees heap text, leaves the shared empty string and image text alone, and stores the
// shared empty string in the field.
void GalleryFreeText(const wchar_t*& field);

// Frees a record or array from std::calloc / std::malloc unless it lies in an image.
void GalleryFreeRecord(void* record);

// Hash over the 32-bit characters: H = H * 33 + c modulo 2^32, from 5381 for file names and
// from 0 for the identifier tables.
std::uint32_t GalleryStringHash(const wchar_t* text, std::uint32_t start = 5381);

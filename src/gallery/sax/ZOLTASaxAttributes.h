#pragma once

#include "gallery/sax/ZOLTASaxString.h"

#include <cstdint>
#include <memory>

// The attributes of the start tag being reported. The parser keeps one store per parse and
// overwrites it at every start tag: a handler that needs a value later copies it.
struct ZOLTASaxAttributes {
    std::uint32_t count = 0;
    std::uint32_t capacity = 0;
    std::shared_ptr<ZOLTASaxString[]> names;
    std::shared_ptr<ZOLTASaxString[]> values;

    // Makes room for `slots` attributes and forgets the current ones.
    void Reserve(std::uint32_t slots);

    // Index of the first attribute called `name`, or `count` when there is none.
    std::uint32_t IndexOf(const char* name) const;

    // Value of the first attribute called `name`; the shared empty slice when there is none.
    // An attribute written without "=" has a default (invalid) value slice.
    const ZOLTASaxString& GetValue(const char* name) const;
};

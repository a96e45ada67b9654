#include "gallery/sax/ZOLTASaxString.h"

#include <cstring>

bool ZOLTASaxString::operator==(const char* text) const
{
    const std::size_t textLength = text ? std::strlen(text) : 0;
    if (textLength != length)
        return false;
    return length == 0 || std::memcmp(data, text, length) == 0;
}

const ZOLTASaxString& ZOLTASaxString::Empty()
{
    static const ZOLTASaxString empty;
    return empty;
}

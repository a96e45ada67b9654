#include "foundation/IZOLTAXMLWriter.h"

#include <QByteArray>

#include <charconv>
#include <cstdio>

HRESULT WriteSimpleElement(IZOLTAXMLWriter* writer, const char* name, const char* text)
{
    if (!writer)
        return E_POINTER;
    HRESULT result = writer->StartElement(name);
    if (SUCCEEDED(result))
        result = writer->AddText(text);
    if (SUCCEEDED(result))
        result = writer->EndElement(name);
    return result;
}

HRESULT AddAttributeFloat(IZOLTAXMLWriter* writer, const char* name, double value)
{
    if (!writer)
        return E_POINTER;
    // to_chars gives "%.2f" of the C locale, whatever locale the application set.
    char text[400];
    const auto converted = std::to_chars(text, text + sizeof text - 1, value, std::chars_format::fixed, 2);
    *converted.ptr = '\0';
    return writer->AddAttribute(name, text);
}

HRESULT AddAttributeInt(IZOLTAXMLWriter* writer, const char* name, int value)
{
    if (!writer)
        return E_POINTER;
    char text[16];
    std::snprintf(text, sizeof text, "%i", value);
    return writer->AddAttribute(name, text);
}

HRESULT AddAttributeColor(IZOLTAXMLWriter* writer, const char* name, std::uint32_t rgb, bool none)
{
    if (!writer)
        return E_POINTER;
    if (none)
        return writer->AddAttribute(name, "none");
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", static_cast<unsigned>((rgb >> 16) & 0xFF),
                  static_cast<unsigned>((rgb >> 8) & 0xFF), static_cast<unsigned>(rgb & 0xFF));
    return writer->AddAttribute(name, text);
}

HRESULT AddAttributeBinary(IZOLTAXMLWriter* writer, const char* name, const void* data, std::size_t size)
{
    if (!writer)
        return E_POINTER;
    if (!data && size != 0)
        return E_INVALIDARG;
    const QByteArray encoded =
        size == 0 ? QByteArray()
                  : QByteArray::fromRawData(static_cast<const char*>(data), static_cast<qsizetype>(size)).toBase64();
    return writer->AddAttribute(name, "data:;base64,", encoded.constData(), nullptr);
}

HRESULT AddCData(IZOLTAXMLWriter* writer, const char* text)
{
    if (!writer)
        return E_POINTER;
    HRESULT result = writer->AddRawText("<![CDATA[");
    if (SUCCEEDED(result))
        result = writer->AddRawText(text);
    if (SUCCEEDED(result))
        result = writer->AddRawText("]]>");
    return result;
}

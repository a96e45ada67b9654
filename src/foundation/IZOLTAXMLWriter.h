#pragma once

#include "foundation/ZoltaUnknown.h"

#include <cstddef>
#include <cstdint>

class CAtlStringA;
class CZoltaFilePath;

// The forward-only writer of all hand-made XML: bytes go straight into a stream, nothing is kept
// in memory, nothing is indented. Names are written as given; the writer keeps no element stack,
// so EndElement trusts its argument and attributes belong right after StartElement.
// Texts are terminated 8-bit UTF-8 strings; a null text counts as empty.
// Every operation gives S_OK, or E_FAIL when the writer has no stream; a failed write on a live
// stream shows only in the file writer's GetResult.
class IZOLTAXMLWriter : public IUnknown {
public:
    // "<?xml version="1.0" encoding="UTF-8" standalone="yes"?>", no line break.
    [[nodiscard]] virtual HRESULT WriteHeader() = 0;
    // The text as it stands; an open start tag stays open, so this can write into it.
    [[nodiscard]] virtual HRESULT WriteRaw(const char* text) = 0;
    // Closes an open start tag with ">", then begins "<name".
    [[nodiscard]] virtual HRESULT StartElement(const char* name) = 0;
    // "/>" while the start tag is still open (the empty form), "</name>" otherwise.
    [[nodiscard]] virtual HRESULT EndElement(const char* name) = 0;
    // File writers: the state of their file, `outText` untouched. String writers: S_OK and the
    // bytes written so far in *outText (E_POINTER without it).
    [[nodiscard]] virtual HRESULT GetResult(CAtlStringA* outText) = 0;
    // ` name="value"` with the value escaped.
    [[nodiscard]] virtual HRESULT AddAttribute(const char* name, const char* value) = 0;
    // The same with up to three parts joined; a null value2 ends the list, as does a null value3.
    [[nodiscard]] virtual HRESULT AddAttribute(const char* name, const char* value1, const char* value2,
                                               const char* value3) = 0;
    // The value in UTF-8.
    [[nodiscard]] virtual HRESULT AddAttributeWide(const char* name, const wchar_t* value) = 0;
    // Closes an open start tag (even for an empty text) and writes the text escaped.
    [[nodiscard]] virtual HRESULT AddText(const char* text) = 0;
    // Closes an open start tag and writes the text without escaping.
    [[nodiscard]] virtual HRESULT AddRawText(const char* text) = 0;
};

// A writer onto a file, uncompressed. When the file does not open the result is E_FAIL and
// *outWriter is null; on success the caller owns one reference.
[[nodiscard]] HRESULT CreateFileWriter(IZOLTAXMLWriter** outWriter, const CZoltaFilePath& path);
// A writer into memory; GetResult gives what was written.
[[nodiscard]] HRESULT CreateStringWriter(IZOLTAXMLWriter** outWriter);

// <name>text</name>, the text escaped.
[[nodiscard]] HRESULT WriteSimpleElement(IZOLTAXMLWriter* writer, const char* name, const char* text);

// Typed attribute values. Numbers are written the same whatever the user's locale.
[[nodiscard]] HRESULT AddAttributeFloat(IZOLTAXMLWriter* writer, const char* name, double value);  // "%.2f"
[[nodiscard]] HRESULT AddAttributeInt(IZOLTAXMLWriter* writer, const char* name, int value);       // "%i"
// "#rrggbb" from 0xRRGGBB, or "none" when `none` is set.
[[nodiscard]] HRESULT AddAttributeColor(IZOLTAXMLWriter* writer, const char* name, std::uint32_t rgb,
                                        bool none = false);
// "data:;base64," and the base64 form of the bytes.
[[nodiscard]] HRESULT AddAttributeBinary(IZOLTAXMLWriter* writer, const char* name, const void* data, std::size_t size);
// "<![CDATA[" text "]]>", the text unescaped.
[[nodiscard]] HRESULT AddCData(IZOLTAXMLWriter* writer, const char* text);

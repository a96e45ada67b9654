#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/lom/LomDate.h"
#include "foundation/ZoltaResult.h"

#include <cstddef>

class IZOLTAXMLWriter;
namespace tinyxml2 {
class XMLElement;
}

// Namespaces of the written gallery documents. Readers ignore them: elements are matched by
// their literal qualified names, so the prefixes are what binds.
#ifndef GALLERY_NAMESPACE_URI
#define GALLERY_NAMESPACE_URI "http://schemas.curatool.invalid/gallery/2006"
#endif
inline constexpr const char* kLomNamespaceUri = "http://ltsc.ieee.org/xsd/LOM";
inline constexpr const char* kAdlcpNamespaceUri = "http://www.adlnet.org/xsd/adlcp_v1p3";
inline constexpr const char* kImscpNamespaceUri = "http://www.imsglobal.org/xsd/imscp_v1p1";

// Writes the record as an IEEE LOM tree: the fixed template with the record's values, blanks
// (U+FFFE) where a value is empty. The stand-alone form (`embedded` false) declares the `lom`
// and `zoltagallery` prefixes on its root. The first failing write ends the tree there and its
// code is returned: the caller drops the file.
[[nodiscard]] HRESULT WriteLom(const CGalleryMetadata& metadata, IZOLTAXMLWriter* writer, bool embedded);

// Stores the record as a stand-alone "metadata.xml": `path` itself when it ends in ".xml",
// otherwise "metadata.xml" inside the folder `path`. A missing file is written whole; an
// existing one is updated in place, and the elements the record doesn't know stay as they are.
[[nodiscard]] HRESULT SaveMetadataXml(const CGalleryMetadata& metadata, const CAtlString& path);

// Fills the record from a parsed `lom:lom` element. Fields whose element is missing keep their
// value. E_POINTER without an element.
[[nodiscard]] HRESULT LoadMetadataXml(CGalleryMetadata& metadata, const tinyxml2::XMLElement* element);

// The same from the bytes of a stand-alone "metadata.xml"; E_FAIL when they don't parse or
// hold no `lom:lom`.
[[nodiscard]] HRESULT LoadMetadataFromBuffer(CGalleryMetadata& metadata, const char* data, std::size_t size);

// The same from the entry "metadata.xml" of a zip archive; E_FAIL when it isn't there.
[[nodiscard]] HRESULT LoadMetadataFromArchive(CGalleryMetadata& metadata, const CAtlString& archive);

// The language filter: a blank `language` means the current one. A non-blank hide list hides
// the object for any of its ";"-separated items that matches at level 2 or better; otherwise a
// non-blank show list shows it only for such a match. With both lists blank it is visible.
bool IsVisibleInLanguage(const CGalleryMetadata& metadata, const wchar_t* language);

// Copies the manifest-level metadata the way a rebuilt manifest takes it over from the one it
// replaces: keywords, titles, sort key, version, format, identifier, creation time, original
// identifier (the source's identifier when it has none), language lists, version maps.
[[nodiscard]] HRESULT CopyMetadataForRebuild(CGalleryMetadata& target, const CGalleryMetadata& source);

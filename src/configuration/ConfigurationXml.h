#pragma once

#include "libZoltaAtl/CAtlString.h"

namespace tinyxml2 {
class XMLElement;
}

// Small steps shared by the records of configuration.xml.
namespace configuration_xml {

// The attribute of the named child when the child exists; `field` stays as it was otherwise.
void ReadChildValue(const tinyxml2::XMLElement& parent, const char* child, const char* attribute, CAtlString& field);
// The stored copy keeps every referenced file next to its document, so only the name is written.
CAtlString BareFileName(const CAtlString& reference);
tinyxml2::XMLElement* AppendChild(tinyxml2::XMLElement& parent, const char* name);
// Appends <name Value="value"/>.
void AppendValueChild(tinyxml2::XMLElement& parent, const char* name, const CAtlString& value);

}  // namespace configuration_xml

#include "configuration/ConfigurationXml.h"

#include <tinyxml2.h>

using tinyxml2::XMLElement;

namespace configuration_xml {

void ReadChildValue(const XMLElement& parent, const char* child, const char* attribute, CAtlString& field)
{
    if (const XMLElement* element = parent.FirstChildElement(child))
        field = CAtlString::FromUtf8(element->Attribute(attribute));
}

CAtlString BareFileName(const CAtlString& reference)
{
    int separator = reference.ReverseFind(L'/');
    return separator < 0 ? reference : reference.Mid(separator + 1);
}

XMLElement* AppendChild(XMLElement& parent, const char* name)
{
    XMLElement* child = parent.GetDocument()->NewElement(name);
    parent.InsertEndChild(child);
    return child;
}

void AppendValueChild(XMLElement& parent, const char* name, const CAtlString& value)
{
    AppendChild(parent, name)->SetAttribute("Value", value.ToUtf8().GetString());
}

}  // namespace configuration_xml

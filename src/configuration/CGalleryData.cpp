#include "configuration/CGalleryData.h"

#include "configuration/ConfigurationText.h"
#include "configuration/ConfigurationXml.h"

#include <tinyxml2.h>

using configuration_text::FromUtf8;
using configuration_text::ToUtf8;
using namespace configuration_xml;
using tinyxml2::XMLElement;

void CGalleryData::Read(const XMLElement& gallery)
{
    m_guid = FromUtf8(gallery.Attribute("GUID"));
    m_defaultSource = FromUtf8(gallery.Attribute("DefaultSource"));
    m_name = FromUtf8(gallery.Attribute("Name"));
    for (const XMLElement* category = gallery.FirstChildElement("Category"); category;
         category = category->NextSiblingElement("Category"))
    {
        const CAtlString shortId = FromUtf8(category->Attribute("ShortID"));
        const CAtlString guid = FromUtf8(category->Attribute("GUID"));
        if (shortId.IsEmpty() || guid.IsEmpty())
            continue;
        m_categories[shortId] = guid;
    }
}

void CGalleryData::Write(XMLElement& gallery) const
{
    gallery.SetAttribute("GUID", ToUtf8(m_guid).c_str());
    gallery.SetAttribute("DefaultSource", ToUtf8(m_defaultSource).c_str());
    gallery.SetAttribute("Name", ToUtf8(m_name).c_str());
    for (const auto& [shortId, guid] : m_categories) {
        XMLElement* category = AppendChild(gallery, "Category");
        category->SetAttribute("ShortID", ToUtf8(shortId).c_str());
        category->SetAttribute("GUID", ToUtf8(guid).c_str());
    }
}

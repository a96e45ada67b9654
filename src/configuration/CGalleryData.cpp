#include "configuration/CGalleryData.h"

#include "configuration/ConfigurationXml.h"

#include <tinyxml2.h>

using namespace configuration_xml;
using tinyxml2::XMLElement;

void CGalleryData::Read(const XMLElement& gallery)
{
    m_guid = CAtlString::FromUtf8(gallery.Attribute("GUID"));
    m_defaultSource = CAtlString::FromUtf8(gallery.Attribute("DefaultSource"));
    m_name = CAtlString::FromUtf8(gallery.Attribute("Name"));
    for (const XMLElement* category = gallery.FirstChildElement("Category"); category;
         category = category->NextSiblingElement("Category"))
    {
        const CAtlString shortId = CAtlString::FromUtf8(category->Attribute("ShortID"));
        const CAtlString guid = CAtlString::FromUtf8(category->Attribute("GUID"));
        if (shortId.IsEmpty() || guid.IsEmpty())
            continue;
        m_categories[shortId] = guid;
    }
}

void CGalleryData::Write(XMLElement& gallery) const
{
    gallery.SetAttribute("GUID", m_guid.ToUtf8().GetString());
    gallery.SetAttribute("DefaultSource", m_defaultSource.ToUtf8().GetString());
    gallery.SetAttribute("Name", m_name.ToUtf8().GetString());
    for (const auto& [shortId, guid] : m_categories) {
        XMLElement* category = AppendChild(gallery, "Category");
        category->SetAttribute("ShortID", shortId.ToUtf8().GetString());
        category->SetAttribute("GUID", guid.ToUtf8().GetString());
    }
}

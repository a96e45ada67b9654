// The three records of configuration.xml, read and written element by element.
#include "CApplicationData.h"
#include "CGalleryData.h"
#include "COrganizationData.h"

#include "ConfigurationText.h"

#include <tinyxml2.h>

#include <cstring>

using configuration_text::FromUtf8;
using configuration_text::ToUtf8;
using tinyxml2::XMLElement;

namespace {

// The attribute's text when the child exists; `field` stays as it was otherwise.
void ReadChildValue(const XMLElement& parent, const char* child, const char* attribute, CAtlString& field)
{
    if (const XMLElement* element = parent.FirstChildElement(child))
        field = FromUtf8(element->Attribute(attribute));
}

// The stored copy keeps every referenced file next to its document, so only the name is written.
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
    AppendChild(parent, name)->SetAttribute("Value", ToUtf8(value).c_str());
}

}  // namespace

CApplicationData::CApplicationData(std::shared_ptr<FileList> files)
    : m_files(std::move(files))
{
}

void CApplicationData::Read(const XMLElement& application)
{
    ReadChildValue(application, "Title", "Value", m_title);
    if (application.FirstChildElement("About")) {
        ReadChildValue(application, "About", "Value", m_about);
        m_files->AddRelativeFile(m_about);
    }
    ReadChildValue(application, "PathOverride", "Value", m_pathOverride);
    if (const XMLElement* splashScreen = application.FirstChildElement("SplashScreen"))
        ReadSplashScreen(*splashScreen);
    if (application.FirstChildElement("StyleSheet")) {
        ReadChildValue(application, "StyleSheet", "Value", m_styleSheet);
        m_files->AddRelativeFile(m_styleSheet);
    }
    if (const XMLElement* additionalFiles = application.FirstChildElement("AdditionalFiles"))
        ReadAdditionalFiles(*additionalFiles);
}

void CApplicationData::ReadSplashScreen(const XMLElement& splashScreen)
{
    m_splashText = FromUtf8(splashScreen.Attribute("Text"));
    m_files->AddRelativeFile(m_splashText);
    m_textOffsetX = splashScreen.IntAttribute("TextOffset_X", m_textOffsetX);
    m_textOffsetY = splashScreen.IntAttribute("TextOffset_Y", m_textOffsetY);
    const char* showText = splashScreen.Attribute("ShowText");
    m_showText = showText && std::strcmp(showText, "true") == 0;
}

void CApplicationData::ReadAdditionalFiles(const XMLElement& additionalFiles)
{
    // All directories first, then all files, whatever their order in the document.
    for (const XMLElement* directory = additionalFiles.FirstChildElement("Directory"); directory;
         directory = directory->NextSiblingElement("Directory"))
        m_files->AddRelativeDirectory(FromUtf8(directory->Attribute("Path")));
    for (const XMLElement* file = additionalFiles.FirstChildElement("File"); file;
         file = file->NextSiblingElement("File"))
        m_files->AddRelativeFile(FromUtf8(file->Attribute("Path")));
}

void CApplicationData::Write(XMLElement& application) const
{
    AppendValueChild(application, "Title", m_title);
    if (!m_pathOverride.IsEmpty())
        AppendValueChild(application, "PathOverride", m_pathOverride);
    XMLElement* splashScreen = AppendChild(application, "SplashScreen");
    splashScreen->SetAttribute("Text", ToUtf8(BareFileName(m_splashText)).c_str());
    splashScreen->SetAttribute("TextOffset_X", m_textOffsetX);
    splashScreen->SetAttribute("TextOffset_Y", m_textOffsetY);
    if (m_showText)
        splashScreen->SetAttribute("ShowText", "true");
    if (!m_about.IsEmpty())
        AppendValueChild(application, "About", BareFileName(m_about));
    if (!m_styleSheet.IsEmpty())
        AppendValueChild(application, "StyleSheet", BareFileName(m_styleSheet));
}

COrganizationData::COrganizationData(std::shared_ptr<FileList> files)
    : m_files(std::move(files))
{
}

void COrganizationData::Read(const XMLElement& organization)
{
    ReadChildValue(organization, "Name", "Value", m_name);
    if (organization.FirstChildElement("Logo")) {
        ReadChildValue(organization, "Logo", "Value", m_logo);
        m_files->AddRelativeFile(m_logo);
    }
}

void COrganizationData::Write(XMLElement& organization) const
{
    if (!m_name.IsEmpty())
        AppendValueChild(organization, "Name", m_name);
    if (!m_logo.IsEmpty())
        AppendValueChild(organization, "Logo", BareFileName(m_logo));
}

void CGalleryData::Read(const XMLElement& gallery)
{
    m_guid = FromUtf8(gallery.Attribute("GUID"));
    m_defaultSource = FromUtf8(gallery.Attribute("DefaultSource"));
    m_name = FromUtf8(gallery.Attribute("Name"));
    for (const XMLElement* category = gallery.FirstChildElement("Category"); category;
         category = category->NextSiblingElement("Category")) {
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

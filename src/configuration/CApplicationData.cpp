#include "configuration/CApplicationData.h"

#include "configuration/ConfigurationXml.h"

#include <tinyxml2.h>

#include <cstring>

using namespace configuration_xml;
using tinyxml2::XMLElement;

CApplicationData::CApplicationData(std::shared_ptr<FileList> files)
    : m_files(std::move(files))
{}

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
    m_splashText = CAtlString::FromUtf8(splashScreen.Attribute("Text"));
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
        m_files->AddRelativeDirectory(CAtlString::FromUtf8(directory->Attribute("Path")));
    for (const XMLElement* file = additionalFiles.FirstChildElement("File"); file;
         file = file->NextSiblingElement("File"))
        m_files->AddRelativeFile(CAtlString::FromUtf8(file->Attribute("Path")));
}

void CApplicationData::Write(XMLElement& application) const
{
    AppendValueChild(application, "Title", m_title);
    if (!m_pathOverride.IsEmpty())
        AppendValueChild(application, "PathOverride", m_pathOverride);
    XMLElement* splashScreen = AppendChild(application, "SplashScreen");
    splashScreen->SetAttribute("Text", BareFileName(m_splashText).ToUtf8().GetString());
    splashScreen->SetAttribute("TextOffset_X", m_textOffsetX);
    splashScreen->SetAttribute("TextOffset_Y", m_textOffsetY);
    if (m_showText)
        splashScreen->SetAttribute("ShowText", "true");
    if (!m_about.IsEmpty())
        AppendValueChild(application, "About", BareFileName(m_about));
    if (!m_styleSheet.IsEmpty())
        AppendValueChild(application, "StyleSheet", BareFileName(m_styleSheet));
}

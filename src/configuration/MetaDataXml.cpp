#include "configuration/MetaDataXml.h"

#include <tinyxml2.h>

#include <QFile>

MetaDataXml::MetaDataXml(std::shared_ptr<FileList> files)
    : m_files(std::move(files))
{}

bool MetaDataXml::Read(const CAtlString& file)
{
    if (m_files)
        m_files->AddFile(CZoltaFilePath(file));

    QFile input(file.ToQString());
    if (!input.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = input.readAll();
    tinyxml2::XMLDocument document;
    if (document.Parse(bytes.constData(), static_cast<std::size_t>(bytes.size())) != tinyxml2::XML_SUCCESS)
        return false;
    const tinyxml2::XMLElement* root = document.RootElement();
    if (!root)
        return false;

    const tinyxml2::XMLElement* general = root->FirstChildElement("lom:general");
    if (!general)
        return false;
    const tinyxml2::XMLElement* identifier = general->FirstChildElement("lom:identifier");
    if (!identifier)
        return false;
    const tinyxml2::XMLElement* entry = identifier->FirstChildElement("lom:entry");
    if (!entry)
        return false;
    m_identifier = CAtlString::FromUtf8(entry->GetText());

    const tinyxml2::XMLElement* title = general->FirstChildElement("lom:title");
    if (!title)
        return false;
    for (const tinyxml2::XMLElement* string = title->FirstChildElement("lom:string"); string;
         string = string->NextSiblingElement("lom:string"))
    {
        const CAtlString language = CAtlString::FromUtf8(string->Attribute("language"));
        if (language.IsEmpty())
            continue;
        m_titles[language] = CAtlString::FromUtf8(string->GetText());
    }
    return true;
}

CAtlString MetaDataXml::Title(const CAtlString& language)
{
    auto found = m_titles.find(language);
    if (found != m_titles.end())
        return found->second;
    return m_titles[CAtlString(L"en")];
}

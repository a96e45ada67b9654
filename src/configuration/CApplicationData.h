#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "configuration/FileList.h"

#include <memory>

namespace tinyxml2 {
class XMLElement;
}

// How the tool presents itself for a collection: the Application element of configuration.xml.
// File references (about text, splash text, style sheet) stay relative to the document.
class CApplicationData {
public:
    explicit CApplicationData(std::shared_ptr<FileList> files);

    // Fills the fields from an Application element; a missing child leaves its field as it was.
    // The referenced files and the additional files and directories enter the file list.
    void Read(const tinyxml2::XMLElement& application);
    // Writes the subset the stored copy keeps, file references as bare names.
    void Write(tinyxml2::XMLElement& application) const;

    const CAtlString& GetTitle() const { return m_title; }
    void SetTitle(const CAtlString& title) { m_title = title; }
    int GetTextOffsetX() const { return m_textOffsetX; }
    int GetTextOffsetY() const { return m_textOffsetY; }
    const CAtlString& GetAbout() const { return m_about; }
    const CAtlString& GetSplashText() const { return m_splashText; }
    bool GetShowText() const { return m_showText; }
    const CAtlString& GetPathOverride() const { return m_pathOverride; }
    const CAtlString& GetStyleSheet() const { return m_styleSheet; }

private:
    void ReadSplashScreen(const tinyxml2::XMLElement& splashScreen);
    void ReadAdditionalFiles(const tinyxml2::XMLElement& additionalFiles);

    CAtlString m_title;
    std::shared_ptr<FileList> m_files;
    int m_textOffsetX = 0;
    int m_textOffsetY = 0;
    CAtlString m_about;
    CAtlString m_splashText;
    bool m_showText = false;
    CAtlString m_pathOverride;
    CAtlString m_styleSheet;
};

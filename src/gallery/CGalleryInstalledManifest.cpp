#include "gallery/CGalleryInstalledManifest.h"

#include "foundation/CZoltaFilePath.h"
#include "gallery/sax/ZOLTASaxDecodeText.h"
#include "gallery/sax/ZOLTASaxParser.h"

CGalleryInstalledManifest::~CGalleryInstalledManifest() = default;

HRESULT CGalleryInstalledManifest::Load(const CAtlString& path)
{
    m_state = 0;
    m_haveId = m_haveVersion = false;
    m_result = E_FAIL;
    m_id.Empty();
    m_version.Empty();
    m_stringVersions.clear();
    m_filePath = path;
    const HRESULT parsed = ZOLTASaxParser::ParseFile(ToFileSystemEncoding(path).constData(), *this);
    if (FAILED(parsed)) {
        return parsed;
    }
    return m_haveId && m_haveVersion ? m_result : E_FAIL;
}

HRESULT CGalleryInstalledManifest::StartElement(const ZOLTASaxString&, const ZOLTASaxString&,
                                                const ZOLTASaxString& qName, const ZOLTASaxAttributes& attributes,
                                                const ZOLTASaxString& text, std::uint32_t, std::uint32_t)
{
    switch (m_state) {
    case 0:
        if (qName == "manifest") {
            m_state = 1;
        }
        break;
    case 1:
        if (qName == "zoltagallery:stringversions" || qName == "metadata") {
            m_state = 2;
        }
        break;
    case 2:
        if (qName == "lom:string") {
            m_stringVersions[DecodeText(attributes.GetValue("language"))] = DecodeText(text);
        } else if (qName == "lom:lom") {
            m_state = 3;
        }
        break;
    case 3:
        if (qName == "lom:general") {
            m_state = 4;
        } else if (qName == "lom:lifeCycle") {
            m_state = 6;
        }
        break;
    case 4:
        if (qName == "lom:identifier") {
            m_state = 5;
        }
        break;
    case 5:
        if (qName == "lom:entry") {
            m_id = DecodeText(text);
            m_haveId = true;
        }
        break;
    case 6:
        if (qName == "lom:version") {
            m_state = 7;
        }
        break;
    case 7:
        if (qName == "lom:string") {
            m_version = DecodeText(text);
            m_haveVersion = true;
        }
        break;
    default:
        break;
    }
    if (m_haveId && m_haveVersion) {
        // Everything wanted is there: stop reading.
        m_result = S_OK;
        return S_FALSE;
    }
    return S_OK;
}

HRESULT CGalleryInstalledManifest::EndElement(const ZOLTASaxString&, const ZOLTASaxString&, const ZOLTASaxString& qName,
                                              std::uint32_t, std::uint32_t)
{
    if (qName == "zoltagallery:stringversions" && m_state == 2) {
        m_state = 1;
    } else if (qName == "lom:identifier" && m_state == 5) {
        m_state = 4;
    } else if (qName == "lom:general" && m_state == 4) {
        m_state = 3;
    } else if (qName == "lom:version" && m_state == 7) {
        m_state = 6;
    } else if (qName == "lom:lifeCycle" && m_state == 6) {
        m_state = 3;
    } else if (qName == "lom:lom" && !(m_haveId && m_haveVersion)) {
        return E_FAIL;
    }
    return S_OK;
}

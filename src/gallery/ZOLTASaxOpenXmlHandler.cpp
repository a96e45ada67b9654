#include "gallery/ZOLTASaxOpenXmlHandler.h"

#include "gallery/CGalleryActivity.h"
#include "gallery/CGalleryFolder.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/CGalleryOrganization.h"
#include "gallery/GalleryText.h"
#include "gallery/IGalleryManifestOpenObserver.h"
#include "gallery/LanguageStringBlock.h"
#include "gallery/lom/LomDate.h"
#include "gallery/sax/ZOLTASaxDecodeText.h"

namespace {

std::wstring Key(const CAtlString& text)
{
    return std::wstring(text.GetString(), static_cast<std::size_t>(text.GetLength()));
}

}  // namespace

ZOLTASaxOpenXmlHandler::ZOLTASaxOpenXmlHandler(CGalleryManifest& manifest, IGalleryManifestOpenObserver* observer)
    : m_manifest(manifest),
      m_observer(observer)
{}

ZOLTASaxOpenXmlHandler::~ZOLTASaxOpenXmlHandler()
{
    FreeScratchBlock();
}

CGalleryMetadata* ZOLTASaxOpenXmlHandler::InnermostMetadata() const
{
    if (m_activity) {
        return m_activity->m_metadata;
    }
    if (m_category) {
        return m_category->m_metadata;
    }
    if (m_organization) {
        return m_organization->m_metadata;
    }
    return m_manifest.m_metadata;
}

HRESULT ZOLTASaxOpenXmlHandler::OpenScratchBlock()
{
    FreeScratchBlock();
    const HRESULT result = LanguageStringBlock::Create(&m_scratch);
    m_block = m_scratch;
    return result;
}

void ZOLTASaxOpenXmlHandler::FreeScratchBlock()
{
    if (m_scratch) {
        if (m_block == m_scratch) {
            m_block = nullptr;
        }
        LanguageStringBlock::Destroy(m_scratch);
    }
}

HRESULT ZOLTASaxOpenXmlHandler::AddLanguageString(const ZOLTASaxAttributes& attributes, const ZOLTASaxString& text)
{
    if (!m_block) {
        return S_OK;
    }
    CAtlString value = DecodeText(text);
    value.TrimLeft();
    // Texts under two characters are kept as empty: a deliberate limit of the format.
    if (value.GetLength() < 2) {
        value.Empty();
    }
    CAtlString language = DecodeText(attributes.GetValue("language"));
    if (IsBlankText(language.GetString())) {
        language = L"en";
    }
    return m_block->Add(language.GetString(), value.GetString());
}

HRESULT ZOLTASaxOpenXmlHandler::StartOrganization(const ZOLTASaxAttributes& attributes)
{
    if (m_organization || m_category || m_activity) {
        return E_FAIL;
    }
    CGalleryOrganization* organization = nullptr;
    HRESULT result = CGalleryOrganization::Create(&organization);
    if (FAILED(result)) {
        return result;
    }
    result = m_manifest.AddOrganization(organization);
    if (FAILED(result)) {
        CGalleryOrganization::Destroy(organization);
        return result;
    }
    organization->m_readOnly = attributes.GetValue("zoltagallery:readonly") == "true";
    m_organization = organization;
    m_metadata = organization->m_metadata;
    return m_metadata->SetIdentifier(DecodeText(attributes.GetValue("identifier")).GetString());
}

HRESULT ZOLTASaxOpenXmlHandler::StartItem(const ZOLTASaxAttributes& attributes)
{
    m_languageText.Empty();
    const ZOLTASaxString& reference = attributes.GetValue("identifierref");
    HRESULT result = S_OK;
    if (!reference.IsValid()) {
        if (m_activity || !m_organization) {
            return E_FAIL;
        }
        CGalleryFolder* folder = nullptr;
        result = CGalleryFolder::Create(&folder);
        if (FAILED(result)) {
            return result;
        }
        result = m_category ? m_category->AddChild(folder) : m_organization->AddItem(folder);
        if (FAILED(result)) {
            CGalleryFolder::Destroy(folder);
            return result;
        }
        m_categoryStack.push_back(m_category);
        m_category = folder;
        m_metadata = folder->m_metadata;
    } else {
        if (!m_category || m_activity) {
            return E_FAIL;
        }
        CGalleryActivity* activity = nullptr;
        result = CGalleryActivity::Create(&activity);
        if (FAILED(result)) {
            return result;
        }
        result = m_category->AddActivity(activity);
        if (FAILED(result)) {
            CGalleryActivity::Destroy(activity);
            return result;
        }
        const CAtlString fileName = DecodeText(reference);
        result = activity->SetHref(fileName.GetString());
        if (FAILED(result)) {
            return result;
        }
        m_activity = activity;
        m_metadata = activity->m_metadata;
        m_waiting[Key(fileName)].push_back(activity);
        ++m_waitingCount;
    }
    return m_metadata->SetIdentifier(DecodeText(attributes.GetValue("identifier")).GetString());
}

HRESULT ZOLTASaxOpenXmlHandler::StartResource(const ZOLTASaxAttributes& attributes)
{
    const CAtlString identifier = DecodeText(attributes.GetValue("identifier"));
    const CAtlString href = DecodeText(attributes.GetValue("href"));
    const auto waiting = m_waiting.find(Key(identifier));
    if (waiting == m_waiting.end()) {
        return S_OK;
    }
    // Every activity that holds this identifier as its file name takes the real one and
    // leaves the list, in the order they joined it.
    HRESULT result = S_OK;
    for (CGalleryActivity* activity : waiting->second) {
        const HRESULT set = activity->SetHref(href.GetString());
        if (FAILED(set) && SUCCEEDED(result)) {
            result = set;
        }
    }
    m_waitingCount -= waiting->second.size();
    m_waiting.erase(waiting);
    return result;
}

HRESULT ZOLTASaxOpenXmlHandler::StartElement(const ZOLTASaxString&, const ZOLTASaxString&, const ZOLTASaxString& qName,
                                             const ZOLTASaxAttributes& attributes, const ZOLTASaxString& text,
                                             std::uint32_t, std::uint32_t)
{
    if (qName == "lom:string") {
        return AddLanguageString(attributes, text);
    }
    if (qName == "lom:general") {
        m_inGeneral = true;
    } else if (qName == "lom:identifier") {
        if (m_metadata) {
            m_inIdentifier = true;
        }
    } else if (qName == "lom:entry") {
        if (m_inGeneral && m_inIdentifier && m_metadata) {
            m_inIdentifier = false;
            return m_metadata->SetIdentifier(DecodeText(text).GetString());
        }
    } else if (qName == "zoltagallery:stringversions") {
        m_block = m_manifest.m_stringVersions;
    } else if (qName == "zoltagallery:sortoverride" || qName == "gallery:sortkey" || qName == "lom:version") {
        return OpenScratchBlock();
    } else if (qName == "zoltagallery:originalid") {
        if (m_metadata) {
            return m_metadata->SetOriginalId(DecodeText(text).GetString());
        }
    } else if (qName == "zoltagallery:creationdatetime" || qName == "gallery:creationdate") {
        if (m_metadata) {
            m_metadata->m_creationTime = static_cast<std::uint32_t>(ParseDate(DecodeText(text)));
        }
    } else if (qName == "lom:requirement") {
        if (m_metadata) {
            m_inRequirement = true;
        }
    } else if (qName == "lom:orComposite") {
        if (m_inRequirement) {
            m_inOrComposite = true;
            m_isBrowser = m_inType = m_inName = false;
        }
    } else if (qName == "lom:type") {
        m_inType = m_inOrComposite;
    } else if (qName == "lom:name") {
        m_inName = m_inOrComposite;
    } else if (qName == "lom:value") {
        if (m_inType && DecodeText(text) == L"browser") {
            m_isBrowser = true;
        }
        if (m_inName) {
            m_requirementName = DecodeText(text);
        }
    } else if (qName == "lom:minimumVersion" || qName == "lom:maximumVersion") {
        if (m_isBrowser && !m_requirementName.IsEmpty() && m_metadata) {
            LanguageStringBlock* versions =
                qName == "lom:minimumVersion" ? m_metadata->m_minimumVersions : m_metadata->m_maximumVersions;
            return versions->Add(m_requirementName.GetString(), DecodeText(text).GetString());
        }
    } else if (qName == "metadata") {
        m_metadata = InnermostMetadata();
    } else if (qName == "item") {
        return StartItem(attributes);
    } else if (qName == "resource") {
        return StartResource(attributes);
    } else if (qName == "lom:title" || qName == "lom:keyword") {
        if (!m_metadata || m_block) {
            return E_FAIL;
        }
        m_block = qName == "lom:title" ? m_metadata->m_titles : m_metadata->m_keywords;
    } else if (qName == "lom:format") {
        if (m_activity) {
            return m_activity->m_metadata->SetFormat(DecodeText(text).GetString());
        }
    } else if (qName == "title") {
        m_languageText = DecodeText(text);
        m_languageText.Trim();
        if (IsBlankText(m_languageText.GetString())) {
            m_languageText.Empty();
        }
    } else if (qName == "organization") {
        return StartOrganization(attributes);
    } else if (qName == "resources") {
        if (m_organization) {
            return E_FAIL;
        }
    }
    return S_OK;
}

HRESULT ZOLTASaxOpenXmlHandler::EndScratchField(HRESULT (CGalleryMetadata::*setter)(const wchar_t*))
{
    if (!m_block) {
        return E_FAIL;
    }
    HRESULT result = S_OK;
    if (m_metadata) {
        result = (m_metadata->*setter)(m_block->Lookup(L"en"));
    }
    FreeScratchBlock();
    m_block = nullptr;
    return result;
}

HRESULT ZOLTASaxOpenXmlHandler::EndItem()
{
    if (m_metadata || (m_categoryStack.empty() && !m_activity)) {
        return E_FAIL;
    }
    if (m_activity) {
        CGalleryMetadata& metadata = *m_activity->m_metadata;
        if (metadata.m_titles->GetCount() == 0) {
            const HRESULT result = metadata.m_titles->Add(L"en", m_languageText.GetString());
            if (FAILED(result)) {
                return result;
            }
        }
        if (IsBlankText(metadata.m_identifier)) {
            return E_FAIL;
        }
        m_activity = nullptr;
        return S_OK;
    }
    if (IsBlankText(m_category->m_metadata->m_identifier)) {
        return E_FAIL;
    }
    m_category = m_categoryStack.back();
    m_categoryStack.pop_back();
    return S_OK;
}

HRESULT ZOLTASaxOpenXmlHandler::EndElement(const ZOLTASaxString&, const ZOLTASaxString&, const ZOLTASaxString& qName,
                                           std::uint32_t position, std::uint32_t length)
{
    HRESULT result = S_OK;
    if (qName == "metadata") {
        if (!m_metadata || m_block) {
            return E_FAIL;
        }
        m_metadata = nullptr;
        m_inIdentifier = false;
    } else if (qName == "lom:title") {
        if (!m_block) {
            return E_FAIL;
        }
        if (m_block->GetCount() == 0) {
            result = m_block->Add(L"en", m_languageText.GetString());
        }
        m_block = nullptr;
    } else if (qName == "lom:keyword") {
        if (!m_block) {
            return E_FAIL;
        }
        m_block = nullptr;
    } else if (qName == "zoltagallery:stringversions") {
        m_block = nullptr;
    } else if (qName == "zoltagallery:sortoverride" || qName == "gallery:sortkey") {
        result = EndScratchField(&CGalleryMetadata::SetSortKey);
    } else if (qName == "lom:version") {
        result = EndScratchField(&CGalleryMetadata::SetVersion);
    } else if (qName == "lom:requirements") {
        // Written as "lom:requirement", so in practice the flag stays set to the end.
        m_inRequirement = false;
    } else if (qName == "lom:orComposite") {
        m_inOrComposite = m_isBrowser = m_inType = m_inName = false;
        m_requirementName.Empty();
    } else if (qName == "lom:type") {
        m_inType = false;
    } else if (qName == "lom:name") {
        m_inName = false;
    } else if (qName == "lom:general") {
        m_inGeneral = false;
    } else if (qName == "item") {
        result = EndItem();
    } else if (qName == "organization") {
        if (m_metadata || !m_organization || m_category || IsBlankText(m_organization->m_metadata->m_identifier)) {
            return E_FAIL;
        }
        m_organization = nullptr;
    } else if (qName == "organizations") {
        if (m_organization) {
            return E_FAIL;
        }
    } else if (qName == "resources") {
        if (m_waitingCount != 0) {
            return E_FAIL;
        }
    }
    if (FAILED(result)) {
        return result;
    }
    if (m_observer && length != 0) {
        const HRESULT progress =
            m_observer->OnManifestProgress(static_cast<float>(position) / static_cast<float>(length));
        if (FAILED(progress)) {
            return progress;
        }
    }
    return S_OK;
}

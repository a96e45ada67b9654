#include "gallery/lom/LomMetadata.h"

#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"
#include "gallery/CGalleryObject.h"
#include "gallery/GalleryLanguage.h"
#include "gallery/GalleryText.h"
#include "foundation/IZOLTAXMLWriter.h"
#include "ziparchive/ZipHelpers.h"

#include <tinyxml2.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <initializer_list>
#include <vector>

namespace {

constexpr const char* kMetaMetadataEntry = "http://www.adlnet.org/metadata/MDO_01";
constexpr const char* kLomSource = "LOMv1.0";

// Record texts are bare wide pointers; CAtlStringA made from one holds its UTF-8 form.

// Keeps the first failure and turns every later call into a no-op, so that the template reads
// as a straight list while the first failing write still ends the tree.
class LomOut {
public:
    explicit LomOut(IZOLTAXMLWriter* writer)
        : m_writer(writer)
    {}

    [[nodiscard]] HRESULT Result() const { return m_result; }

    void Start(const char* name)
    {
        Do([&] { return m_writer->StartElement(name); });
    }
    void End(const char* name)
    {
        Do([&] { return m_writer->EndElement(name); });
    }
    void Attribute(const char* name, const char* value)
    {
        Do([&] { return m_writer->AddAttribute(name, value); });
    }
    void Text(const char* text)
    {
        Do([&] { return m_writer->AddText(text); });
    }
    void RawText(const char* text)
    {
        Do([&] { return m_writer->AddRawText(text); });
    }

    void Simple(const char* name, const char* text)
    {
        Start(name);
        Text(text);
        End(name);
    }

    // <name><lom:source>LOMv1.0</lom:source><lom:value>value</lom:value></name>
    void SourceValue(const char* name, const char* value)
    {
        Start(name);
        Simple("lom:source", kLomSource);
        Simple("lom:value", value);
        End(name);
    }

    void LanguageString(const wchar_t* language, const wchar_t* text)
    {
        Start("lom:string");
        Attribute("language", CAtlStringA(language).GetString());
        Text(CGalleryObject::FileText(text));
        End("lom:string");
    }

private:
    template <class Operation>
    void Do(Operation operation)
    {
        if (SUCCEEDED(m_result)) {
            const HRESULT result = operation();
            if (FAILED(result)) {
                m_result = result;
            }
        }
    }

    IZOLTAXMLWriter* m_writer;
    HRESULT m_result = S_OK;
};

int BlockCount(const LanguageStringBlock* block)
{
    return block ? block->GetCount() : 0;
}

// Value of the first pair whose key is exactly `key`, or null.
const wchar_t* ExactValue(const LanguageStringBlock* block, const wchar_t* key)
{
    for (int i = 0; i < BlockCount(block); ++i) {
        if (std::wcscmp(block->GetKey(i), key) == 0) {
            return block->GetValue(i);
        }
    }
    return nullptr;
}

void WriteMetaMetadata(LomOut& out)
{
    out.Start("lom:metaMetadata");
    out.Start("lom:identifier");
    out.Simple("lom:catalog", "URI");
    out.Simple("lom:entry", kMetaMetadataEntry);
    out.End("lom:identifier");
    out.Simple("lom:metadataSchema", "LOMv1.0");
    out.Simple("lom:metadataSchema", "SCORM_CAM_v1.3");
    out.End("lom:metaMetadata");
}

void WriteGeneral(LomOut& out, const CGalleryMetadata& metadata)
{
    out.Start("lom:general");
    out.Start("lom:identifier");
    // "lom:category" here and "lom:catalog" under lom:metaMetadata: both are what readers expect.
    out.Simple("lom:category", "URI");
    out.Simple("lom:entry", CGalleryObject::FileText(metadata.m_identifier));
    out.End("lom:identifier");

    const LanguageStringBlock* titles = metadata.m_titles;
    out.Start("lom:title");
    if (BlockCount(titles) == 0) {
        out.LanguageString(L"en", nullptr);
    }
    for (int i = 0; i < BlockCount(titles); ++i) {
        out.LanguageString(titles->GetKey(i), titles->GetValue(i));
    }
    out.End("lom:title");

    out.Start("lom:description");
    if (BlockCount(titles) == 0) {
        out.LanguageString(L"en", nullptr);
    } else {
        out.LanguageString(titles->GetKey(0), titles->GetValue(0));
    }
    out.End("lom:description");

    const LanguageStringBlock* keywords = metadata.m_keywords;
    if (BlockCount(keywords) == 0) {
        out.Start("lom:keyword");
        out.LanguageString(L"en", nullptr);
        out.End("lom:keyword");
    }
    for (int i = 0; i < BlockCount(keywords); ++i) {
        out.Start("lom:keyword");
        out.LanguageString(keywords->GetKey(i), keywords->GetValue(i));
        out.End("lom:keyword");
    }

    if (!IsBlankText(metadata.m_sortKey)) {
        out.Start("zoltagallery:sortoverride");
        out.LanguageString(L"en", metadata.m_sortKey);
        out.End("zoltagallery:sortoverride");
    }
    if (!IsBlankText(metadata.m_originalId)) {
        out.Simple("zoltagallery:originalid", CAtlStringA(metadata.m_originalId));
    }
    if (!IsBlankText(metadata.m_showInLanguages)) {
        out.Simple("zoltagallery:showinlanguages", CAtlStringA(metadata.m_showInLanguages));
    }
    if (!IsBlankText(metadata.m_hideInLanguages)) {
        out.Simple("zoltagallery:hideinlanguages", CAtlStringA(metadata.m_hideInLanguages));
    }
    out.End("lom:general");
}

// Browser names of both maps, minimum first, each once.
std::vector<const wchar_t*> BrowserNames(const CGalleryMetadata& metadata)
{
    std::vector<const wchar_t*> names;
    for (const LanguageStringBlock* block : {metadata.m_minimumVersions, metadata.m_maximumVersions}) {
        for (int i = 0; i < BlockCount(block); ++i) {
            const wchar_t* name = block->GetKey(i);
            bool known = false;
            for (const wchar_t* seen : names) {
                known = known || std::wcscmp(seen, name) == 0;
            }
            if (!known) {
                names.push_back(name);
            }
        }
    }
    return names;
}

void WriteTechnical(LomOut& out, const CGalleryMetadata& metadata)
{
    out.Start("lom:technical");
    out.Simple("lom:format", CGalleryObject::FileText(metadata.m_format));
    for (const wchar_t* name : BrowserNames(metadata)) {
        out.Start("lom:requirement");
        out.Start("lom:orComposite");
        out.SourceValue("lom:type", "browser");
        out.SourceValue("lom:name", CAtlStringA(name));
        if (const wchar_t* minimum = ExactValue(metadata.m_minimumVersions, name)) {
            out.Simple("lom:minimumVersion", CGalleryObject::FileText(minimum));
        }
        if (const wchar_t* maximum = ExactValue(metadata.m_maximumVersions, name)) {
            out.Simple("lom:maximumVersion", CGalleryObject::FileText(maximum));
        }
        out.End("lom:orComposite");
        out.End("lom:requirement");
    }
    out.End("lom:technical");
}

void WriteRights(LomOut& out)
{
    out.Start("lom:rights");
    out.SourceValue("lom:cost", "no");
    out.SourceValue("lom:copyrightAndOtherRestrictions", "yes");
    out.Start("lom:description");
    out.LanguageString(L"en", nullptr);
    out.End("lom:description");
    out.End("lom:rights");
}

void WriteLifeCycle(LomOut& out, const CGalleryMetadata& metadata)
{
    out.Start("lom:lifeCycle");
    if (metadata.m_creationTime != 0) {
        const CAtlString date = FormatDate(static_cast<std::int32_t>(metadata.m_creationTime), true);
        out.Simple("zoltagallery:creationdate", date.ToUtf8());
    }
    out.Start("lom:version");
    out.Start("lom:string");
    out.Attribute("language", "en");
    out.RawText(CGalleryObject::FileText(metadata.m_version));
    out.End("lom:string");
    out.End("lom:version");
    out.SourceValue("lom:status", "final");
    out.End("lom:lifeCycle");
}

// ---- reading ----------------------------------------------------------------------------

const tinyxml2::XMLElement* Walk(const tinyxml2::XMLElement* from, std::initializer_list<const char*> names)
{
    for (const char* name : names) {
        if (!from) {
            return nullptr;
        }
        from = from->FirstChildElement(name);
    }
    return from;
}

CAtlString TextOf(const tinyxml2::XMLElement* element)
{
    return element ? CAtlString::FromUtf8(element->GetText()) : CAtlString();
}

// Adds every lom:string child of `parent` under its language; one without a language can't be
// a pair and is passed over.
[[nodiscard]] HRESULT AddLanguageStrings(LanguageStringBlock& block, const tinyxml2::XMLElement* parent)
{
    for (const tinyxml2::XMLElement* string = parent->FirstChildElement("lom:string"); string;
         string = string->NextSiblingElement("lom:string"))
    {
        const CAtlString language = CAtlString::FromUtf8(string->Attribute("language"));
        const CAtlString text = TextOf(string);
        // Add refuses one without a language (E_INVALIDARG), and that is the passing over.
        const HRESULT result = block.Add(language.GetString(), text.GetString());
        if (FAILED(result) && result != E_INVALIDARG) {
            return result;
        }
    }
    return S_OK;
}

// A missing element leaves the field as it was.
[[nodiscard]] HRESULT LoadText(const tinyxml2::XMLElement* element, CGalleryMetadata& metadata,
                               HRESULT (CGalleryMetadata::*setter)(const wchar_t*))
{
    return element ? (metadata.*setter)(TextOf(element).GetString()) : S_OK;
}

[[nodiscard]] HRESULT LoadRequirements(CGalleryMetadata& metadata, const tinyxml2::XMLElement* technical)
{
    metadata.m_minimumVersions->Clear();
    metadata.m_maximumVersions->Clear();
    for (const tinyxml2::XMLElement* requirement = technical->FirstChildElement("lom:requirement"); requirement;
         requirement = requirement->NextSiblingElement("lom:requirement"))
    {
        for (const tinyxml2::XMLElement* composite = requirement->FirstChildElement("lom:orComposite"); composite;
             composite = composite->NextSiblingElement("lom:orComposite"))
        {
            const CAtlString type = TextOf(Walk(composite, {"lom:type", "lom:value"}));
            const CAtlString name = TextOf(Walk(composite, {"lom:name", "lom:value"}));
            if (type.CompareNoCase(L"browser") != 0 || name.IsEmpty()) {
                continue;
            }
            HRESULT result = S_OK;
            if (const tinyxml2::XMLElement* minimum = composite->FirstChildElement("lom:minimumVersion")) {
                result = metadata.m_minimumVersions->Add(name.GetString(), TextOf(minimum).GetString());
            }
            const tinyxml2::XMLElement* maximum = composite->FirstChildElement("lom:maximumVersion");
            if (SUCCEEDED(result) && maximum) {
                result = metadata.m_maximumVersions->Add(name.GetString(), TextOf(maximum).GetString());
            }
            if (FAILED(result)) {
                return result;
            }
        }
    }
    return S_OK;
}

// ---- updating in place ------------------------------------------------------------------

tinyxml2::XMLElement* Ensure(tinyxml2::XMLElement* from, std::initializer_list<const char*> names)
{
    for (const char* name : names) {
        tinyxml2::XMLElement* child = from->FirstChildElement(name);
        from = child ? child : from->InsertNewChildElement(name);
    }
    return from;
}

void RemoveChildren(tinyxml2::XMLElement* parent, const char* name)
{
    while (tinyxml2::XMLElement* child = parent->FirstChildElement(name)) {
        parent->DeleteChild(child);
    }
}

void AppendLanguageString(tinyxml2::XMLElement* parent, const wchar_t* language, const wchar_t* text)
{
    tinyxml2::XMLElement* string = parent->InsertNewChildElement("lom:string");
    string->SetAttribute("language", CAtlStringA(language).GetString());
    string->SetText(CGalleryObject::FileText(text).GetString());
}

// Sets a plain optional field, or removes its element when the record has nothing for it.
void SetOrRemove(tinyxml2::XMLElement* general, const char* name, const wchar_t* value)
{
    if (IsBlankText(value)) {
        RemoveChildren(general, name);
    } else {
        Ensure(general, {name})->SetText(CAtlStringA(value).GetString());
    }
}

void UpdateDocument(const CGalleryMetadata& metadata, tinyxml2::XMLElement* lom)
{
    tinyxml2::XMLElement* general = Ensure(lom, {"lom:general"});
    Ensure(general, {"lom:identifier", "lom:entry"})
        ->SetText(CGalleryObject::FileText(metadata.m_identifier).GetString());

    tinyxml2::XMLElement* title = Ensure(general, {"lom:title"});
    title->DeleteChildren();
    const LanguageStringBlock* titles = metadata.m_titles;
    if (BlockCount(titles) == 0) {
        AppendLanguageString(title, L"en", nullptr);
    }
    for (int i = 0; i < BlockCount(titles); ++i) {
        AppendLanguageString(title, titles->GetKey(i), titles->GetValue(i));
    }

    tinyxml2::XMLElement* version = Ensure(lom, {"lom:lifeCycle", "lom:version", "lom:string"});
    if (!version->Attribute("language")) {
        version->SetAttribute("language", "en");
    }
    version->SetText(CGalleryObject::FileText(metadata.m_version).GetString());

    RemoveChildren(general, "lom:keyword");
    const LanguageStringBlock* keywords = metadata.m_keywords;
    if (BlockCount(keywords) == 0) {
        AppendLanguageString(general->InsertNewChildElement("lom:keyword"), L"en", nullptr);
    }
    for (int i = 0; i < BlockCount(keywords); ++i) {
        AppendLanguageString(general->InsertNewChildElement("lom:keyword"), keywords->GetKey(i), keywords->GetValue(i));
    }

    if (IsBlankText(metadata.m_sortKey)) {
        RemoveChildren(general, "zoltagallery:sortoverride");
    } else {
        tinyxml2::XMLElement* sort = Ensure(general, {"zoltagallery:sortoverride"});
        sort->DeleteChildren();
        AppendLanguageString(sort, L"en", metadata.m_sortKey);
    }
    SetOrRemove(general, "zoltagallery:originalid", metadata.m_originalId);
    SetOrRemove(general, "zoltagallery:showinlanguages", metadata.m_showInLanguages);
    SetOrRemove(general, "zoltagallery:hideinlanguages", metadata.m_hideInLanguages);
}

bool HasXmlExtension(const CAtlString& path)
{
    return CZoltaFilePath(path).GetExtension().CompareNoCase(L".xml") == 0;
}

[[nodiscard]] HRESULT WriteWholeFile(const CGalleryMetadata& metadata, const CZoltaFilePath& file)
{
    IZOLTAXMLWriter* writer = nullptr;
    HRESULT result = CreateFileWriter(&writer, file);
    if (FAILED(result)) {
        return result;
    }
    result = writer->WriteHeader();
    if (SUCCEEDED(result)) {
        result = WriteLom(metadata, writer, false);
    }
    if (SUCCEEDED(result)) {
        result = writer->GetResult(nullptr);
    }
    writer->Release();
    return result;
}

tinyxml2::XMLElement* FindLomRoot(tinyxml2::XMLDocument& document)
{
    tinyxml2::XMLElement* root = document.RootElement();
    if (root && std::strcmp(root->Name(), "lom:lom") != 0) {
        root = root->FirstChildElement("lom:lom");
    }
    return root;
}

bool IsListedIn(const wchar_t* list, const wchar_t* language)
{
    const std::wstring items(list);
    std::size_t start = 0;
    while (start <= items.size()) {
        std::size_t end = items.find(L';', start);
        if (end == std::wstring::npos) {
            end = items.size();
        }
        const std::wstring item = items.substr(start, end - start);
        if (MatchLanguage(item.c_str(), language) >= 2) {
            return true;
        }
        start = end + 1;
    }
    return false;
}

}  // namespace

HRESULT WriteLom(const CGalleryMetadata& metadata, IZOLTAXMLWriter* writer, bool embedded)
{
    if (!writer) {
        return E_POINTER;
    }
    LomOut out(writer);
    out.Start("lom:lom");
    if (!embedded) {
        out.Attribute("xmlns:lom", kLomNamespaceUri);
        out.Attribute("xmlns:zoltagallery", GALLERY_NAMESPACE_URI);
    }
    WriteMetaMetadata(out);
    WriteGeneral(out, metadata);
    WriteTechnical(out, metadata);
    WriteRights(out);
    WriteLifeCycle(out, metadata);
    out.End("lom:lom");
    return out.Result();
}

HRESULT LoadMetadataXml(CGalleryMetadata& metadata, const tinyxml2::XMLElement* lom)
{
    if (!lom) {
        return E_POINTER;
    }
    // The first text that can't be stored ends the load with its code.
    const tinyxml2::XMLElement* general = lom->FirstChildElement("lom:general");
    const tinyxml2::XMLElement* technical = lom->FirstChildElement("lom:technical");
    if (const tinyxml2::XMLElement* created = Walk(lom, {"lom:lifeCycle", "zoltagallery:creationdatetime"})) {
        metadata.m_creationTime = static_cast<std::uint32_t>(ParseDate(TextOf(created)));
    }
    const struct {
        const tinyxml2::XMLElement* element;
        HRESULT (CGalleryMetadata::*setter)(const wchar_t*);
    } texts[] = {
        {Walk(general, {"lom:identifier", "lom:entry"}), &CGalleryMetadata::SetIdentifier},
        {Walk(lom, {"lom:lifeCycle", "lom:version", "lom:string"}), &CGalleryMetadata::SetVersion},
        {Walk(lom, {"lom:technical", "lom:format"}), &CGalleryMetadata::SetFormat},
        {Walk(general, {"zoltagallery:sortoverride", "lom:string"}), &CGalleryMetadata::SetSortKey},
        {Walk(general, {"zoltagallery:originalid"}), &CGalleryMetadata::SetOriginalId},
        {Walk(general, {"zoltagallery:showinlanguages"}), &CGalleryMetadata::SetShowInLanguages},
        {Walk(general, {"zoltagallery:hideinlanguages"}), &CGalleryMetadata::SetHideInLanguages},
    };
    HRESULT result = S_OK;
    for (const auto& text : texts) {
        if (FAILED(result = LoadText(text.element, metadata, text.setter))) {
            return result;
        }
    }
    if (const tinyxml2::XMLElement* title = Walk(general, {"lom:title"})) {
        metadata.m_titles->Clear();
        if (FAILED(result = AddLanguageStrings(*metadata.m_titles, title))) {
            return result;
        }
    }
    if (general) {
        metadata.m_keywords->Clear();
        for (const tinyxml2::XMLElement* keyword = general->FirstChildElement("lom:keyword"); keyword;
             keyword = keyword->NextSiblingElement("lom:keyword"))
        {
            if (FAILED(result = AddLanguageStrings(*metadata.m_keywords, keyword))) {
                return result;
            }
        }
    }
    return technical ? LoadRequirements(metadata, technical) : S_OK;
}

HRESULT LoadMetadataFromBuffer(CGalleryMetadata& metadata, const char* data, std::size_t size)
{
    if (!data || size == 0) {
        return E_FAIL;
    }
    tinyxml2::XMLDocument document;
    if (document.Parse(data, size) != tinyxml2::XML_SUCCESS) {
        return E_FAIL;
    }
    tinyxml2::XMLElement* lom = FindLomRoot(document);
    return lom ? LoadMetadataXml(metadata, lom) : E_FAIL;
}

HRESULT LoadMetadataFromArchive(CGalleryMetadata& metadata, const CAtlString& archive)
{
    unsigned char* buffer = nullptr;
    std::size_t size = 0;
    if (!ZipExtractToMemory(CZoltaFilePath(archive), CAtlString(L"metadata.xml"), buffer, size)) {
        return E_FAIL;
    }
    const HRESULT result = LoadMetadataFromBuffer(metadata, reinterpret_cast<const char*>(buffer), size);
    std::free(buffer);
    return result;
}

HRESULT SaveMetadataXml(const CGalleryMetadata& metadata, const CAtlString& path)
{
    if (path.IsEmpty()) {
        return E_INVALIDARG;
    }
    const CZoltaFilePath file =
        HasXmlExtension(path) ? CZoltaFilePath(path) : CZoltaDirectoryPath(path).GetFile(L"metadata.xml");
    if (!file.Exists()) {
        return WriteWholeFile(metadata, file);
    }
    tinyxml2::XMLDocument document;
    {
        std::FILE* input = OpenFile(file, "rb");
        if (!input) {
            return E_FAIL;
        }
        const tinyxml2::XMLError loaded = document.LoadFile(input);
        std::fclose(input);
        if (loaded != tinyxml2::XML_SUCCESS) {
            return E_FAIL;
        }
    }
    tinyxml2::XMLElement* lom = FindLomRoot(document);
    if (!lom) {
        return E_FAIL;
    }
    UpdateDocument(metadata, lom);
    std::FILE* output = OpenFile(file, "wb");
    if (!output) {
        return E_FAIL;
    }
    const tinyxml2::XMLError saved = document.SaveFile(output);
    const bool closed = std::fclose(output) == 0;
    return saved == tinyxml2::XML_SUCCESS && closed ? S_OK : E_FAIL;
}

bool IsVisibleInLanguage(const CGalleryMetadata& metadata, const wchar_t* language)
{
    const CAtlString current = IsBlankText(language) ? GetCurrentLanguage() : CAtlString(language);
    if (!IsBlankText(metadata.m_hideInLanguages) && IsListedIn(metadata.m_hideInLanguages, current.GetString())) {
        return false;
    }
    if (!IsBlankText(metadata.m_showInLanguages)) {
        return IsListedIn(metadata.m_showInLanguages, current.GetString());
    }
    return true;
}

HRESULT CopyMetadataForRebuild(CGalleryMetadata& target, const CGalleryMetadata& source)
{
    HRESULT result = target.m_keywords->CopyFrom(*source.m_keywords);
    if (SUCCEEDED(result)) {
        result = target.m_titles->CopyFrom(*source.m_titles);
    }
    if (SUCCEEDED(result)) {
        result = target.SetSortKey(source.m_sortKey);
    }
    if (SUCCEEDED(result)) {
        result = target.SetVersion(source.m_version);
    }
    if (SUCCEEDED(result)) {
        result = target.SetFormat(source.m_format);
    }
    if (SUCCEEDED(result)) {
        result = target.SetIdentifier(source.m_identifier);
    }
    if (SUCCEEDED(result)) {
        target.m_creationTime = source.m_creationTime;
        result = target.SetOriginalId(IsBlankText(source.m_originalId) ? source.m_identifier : source.m_originalId);
    }
    if (SUCCEEDED(result)) {
        result = target.SetShowInLanguages(source.m_showInLanguages);
    }
    if (SUCCEEDED(result)) {
        result = target.SetHideInLanguages(source.m_hideInLanguages);
    }
    if (SUCCEEDED(result)) {
        result = target.m_minimumVersions->CopyFrom(*source.m_minimumVersions);
    }
    if (SUCCEEDED(result)) {
        result = target.m_maximumVersions->CopyFrom(*source.m_maximumVersions);
    }
    return result;
}

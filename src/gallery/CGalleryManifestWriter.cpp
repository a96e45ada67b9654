#include "gallery/CGalleryManifestWriter.h"

#include "gallery/CGalleryActivity.h"
#include "gallery/CGalleryFolder.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/CGalleryObject.h"
#include "gallery/CGalleryOrganization.h"
#include "foundation/IZOLTAXMLWriter.h"
#include "gallery/LanguageStringBlock.h"
#include "gallery/lom/LomMetadata.h"

namespace {

constexpr const char* kFileSource = "ZOLTA Scrivent Linux Version 9.7.43.0";

std::string IdText(std::uint32_t number)
{
    return "id" + std::to_string(number);
}

}  // namespace

CGalleryManifestWriter::CGalleryManifestWriter(const CGalleryManifest& manifest, IZOLTAXMLWriter* writer)
    : m_manifest(manifest),
      m_writer(writer)
{}

void CGalleryManifestWriter::Start(const char* name)
{
    if (SUCCEEDED(m_result)) {
        m_result = m_writer->StartElement(name);
    }
}

void CGalleryManifestWriter::End(const char* name)
{
    if (SUCCEEDED(m_result)) {
        m_result = m_writer->EndElement(name);
    }
}

void CGalleryManifestWriter::Attribute(const char* name, const char* value)
{
    if (SUCCEEDED(m_result)) {
        m_result = m_writer->AddAttribute(name, value);
    }
}

void CGalleryManifestWriter::Text(const char* text)
{
    if (SUCCEEDED(m_result)) {
        m_result = m_writer->AddText(text);
    }
}

std::string CGalleryManifestWriter::NextId()
{
    return IdText(m_counter++);
}

HRESULT CGalleryManifestWriter::Write()
{
    if (!m_writer) {
        return E_POINTER;
    }
    m_result = m_writer->WriteHeader();
    Start("manifest");
    Attribute("identifier", NextId().c_str());
    Attribute("version", "2006-01");
    Attribute("zoltagallery:filesource", kFileSource);
    Attribute("xmlns", kImscpNamespaceUri);
    Attribute("xmlns:adlcp", kAdlcpNamespaceUri);
    Attribute("xmlns:lom", kLomNamespaceUri);
    Attribute("xmlns:zoltagallery", GALLERY_NAMESPACE_URI);
    if (m_manifest.m_stringVersions && m_manifest.m_stringVersions->GetCount() > 0) {
        WriteStringVersions(*m_manifest.m_stringVersions);
    }
    WriteMetadataElement(m_manifest);

    const CGalleryOrganizationList& organizations = *m_manifest.GetOrganizations();
    Start("organizations");
    if (organizations.GetCount() > 0) {
        // The default is the first organization, which takes the next number.
        Attribute("default", IdText(m_counter).c_str());
    }
    for (std::uint32_t i = 0; i < organizations.GetCount(); ++i) {
        WriteOrganization(*organizations.GetAt(i));
    }
    End("organizations");

    Start("resources");
    for (std::uint32_t o = 0; o < organizations.GetCount(); ++o) {
        const CGalleryFolderList& roots = *organizations.GetAt(o)->m_items;
        for (std::uint32_t i = 0; i < roots.GetCount(); ++i) {
            WriteResources(*roots.GetAt(i));
        }
    }
    End("resources");
    End("manifest");
    return m_result;
}

void CGalleryManifestWriter::WriteStringVersions(const LanguageStringBlock& versions)
{
    Start("zoltagallery:stringversions");
    for (int i = 0; i < versions.GetCount(); ++i) {
        Start("lom:string");
        Attribute("language", CAtlStringA(versions.GetKey(i)).GetString());
        Text(CGalleryObject::FileText(versions.GetValue(i)));
        End("lom:string");
    }
    End("zoltagallery:stringversions");
}

void CGalleryManifestWriter::WriteMetadataElement(const CGalleryObject& object)
{
    Start("metadata");
    Attribute("schema", "ADL SCORM");
    Attribute("schemaversion", "CAM 1.3");
    if (SUCCEEDED(m_result)) {
        m_result = WriteLom(*object.m_metadata, m_writer, true);
    }
    End("metadata");
}

void CGalleryManifestWriter::WriteTitle(const LanguageStringBlock* titles)
{
    Start("title");
    Text(CGalleryObject::FileText(titles ? titles->Lookup(nullptr) : nullptr));
    End("title");
}

void CGalleryManifestWriter::WriteOrganization(const CGalleryOrganization& organization)
{
    Start("organization");
    Attribute("identifier", NextId().c_str());
    Attribute("zoltagallery:readonly", organization.m_readOnly ? "true" : "false");
    WriteTitle(organization.m_metadata->m_titles);
    for (std::uint32_t i = 0; i < organization.m_items->GetCount(); ++i) {
        WriteCategory(*organization.m_items->GetAt(i));
    }
    WriteMetadataElement(organization);
    End("organization");
}

void CGalleryManifestWriter::WriteCategory(const CGalleryFolder& category)
{
    Start("item");
    Attribute("identifier", NextId().c_str());
    WriteTitle(category.m_metadata->m_titles);
    for (std::uint32_t i = 0; i < category.m_children->GetCount(); ++i) {
        WriteCategory(*category.m_children->GetAt(i));
    }
    for (std::uint32_t i = 0; i < category.m_activities->GetCount(); ++i) {
        WriteActivity(*category.m_activities->GetAt(i));
    }
    WriteMetadataElement(category);
    End("item");
}

void CGalleryManifestWriter::WriteActivity(const CGalleryActivity& activity)
{
    Start("item");
    Attribute("identifier", NextId().c_str());
    const std::uint32_t resource = m_counter++;
    m_resourceIds[&activity] = resource;
    Attribute("identifierref", IdText(resource).c_str());
    WriteTitle(activity.m_metadata->m_titles);
    WriteMetadataElement(activity);
    End("item");
}

void CGalleryManifestWriter::WriteResources(const CGalleryFolder& category)
{
    for (std::uint32_t i = 0; i < category.m_children->GetCount(); ++i) {
        WriteResources(*category.m_children->GetAt(i));
    }
    for (std::uint32_t i = 0; i < category.m_activities->GetCount(); ++i) {
        const CGalleryActivity* activity = category.m_activities->GetAt(i);
        const auto found = m_resourceIds.find(activity);
        const std::string identifier = IdText(found == m_resourceIds.end() ? 0 : found->second);
        const CAtlStringA href = CGalleryObject::FileText(activity->m_href);
        Start("resource");
        Attribute("identifier", identifier.c_str());
        Attribute("type", "webcontent");
        Attribute("adlcp:scormType", "asset");
        Attribute("href", href.GetString());
        Start("file");
        Attribute("href", href.GetString());
        End("file");
        End("resource");
    }
}

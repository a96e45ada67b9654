#pragma once

// Small builders and views of gallery trees for the manifest tests.

#include "libZoltaAtl/CAtlString.h"
#include "libZoltaAtl/CAtlStringA.h"
#include "gallery/CGalleryActivity.h"
#include "gallery/CGalleryFolder.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryManifestIO.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/CGalleryOrganization.h"
#include "foundation/IZOLTAXMLWriter.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <QString>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace manifest_test {

using curatool::test::U;
using curatool::test::W;

// Fails the test when a set-up step fails, for helpers that cannot ASSERT.
inline void Ok(HRESULT result)
{
    if (FAILED(result))
        ADD_FAILURE() << "set-up step failed with " << std::hex << result;
}

inline CGalleryOrganization* AddOrganization(CGalleryManifest& manifest, const wchar_t* id, const wchar_t* title)
{
    CGalleryOrganization* organization = nullptr;
    EXPECT_EQ(S_OK, CGalleryOrganization::Create(&organization));
    Ok(organization->m_metadata->SetIdentifier(id));
    Ok(organization->m_metadata->m_titles->Add(L"en", title));
    EXPECT_EQ(S_OK, manifest.AddOrganization(organization));
    return organization;
}

inline CGalleryFolder* NewCategory(const wchar_t* id, const wchar_t* title)
{
    CGalleryFolder* folder = nullptr;
    EXPECT_EQ(S_OK, CGalleryFolder::Create(&folder));
    Ok(folder->m_metadata->SetIdentifier(id));
    Ok(folder->m_metadata->m_titles->Add(L"en", title));
    return folder;
}

inline CGalleryFolder* AddCategory(CGalleryOrganization* organization, const wchar_t* id, const wchar_t* title)
{
    CGalleryFolder* folder = NewCategory(id, title);
    EXPECT_EQ(S_OK, organization->AddItem(folder));
    return folder;
}

inline CGalleryFolder* AddCategory(CGalleryFolder* parent, const wchar_t* id, const wchar_t* title)
{
    CGalleryFolder* folder = NewCategory(id, title);
    EXPECT_EQ(S_OK, parent->AddChild(folder));
    return folder;
}

inline CGalleryActivity* AddActivity(CGalleryFolder* folder, const wchar_t* id, const wchar_t* href,
                                     const wchar_t* title)
{
    CGalleryActivity* activity = nullptr;
    EXPECT_EQ(S_OK, CGalleryActivity::Create(&activity));
    Ok(activity->m_metadata->SetIdentifier(id));
    Ok(activity->m_metadata->m_titles->Add(L"en", title));
    Ok(activity->m_metadata->SetFormat(L"application/x-zoltaworks-galleryitem"));
    Ok(activity->SetHref(href));
    EXPECT_EQ(S_OK, folder->AddActivity(activity));
    return activity;
}

inline std::string DumpBlock(const LanguageStringBlock* block)
{
    std::string text = "{";
    for (int i = 0; block && i < block->GetCount(); ++i)
        text += U(block->GetKey(i)) + "=" + U(block->GetValue(i)) + ";";
    return text + "}";
}

inline std::string DumpMetadata(const CGalleryMetadata& metadata)
{
    return "id=" + U(metadata.m_identifier) + " v=" + U(metadata.m_version) + " sort=" + U(metadata.m_sortKey) +
           " fmt=" + U(metadata.m_format) + " t=" + DumpBlock(metadata.m_titles) +
           " k=" + DumpBlock(metadata.m_keywords) + " orig=" + U(metadata.m_originalId) +
           " show=" + U(metadata.m_showInLanguages) + " hide=" + U(metadata.m_hideInLanguages) +
           " min=" + DumpBlock(metadata.m_minimumVersions) + " max=" + DumpBlock(metadata.m_maximumVersions) +
           " time=" + std::to_string(metadata.m_creationTime);
}

inline void DumpFolder(const CGalleryFolder& folder, const std::string& indent, std::string& out)
{
    EXPECT_EQ(eGalleryObjectFolder, folder.m_type);
    out += indent + "category " + DumpMetadata(*folder.m_metadata) + "\n";
    for (std::uint32_t i = 0; i < folder.m_activities->GetCount(); ++i) {
        const CGalleryActivity* activity = folder.m_activities->GetAt(i);
        EXPECT_EQ(&folder, activity->m_parent);
        EXPECT_EQ(eGalleryObjectActivity, activity->m_type);
        out += indent + "  activity href=" + U(activity->m_href) + " " + DumpMetadata(*activity->m_metadata) + "\n";
    }
    for (std::uint32_t i = 0; i < folder.m_children->GetCount(); ++i) {
        EXPECT_EQ(&folder, folder.m_children->GetAt(i)->m_parent);
        EXPECT_EQ(folder.m_organization, folder.m_children->GetAt(i)->m_organization);
        DumpFolder(*folder.m_children->GetAt(i), indent + "  ", out);
    }
}

// The whole tree as text, back references checked on the way.
inline std::string Dump(const CGalleryManifest& manifest)
{
    std::string out =
        "manifest " + DumpMetadata(*manifest.m_metadata) + " sv=" + DumpBlock(manifest.m_stringVersions) + "\n";
    const CGalleryOrganizationList& organizations = *manifest.GetOrganizations();
    for (std::uint32_t o = 0; o < organizations.GetCount(); ++o) {
        const CGalleryOrganization* organization = organizations.GetAt(o);
        EXPECT_EQ(&manifest, organization->m_manifest);
        out += "organization ro=" + std::to_string(organization->m_readOnly) + " " +
               DumpMetadata(*organization->m_metadata) + "\n";
        for (std::uint32_t i = 0; i < organization->m_items->GetCount(); ++i) {
            const CGalleryFolder* root = organization->m_items->GetAt(i);
            EXPECT_EQ(nullptr, root->m_parent);
            EXPECT_EQ(organization, root->m_organization);
            DumpFolder(*root, "  ", out);
        }
    }
    return out;
}

inline std::string DocumentOf(const CGalleryManifest& manifest)
{
    IZOLTAXMLWriter* writer = nullptr;
    EXPECT_EQ(S_OK, CreateStringWriter(&writer));
    EXPECT_EQ(S_OK, CGalleryManifestIO::WriteDocument(manifest, writer));
    CAtlStringA text;
    writer->GetResult(&text);
    writer->Release();
    return std::string(text.GetString(), static_cast<std::size_t>(text.GetLength()));
}

// Every file below `folder` with its bytes, by relative path.
inline std::map<std::string, std::string> Snapshot(const std::string& folder)
{
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file())
            files[std::filesystem::relative(entry.path(), folder).string()] =
                curatool::test::ReadFile(entry.path().string());
    }
    return files;
}

}  // namespace manifest_test

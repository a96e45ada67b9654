#include "gallery/CGalleryActivity.h"
#include "gallery/CGalleryFolder.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryManifestIO.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/CGalleryOrganization.h"
#include "gallery/GalleryInitializeThread.h"
#include "gallery/GalleryLibrary.h"
#include "gallery/GalleryPlaces.h"
#include "gallery/lom/LomMetadata.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <gtest/gtest.h>

#include <QByteArray>

#include <atomic>
#include <new>

// Gallery texts are the only users of the nothrow array form: failing its n-th call stands for
// running out of memory at that point of the gallery code.
namespace {
std::atomic<int> g_failAt{0};
std::atomic<int> g_calls{0};
}  // namespace

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    if (g_failAt > 0 && ++g_calls == g_failAt)
        return nullptr;
    try {
        return ::operator new[](size);
    }
    catch (...) {
        return nullptr;
    }
}

namespace {

using namespace curatool::test;

// Each case moves HOME to fresh scratch folders and puts it back.
class IgnoredResultsTest : public ::testing::Test {
protected:
    void TearDown() override { qputenv("HOME", m_oldHome); }
    const QByteArray m_oldHome = qgetenv("HOME");
};

// Whatever allocation fails while My Content is made, what is saved is whole or nothing.
TEST_F(IgnoredResultsTest, MyContentIsSavedWholeOrNotAtAll)
{
    for (int failAt = 1; failAt <= 12; ++failAt) {
        SCOPED_TRACE(failAt);
        qputenv("HOME", QByteArray::fromStdString(MakeScratchDir("home")));
        g_calls = 0;
        g_failAt = failAt;
        static_cast<void>(GalleryLibraryInitialize());
        g_failAt = 0;
        GalleryLibraryShutdown();
        const std::string text = ReadFile(U(GetMyContentManifestPath().GetPath()));
        if (text.empty())
            continue;
        for (const char* part :
             {"default?manifest=My%20Content<", "default?organization=My%20Content<", "invalid/My%20Content<"})
            EXPECT_NE(text.find(part), std::string::npos) << part;
        const std::size_t title = text.find("<title>My Content</title>");
        EXPECT_NE(text.find("<title>My Content</title>", title + 1), std::string::npos);
    }
}

// An old My Content item is imported whole, at the latest by the start after a failed one.
TEST_F(IgnoredResultsTest, AnOldItemIsImportedWholeOnceWhateverAllocationFails)
{
    const std::string old = MakeScratchDir("old-my-content");
    ASSERT_TRUE(WriteFile(old + "/frog.galleryitem", "frog"));
    for (int failAt = 1;; ++failAt) {
        SCOPED_TRACE(failAt);
        qputenv("HOME", QByteArray::fromStdString(MakeScratchDir("home")));
        ASSERT_EQ(S_OK, GalleryLibraryInitialize());
        GalleryLibraryShutdown();
        bool failedOne = false;
        for (const bool armed : {true, false}) {
            CGalleryInitializeThread thread;
            thread.SetOldMyContentFolder(FolderPath(old));
            g_calls = 0;
            g_failAt = armed ? failAt : 0;
            static_cast<void>(thread.Run());
            failedOne = failedOne || (armed && g_calls >= failAt);
            g_failAt = 0;
            GalleryLibraryShutdown();
        }
        CGalleryManifest reopened;
        const CAtlString myContent = GetMyContentManifestPath().GetPath();
        ASSERT_EQ(S_OK, CGalleryManifestIO::Open(reopened, myContent.GetString(), nullptr, false));
        const CGalleryFolder* root = reopened.m_organizations->GetAt(0)->m_items->GetAt(0);
        ASSERT_EQ(1u, root->m_activities->GetCount());
        const CGalleryActivity* frog = root->m_activities->GetAt(0);
        EXPECT_EQ("frog.galleryitem", U(frog->m_href));
        EXPECT_EQ("frog", U(frog->m_metadata->m_titles->Lookup(L"en")));
        EXPECT_FALSE(U(frog->m_metadata->m_identifier).empty());
        if (!failedOne)
            break;
    }
}

// A record read while an allocation fails is whole, or the read fails.
TEST_F(IgnoredResultsTest, MetadataIsReadWholeOrFails)
{
    const std::string lom =
        "<lom:lom><lom:general><lom:identifier><lom:entry>urn:x</lom:entry></lom:identifier>"
        "<lom:title><lom:string language=\"en\">Lion</lom:string><lom:string language=\"de\">L</lom:string></lom:title>"
        "<lom:keyword><lom:string language=\"en\">cat</lom:string></lom:keyword>"
        "<zoltagallery:sortoverride><lom:string>1</lom:string></zoltagallery:sortoverride>"
        "<zoltagallery:originalid>urn:o</zoltagallery:originalid>"
        "<zoltagallery:showinlanguages>en</zoltagallery:showinlanguages>"
        "<zoltagallery:hideinlanguages>fr</zoltagallery:hideinlanguages></lom:general>"
        "<lom:lifeCycle><lom:version><lom:string>2.5</lom:string></lom:version></lom:lifeCycle>"
        "<lom:technical><lom:format>png</lom:format><lom:requirement><lom:orComposite>"
        "<lom:type><lom:value>browser</lom:value></lom:type><lom:name><lom:value>firefox</lom:value></lom:name>"
        "<lom:minimumVersion>3</lom:minimumVersion><lom:maximumVersion>9</lom:maximumVersion>"
        "</lom:orComposite></lom:requirement></lom:technical></lom:lom>";
    const auto describe = [](const CGalleryMetadata& m) {
        std::string text;
        for (const wchar_t* field : {m.m_identifier, m.m_version, m.m_sortKey, m.m_format, m.m_originalId,
                                     m.m_showInLanguages, m.m_hideInLanguages})
            text += U(field) + "|";
        for (const LanguageStringBlock* block : {m.m_titles, m.m_keywords, m.m_minimumVersions, m.m_maximumVersions})
            text += std::to_string(block->GetCount());
        return text;
    };
    const std::string whole = "urn:x|2.5|1|png|urn:o|en|fr|2111";
    for (int failAt = 1;; ++failAt) {
        SCOPED_TRACE(failAt);
        CGalleryMetadata* metadata = nullptr;
        ASSERT_EQ(S_OK, CGalleryMetadata::Create(&metadata));
        g_calls = 0;
        g_failAt = failAt;
        const HRESULT result = LoadMetadataFromBuffer(*metadata, lom.data(), lom.size());
        const bool failedOne = g_calls >= failAt;
        g_failAt = 0;
        if (SUCCEEDED(result)) {
            EXPECT_EQ(whole, describe(*metadata));
        }
        CGalleryMetadata::Destroy(metadata);
        if (!failedOne)
            break;
    }
}

}  // namespace

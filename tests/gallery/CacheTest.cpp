#include "gallery/GalleryPlaces.h"
#include "gallery/GalleryText.h"
#include "gallery/cache/ManifestCache.h"
#include "ManifestTestTree.h"

#include <gtest/gtest.h>

#include <zlib.h>

#include <cstring>
#include <random>
#include <string>
#include <sys/stat.h>
#include <utime.h>

namespace {

using namespace manifest_test;
using curatool::test::MakeScratchDir;
using curatool::test::ReadFile;
using curatool::test::WriteFile;

// The fields every record of these trees carries beside its identifier and English title.
void FillMetadata(CGalleryMetadata& metadata)
{
    ASSERT_EQ(metadata.SetVersion(L"1.2"), S_OK);
    const std::wstring french = std::wstring(metadata.m_titles->GetValue(0)) + L" \u00e9t\u00e9";
    ASSERT_EQ(metadata.m_titles->Add(L"fr", french.c_str()), S_OK);
    ASSERT_EQ(metadata.m_keywords->Add(L"en", L"alpha;beta"), S_OK);
    metadata.m_creationTime = 1165000000;
}

// A manifest of `organizations` trees, each with a root category holding a sub-category;
// both categories hold `activities` activities.
void BuildTree(CGalleryManifest& manifest, int organizations, int activities)
{
    ASSERT_EQ(manifest.m_metadata->SetIdentifier(L"urn:manifest"), S_OK);
    ASSERT_EQ(manifest.m_metadata->m_titles->Add(L"en", L"Manifest"), S_OK);
    FillMetadata(*manifest.m_metadata);
    ASSERT_EQ(manifest.m_stringVersions->Add(L"en", L"3.0"), S_OK);
    for (int o = 0; o < organizations; ++o) {
        const std::wstring n = std::to_wstring(o);
        CGalleryOrganization* organization = AddOrganization(manifest, (L"urn:org" + n).c_str(), L"Organization");
        CGalleryFolder* root = AddCategory(organization, (L"urn:root" + n).c_str(), L"Root");
        CGalleryFolder* child = AddCategory(root, (L"urn:child" + n).c_str(), L"Child");
        for (CGalleryMetadata* metadata : {organization->m_metadata, root->m_metadata, child->m_metadata})
            FillMetadata(*metadata);
        for (CGalleryFolder* folder : {root, child}) {
            for (int a = 0; a < activities; ++a) {
                const std::wstring id = std::wstring(folder->GetIdentifier()) + L"/a" + std::to_wstring(a);
                const std::wstring href = L"pics/p" + std::to_wstring(a) + L".png";
                FillMetadata(*AddActivity(folder, id.c_str(), href.c_str(), L"Picture")->m_metadata);
            }
        }
    }
}

std::uint32_t WordAt(const std::string& bytes, std::size_t offset)
{
    std::uint32_t value;
    std::memcpy(&value, bytes.data() + offset, 4);
    return value;
}

void PutWord(std::string& bytes, std::size_t offset, std::uint32_t value)
{
    std::memcpy(&bytes[offset], &value, 4);
}

// Recomputes the CRC, so that a crafted file reaches the fix-up walk.
void Reseal(std::string& bytes)
{
    PutWord(bytes, 64,
            static_cast<std::uint32_t>(
                crc32(0, reinterpret_cast<const Bytef*>(bytes.data()) + 68, static_cast<uInt>(bytes.size() - 68))));
}

HRESULT ReadBytes(CGalleryManifest& manifest, const std::string& bytes)
{
    return ReadManifestImageFromMemory(manifest, bytes.data(), bytes.size(), L"memory.cache");
}

std::string ImageOf(const CGalleryManifest& manifest, const std::string& folder, const char* name = "tree.cache")
{
    const std::string path = folder + "/" + name;
    EXPECT_EQ(WriteManifestImage(manifest, CZoltaFilePath(path.c_str())), S_OK);
    return ReadFile(path);
}

std::int64_t MTime(const std::string& path)
{
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mtime;
}

void SetMTime(const std::string& path, std::int64_t seconds)
{
    struct utimbuf times {};
    times.actime = times.modtime = static_cast<time_t>(seconds);
    ASSERT_EQ(::utime(path.c_str(), &times), 0);
}

TEST(ManifestImage, SameTreeGivesSameBytesAndComesBackWholeWithBackReferences)
{
    const std::string folder = MakeScratchDir("image-bytes");
    CGalleryManifest first;
    CGalleryManifest second;
    for (CGalleryManifest* tree : {&first, &second}) {
        BuildTree(*tree, 2, 3);
        tree->m_organizations->GetAt(1)->m_readOnly = true;
        ASSERT_EQ(tree->m_metadata->SetSortKey(L"zz"), S_OK);
        ASSERT_EQ(tree->m_metadata->m_maximumVersions->Add(L"ie", L"7.0"), S_OK);
        ASSERT_EQ(tree->SetPath(L"/galleries/One/imsmanifest.xml"), S_OK);
    }
    const std::string a = ImageOf(first, folder, "a.cache");
    ASSERT_GT(a.size(), 200u);
    EXPECT_EQ(a, ImageOf(second, folder, "b.cache"));
    EXPECT_EQ(a.substr(0, 64), std::string(kManifestImageMagic, 64));
    EXPECT_EQ(a.substr(0, 30), "ZOLTA Scrivent Binary Manifest");
    EXPECT_EQ(WordAt(a, 64), crc32(0, reinterpret_cast<const Bytef*>(a.data()) + 68, static_cast<uInt>(a.size() - 68)));
    EXPECT_EQ(a.size() % 4, 0u);
    // The manifest record: kind 4, the path first behind the record, an empty string behind it.
    EXPECT_EQ(WordAt(a, 68 + 4), 4u);
    EXPECT_EQ(WordAt(a, 68 + 8), 108u);
    EXPECT_EQ(a[108], '/');
    EXPECT_EQ(WordAt(a, 68 + 32), 0u);

    const wchar_t* imageText = nullptr;
    {
        CGalleryManifest loaded;
        ASSERT_EQ(ReadManifestImage(loaded, CZoltaFilePath((folder + "/a.cache").c_str())), S_OK);
        EXPECT_EQ(Dump(loaded), Dump(first));
        EXPECT_EQ(U(loaded.GetPath()), "/galleries/One/imsmanifest.xml");
        EXPECT_EQ(U(loaded.m_cachePath), folder + "/a.cache");
        EXPECT_FALSE(loaded.IsModified());
        // Texts stay in the read buffer.
        imageText = loaded.m_metadata->m_identifier;
        EXPECT_TRUE(CGalleryImageRegistry::Contains(imageText));
        EXPECT_TRUE(CGalleryImageRegistry::Contains(loaded.m_organizations->GetAt(0)));
        EXPECT_EQ(ImageOf(loaded, folder, "again.cache"), a);
    }
    // The manifest freed the tree, then its image.
    EXPECT_FALSE(CGalleryImageRegistry::Contains(imageText));
}

// Read in one walk when the objects fit the first guess of room, else in a counting walk and a
// building one: bare objects need several times the file's size.
TEST(ManifestImage, BareAndTextRichTreesBothComeBackWhole)
{
    const std::string folder = MakeScratchDir("image-arena");
    for (const bool texts : {false, true}) {
        CGalleryManifest original;
        CGalleryFolder* category = AddCategory(AddOrganization(original, L"o", L"O"), L"c", L"C");
        for (int i = 0; i < 3000; ++i) {
            const std::wstring n = std::to_wstring(i);
            CGalleryActivity* activity = nullptr;
            if (texts) {
                AddActivity(category, (L"urn:activity:" + n).c_str(), (L"pictures/item" + n + L".png").c_str(),
                            (L"Item " + n).c_str());
            } else {
                ASSERT_EQ(S_OK, CGalleryActivity::Create(&activity));
                ASSERT_EQ(S_OK, category->AddActivity(activity));
            }
        }
        ImageOf(original, folder);
        CGalleryManifest loaded;
        ASSERT_EQ(S_OK, ReadManifestImage(loaded, CZoltaFilePath((folder + "/tree.cache").c_str()))) << texts;
        EXPECT_EQ(Dump(original), Dump(loaded)) << texts;
    }
}

TEST(ManifestImage, DamagedShortOrOutOfRangeFilesFailBeforeAnyOffsetIsUsed)
{
    const std::string folder = MakeScratchDir("image-damaged");
    CGalleryManifest tree;
    BuildTree(tree, 1, 2);
    const std::string bytes = ImageOf(tree, folder);
    const std::string before = Dump(tree);
    const auto size = static_cast<std::uint32_t>(bytes.size());
    const auto patched = [&](std::size_t at, std::uint32_t value) {
        std::string copy = bytes;
        PutWord(copy, at, value);
        Reseal(copy);
        return copy;
    };

    std::string flipped = bytes;
    flipped.back() ^= 0x01;
    std::string badMagic = bytes;
    badMagic[3] = 'x';
    const struct {
        std::string bytes;
        HRESULT result;
    } cases[] = {
        {flipped, E_FAIL},
        {badMagic, E_FAIL},
        {bytes.substr(0, 0), E_FAIL},
        {bytes.substr(0, 63), E_FAIL},
        {bytes.substr(0, 68), E_FAIL},
        {bytes.substr(0, bytes.size() / 2), E_FAIL},
        {bytes.substr(0, bytes.size() - 1), E_FAIL},
        // The manifest's path string at the file size is outside; so is a record running past the
        // end, and a misaligned one.
        {patched(68 + 8, size), E_POINTER},
        {patched(68 + 0, size - 8), E_POINTER},
        {patched(68 + 0, WordAt(bytes, 68) + 2), E_POINTER},
        // Without the organization list record itself the file is refused.
        {patched(68 + 28, 0), E_FAIL},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ReadBytes(tree, c.bytes), c.result) << &c - cases;
        const std::string path = folder + "/short.cache";
        ASSERT_TRUE(WriteFile(path, c.bytes));
        EXPECT_LT(ReadManifestImage(tree, CZoltaFilePath(path.c_str())), 0) << &c - cases;
    }
    // A failed read leaves the manifest as it was.
    EXPECT_EQ(Dump(tree), before);

    EXPECT_TRUE(IsImageOffsetInRange(size - 1, size));
    EXPECT_FALSE(IsImageOffsetInRange(size, size));
    EXPECT_FALSE(IsImageOffsetInRange(0, size));
    // The last unit of the file is the closing zero of a language block, a valid empty text.
    CGalleryManifest loaded;
    ASSERT_EQ(ReadBytes(loaded, patched(68 + 8, size - 4)), S_OK);
    EXPECT_STREQ(loaded.GetPath(), L"");

    // A manifest without organizations still writes its empty list.
    CGalleryManifest empty;
    const std::string emptyBytes = ImageOf(empty, folder, "empty.cache");
    const std::uint32_t list = WordAt(emptyBytes, 68 + 28);
    ASSERT_NE(list, 0u);
    EXPECT_EQ(WordAt(emptyBytes, list), 0u);
    EXPECT_EQ(WordAt(emptyBytes, list + 4), 0u);
    ASSERT_EQ(ReadBytes(loaded, emptyBytes), S_OK);
    EXPECT_EQ(Dump(loaded), Dump(empty));
}

TEST(ManifestImage, HostileOffsetsWithAValidCrcNeverCrash)
{
    const std::string folder = MakeScratchDir("image-hostile");
    CGalleryManifest tree;
    BuildTree(tree, 1, 2);
    const std::string bytes = ImageOf(tree, folder);
    // Loops: a category that lists itself, an organization list whose array points back at it.
    std::mt19937 random(1234);
    int loaded = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string hostile = bytes;
        const int changes = 1 + static_cast<int>(random() % 3);
        for (int c = 0; c < changes; ++c) {
            const std::size_t at = 68 + 4 * (random() % ((hostile.size() - 68) / 4));
            const std::uint32_t pick = random() % 4;
            const std::uint32_t value = pick == 0   ? WordAt(bytes, 68 + 4 * (random() % 32))
                                        : pick == 1 ? static_cast<std::uint32_t>(random())
                                        : pick == 2 ? 68u
                                                    : static_cast<std::uint32_t>(random() % hostile.size());
            PutWord(hostile, at, value);
        }
        Reseal(hostile);
        CGalleryManifest target;
        if (SUCCEEDED(ReadBytes(target, hostile))) {
            ++loaded;
            Dump(target);
        }
    }
    EXPECT_GT(loaded, 0);
}

class ManifestCacheTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_folder = MakeScratchDir("cache-gallery") + "/Physical Content";
        ASSERT_TRUE(CZoltaDirectoryPath(m_folder.c_str()).Create());
        m_xml = m_folder + "/imsmanifest.xml";
        CGalleryManifest tree;
        BuildTree(tree, 2, 3);
        ASSERT_EQ(CGalleryManifestIO::Save(tree, W(m_xml).GetString(), false), S_OK);
        m_cache = U(GetManifestCachePath(W(m_xml)).GetPath().GetString());
    }

    HRESULT Open(CGalleryManifest& manifest, bool useCache)
    {
        return CGalleryManifestIO::Open(manifest, W(m_xml).GetString(), nullptr, useCache);
    }

    std::string m_folder;
    std::string m_xml;
    std::string m_cache;
};

TEST_F(ManifestCacheTest, CacheNameFollowsTheFolderAndTheHashOfThePath)
{
    std::uint32_t hash = 5381;
    for (wchar_t c : std::wstring(W(m_xml).GetString()))
        hash = hash * 33 + static_cast<std::uint32_t>(c);
    char expected[64];
    std::snprintf(expected, sizeof(expected), "physical content_%08x.cache", hash);
    EXPECT_EQ(U(GetManifestCacheName(W(m_xml)).GetString()), expected);
    EXPECT_EQ(m_cache, U(GetUserGalleryFolder().GetPath().GetString()) + "/" + expected);
    // Paths that differ in case give different names, though both are lower-cased.
    const CAtlString upper = GetManifestCacheName(L"/a/Physical Content/imsmanifest.xml");
    const CAtlString lower = GetManifestCacheName(L"/a/physical content/imsmanifest.xml");
    EXPECT_NE(upper, lower);
    EXPECT_EQ(U(upper.GetString()).substr(0, 17), "physical content_");
    EXPECT_NE(GetManifestCacheName(L"/a/Same/imsmanifest.xml"), GetManifestCacheName(L"/b/Same/imsmanifest.xml"));
}

TEST_F(ManifestCacheTest, CacheIsWrittenAfterAParseAndUsedWhileNotOlderThanTheFile)
{
    CGalleryManifest parsed;
    ASSERT_EQ(Open(parsed, false), S_OK);
    EXPECT_STREQ(parsed.m_cachePath, L"");
    EXPECT_FALSE(curatool::test::Exists(m_cache));

    CGalleryManifest writer;
    ASSERT_EQ(Open(writer, true), S_OK);
    EXPECT_STREQ(writer.m_cachePath, L"");  // parsed, and the cache written
    const std::int64_t xmlTime = MTime(m_xml);
    EXPECT_EQ(MTime(m_cache), xmlTime + 7);
    EXPECT_EQ(Dump(writer), Dump(parsed));

    SetMTime(m_cache, xmlTime);
    CGalleryManifest equal;
    ASSERT_EQ(Open(equal, true), S_OK);
    EXPECT_EQ(U(equal.m_cachePath), m_cache);
    EXPECT_EQ(U(equal.GetPath()), m_xml);
    EXPECT_EQ(Dump(equal), Dump(parsed));

    SetMTime(m_cache, xmlTime - 1);
    CGalleryManifest stale;
    ASSERT_EQ(Open(stale, true), S_OK);
    EXPECT_STREQ(stale.m_cachePath, L"");
    EXPECT_EQ(MTime(m_cache), xmlTime + 7) << "the parse wrote a fresh cache";

    std::string bytes = ReadFile(m_cache);
    bytes.back() ^= 0x40;
    ASSERT_TRUE(WriteFile(m_cache, bytes));
    SetMTime(m_cache, xmlTime + 100);
    CGalleryManifest damaged;
    ASSERT_EQ(Open(damaged, true), S_OK);
    EXPECT_STREQ(damaged.m_cachePath, L"");
    EXPECT_EQ(Dump(damaged), Dump(parsed));
    CGalleryManifest repaired;
    ASSERT_EQ(Open(repaired, true), S_OK);
    EXPECT_EQ(U(repaired.m_cachePath), m_cache);
}

TEST_F(ManifestCacheTest, CachedTreeCanBeEditedAndSaved)
{
    // An XML file from long ago: the cache written by the save must still be dated after the
    // file the save writes now.
    SetMTime(m_xml, MTime(m_xml) - 1000);
    CGalleryManifest writer;
    ASSERT_EQ(Open(writer, true), S_OK);
    CGalleryManifest cached;
    ASSERT_EQ(Open(cached, true), S_OK);
    ASSERT_EQ(U(cached.m_cachePath), m_cache);

    CGalleryFolder* root = cached.m_organizations->GetAt(0)->m_items->GetAt(0);
    CGalleryActivity* added = AddActivity(root, L"urn:added", L"pics/new.png", L"Added");
    FillMetadata(*added->m_metadata);
    added->m_metadata->m_creationTime = 0;  // the XML form does not keep it
    EXPECT_FALSE(CGalleryImageRegistry::Contains(root->m_activities->m_array));
    CGalleryActivity* removed = root->m_activities->RemoveAt(0);
    CGalleryActivity::Destroy(removed);
    // Texts in the image are replaced, never written over or freed.
    const wchar_t* imageIdentifier = root->m_metadata->m_identifier;
    ASSERT_TRUE(CGalleryImageRegistry::Contains(imageIdentifier));
    ASSERT_EQ(root->m_metadata->SetIdentifier(L"urn:root-renamed"), S_OK);
    EXPECT_STREQ(imageIdentifier, L"urn:root0");
    ASSERT_EQ(root->m_metadata->m_titles->ReplaceLanguage(L"en", {CAtlString(L"New title")}), S_OK);
    CGalleryOrganization* organization = cached.m_organizations->RemoveAt(1);
    CGalleryOrganization::Destroy(organization);
    const std::string edited = Dump(cached);
    EXPECT_NE(edited.find("urn:added"), std::string::npos);
    EXPECT_EQ(edited.find("id=urn:root0/a0 "), std::string::npos);

    ASSERT_EQ(CGalleryManifestIO::Save(cached, W(m_xml).GetString(), true), S_OK);
    CGalleryManifest reparsed;
    ASSERT_EQ(Open(reparsed, false), S_OK);
    EXPECT_EQ(Dump(reparsed), edited);
    CGalleryManifest recached;
    ASSERT_EQ(Open(recached, true), S_OK);
    EXPECT_EQ(U(recached.m_cachePath), m_cache);
    EXPECT_EQ(Dump(recached), edited);
}

TEST_F(ManifestCacheTest, OtherExtensionsTakeTheBinaryBranch)
{
    CGalleryManifest parsed;
    ASSERT_EQ(Open(parsed, false), S_OK);
    const std::string binary = m_folder + "/copy.bin";
    ASSERT_EQ(CGalleryManifestIO::Save(parsed, W(binary).GetString(), false), S_OK);
    EXPECT_EQ(ReadFile(binary).substr(0, 64), std::string(kManifestImageMagic, 64));
    CGalleryManifest reopened;
    ASSERT_EQ(CGalleryManifestIO::Open(reopened, W(binary).GetString(), nullptr, false), S_OK);
    EXPECT_EQ(Dump(reopened), Dump(parsed));
    EXPECT_EQ(U(reopened.m_cachePath), binary);

    ASSERT_TRUE(WriteFile(binary, "not an image"));
    CGalleryManifest refused;
    EXPECT_EQ(CGalleryManifestIO::Open(refused, W(binary).GetString(), nullptr, false), E_FAIL);
}

}  // namespace

// A cache image is read in one walk when its objects fit the first guess of room, and in a
// counting walk and a building one when they do not: both give the tree that was written.
#include "gallery/cache/ManifestCache.h"
#include "ManifestTestTree.h"

#include <gtest/gtest.h>

namespace {

using namespace manifest_test;
using curatool::test::MakeScratchDir;

TEST(ManifestImageArena, BareAndTextRichTreesBothComeBackWhole)
{
    const struct {
        const char* name;
        bool texts;  // without any, the objects need several times the file's size
    } shapes[] = {{"bare", false}, {"texts", true}};
    const std::string folder = MakeScratchDir("image-arena");
    for (const auto& shape : shapes) {
        CGalleryManifest original;
        CGalleryOrganization* organization = nullptr;
        ASSERT_EQ(S_OK, CGalleryOrganization::Create(&organization));
        ASSERT_EQ(S_OK, original.AddOrganization(organization));
        CGalleryFolder* category = nullptr;
        ASSERT_EQ(S_OK, CGalleryFolder::Create(&category));
        ASSERT_EQ(S_OK, organization->AddItem(category));
        for (int i = 0; i < 3000; ++i) {
            if (shape.texts) {
                const std::wstring n = std::to_wstring(i);
                AddActivity(category, (L"urn:activity:" + n).c_str(), (L"pictures/item" + n + L".png").c_str(),
                            (L"Item " + n).c_str());
            } else {
                CGalleryActivity* activity = nullptr;
                ASSERT_EQ(S_OK, CGalleryActivity::Create(&activity));
                ASSERT_EQ(S_OK, category->AddActivity(activity));
            }
        }
        const std::string path = folder + "/" + shape.name + ".cache";
        ASSERT_EQ(S_OK, WriteManifestImage(original, CZoltaFilePath(path.c_str())));
        CGalleryManifest loaded;
        ASSERT_EQ(S_OK, ReadManifestImage(loaded, CZoltaFilePath(path.c_str()))) << shape.name;
        EXPECT_EQ(Dump(original), Dump(loaded)) << shape.name;
        EXPECT_EQ(3000u, loaded.GetOrganizations()->GetAt(0)->m_items->GetAt(0)->m_activities->GetCount());
    }
}

}  // namespace

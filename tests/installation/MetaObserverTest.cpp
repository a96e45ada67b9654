#include "installation/CGalleryInstallationMetaObserver.h"
#include "ProgressRecorder.h"

#include <gtest/gtest.h>

using namespace curatool::test;

TEST(MetaObserver, BytesMoveTheBarOfTheLastDownloadLine)
{
    ProgressRecorder recorder;
    CGalleryInstallationMetaObserver relay;
    relay.ReadProgress(1, 2);  // no target yet: nothing to tell, nothing breaks
    relay.SetTarget(&recorder);
    relay.Progress(eGalleryInstallationProgressDownloading, nullptr, L"a.zip", 0, 40);
    relay.Progress(eGalleryInstallationProgressInstalling, nullptr, L"b.zip", 0, 60);
    relay.ReadProgress(2, 3);
    relay.ReadProgress(1, 200);
    relay.ReadProgress(5, 0);

    const auto events = recorder.Events();
    ASSERT_EQ(5u, events.size());
    EXPECT_EQ(eGalleryInstallationProgressInstalling, events[1].stage) << "other stages pass unchanged";
    for (std::size_t i = 2; i < events.size(); ++i) {
        EXPECT_EQ(eGalleryInstallationProgressDownloading, events[i].stage);
        EXPECT_EQ("a.zip", events[i].item);
        EXPECT_EQ(40, events[i].overall);
    }
    EXPECT_EQ(67, events[2].percent);
    EXPECT_EQ(1, events[3].percent) << "0.5 rounds up";
    EXPECT_EQ(0, events[4].percent) << "no total, no division";
}

// The usage text and the complaint block are checked byte for byte on the real binary; here the
// hand-over of arguments to a restarted program.
#include "CCmdLineContext.h"
#include "CWorkFlow.h"

#include <gtest/gtest.h>

namespace {

TEST(WorkFlowArguments, RestartArgumentsAreTheRawOnesThenTheOpenedFiles)
{
    CCmdLineContext context;
    context.rawArguments = {"-source", "/media/cd"};
    context.openedFiles = {CAtlString(L"/home/u/a.gallerycollection")};
    EXPECT_EQ((QStringList{"-source", "/media/cd", "/home/u/a.gallerycollection"}),
              CWorkFlow::ArgumentsForRestart(context));
}

TEST(WorkFlowArguments, StoredArgumentsComeBackOnceInOrder)
{
    const QStringList arguments{"-configuration", "/path with blanks/ü", "", "--installall"};
    ASSERT_TRUE(CWorkFlow::StoreArguments(arguments));
    ASSERT_TRUE(CWorkFlow::StoreArguments(arguments)) << "storing again replaces";

    QStringList loaded;
    EXPECT_TRUE(CWorkFlow::LoadArguments(loaded));
    EXPECT_EQ(arguments, loaded);

    QStringList second;
    EXPECT_TRUE(CWorkFlow::LoadArguments(second)) << "an absent key is an empty success";
    EXPECT_TRUE(second.isEmpty());
}

}  // namespace

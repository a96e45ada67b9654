#include "app/CCmdLineContext.h"
#include "app/CmdLineParameters.h"
#include "support/TestText.h"

#include <gtest/gtest.h>

namespace {

using curatool::test::W;

CWorkFlowFunction Returning(int code)
{
    return [code](const CCmdLineContext&, std::shared_ptr<CConfiguration>) { return code; };
}

int Call(const CWorkFlowFunction& function)
{
    CCmdLineContext context;
    return function(context, nullptr);
}

struct ActionFixture : testing::Test {
    bool actionChosen = false;
    bool elevation = true;
    CWorkFlowFunction runner = Returning(0);
};

TEST_F(ActionFixture, ElevatingActionRaisesTheFlagAgainAndARefusedOneChangesNothing)
{
    elevation = false;
    CActionParameter justUpdated(&actionChosen, &elevation, true, &runner, Returning(5));
    CActionParameter install(&actionChosen, &elevation, false, &runner, Returning(11));
    EXPECT_TRUE(justUpdated.Process(W(L"justupdated"), W(L"")));
    EXPECT_TRUE(elevation);
    EXPECT_TRUE(justUpdated.GetError().IsEmpty());

    EXPECT_TRUE(install.Process(W(L"installall"), W(L"")));
    EXPECT_TRUE(elevation) << "a refused action must not change the elevation";
    EXPECT_EQ(W(L"Illegal: \"installall\""), install.GetError());
    EXPECT_EQ(5, Call(runner));
}

TEST_F(ActionFixture, NonExclusiveActionAlwaysRebinds)
{
    CActionParameter first(&actionChosen, &elevation, true, &runner, Returning(1));
    CActionParameter usage(&actionChosen, &elevation, false, &runner, Returning(666), false);
    first.Process(W(L"waitforcd"), W(L""));
    usage.Process(W(L"x"), W(L""));
    EXPECT_EQ(666, Call(runner));
    EXPECT_FALSE(elevation);
    EXPECT_TRUE(usage.GetError().IsEmpty());
}

TEST(CmdLineParameters, ValueActionRunsOnceAndSharesItsUseWithItsPartner)
{
    bool used = false;
    std::vector<CAtlString> loaded;
    auto load = [&](const CAtlString& value) {
        loaded.push_back(value);
        return value == W(L"good");
    };
    CValueActionParameter configuration(load, &used);
    CValueActionParameter guid(load, &used);

    EXPECT_FALSE(guid.Process(W(L"guid"), W(L"bad"))) << "the action's result is passed on";
    EXPECT_TRUE(used);
    EXPECT_TRUE(guid.GetError().IsEmpty()) << "a failed load records no message";

    EXPECT_TRUE(configuration.Process(W(L"configuration"), W(L"good")));
    EXPECT_TRUE(guid.Process(W(L"guid"), W(L"good")));
    ASSERT_EQ(1u, loaded.size()) << "only the first use runs the action";
    EXPECT_EQ(W(L"bad"), loaded[0]);
    EXPECT_EQ(W(L"Illegal: \"configuration\""), configuration.GetError());
    EXPECT_EQ(W(L"Illegal: \"guid\""), guid.GetError());
}

TEST(CmdLineParameters, ErrorParameterRewritesEachReservedNameIntoItsMessage)
{
    bool chosen = false, elevation = true;
    std::vector<CAtlString> errors;
    CWorkFlowFunction runner = Returning(0);
    CErrorParameter error(&chosen, &elevation, &runner, Returning(666), &errors);
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {{CmdLineReserved::ParamNoValue, L"destination"},
                                                               {CmdLineReserved::UnknownParam, L"foo"},
                                                               {CmdLineReserved::DefaultParam, L"stray"},
                                                               {CmdLineReserved::GenericError, L"Illegal: \"guid\""},
                                                               {CmdLineReserved::UnknownParam, L""}};
    for (const auto& [name, value] : cases)
        error.Process(W(name), W(value));
    EXPECT_EQ((std::vector<CAtlString>{W(L"Missing value: \"destination\""), W(L"Unknown: \"foo\""),
                                       W(L"Ignored: \"stray\""), W(L"Illegal: \"guid\""), W(L"Unknown: \"\"")}),
              errors);
    EXPECT_TRUE(error.GetError().IsEmpty());
}

}  // namespace

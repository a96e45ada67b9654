#include "CCmdLineContext.h"
#include "CmdLineParameters.h"

#include <gtest/gtest.h>

namespace {

CAtlString S(const wchar_t* text)
{
    return CAtlString(text);
}

CWorkFlowFunction Returning(int code)
{
    return [code](const CCmdLineContext&, std::shared_ptr<CConfiguration>) { return code; };
}

int Call(const CWorkFlowFunction& function)
{
    CCmdLineContext context;
    return function(context, nullptr);
}

TEST(CmdLineParameters, ValueParametersStoreTheValueUnchangedAndNeverComplain)
{
    CAtlString text, path;
    CStringParameter stringParam(&text);
    CPathParameter pathParam(&path);

    EXPECT_TRUE(stringParam.Process(S(L"proxy"), S(L"host:8080")));
    EXPECT_TRUE(pathParam.Process(S(L"source"), S(L"/media/disc one/../x")));
    EXPECT_TRUE(stringParam.Process(S(L"proxy"), S(L"other:1")));  // the last one stands

    EXPECT_EQ(S(L"other:1"), text);
    EXPECT_EQ(S(L"/media/disc one/../x"), path);
    EXPECT_TRUE(stringParam.GetError().IsEmpty());
    EXPECT_TRUE(pathParam.GetError().IsEmpty());
}

TEST(CmdLineParameters, MultiValueKeepsOrderAndDuplicates)
{
    std::vector<CAtlString> values;
    CMultiValueParameter param(&values);
    for (const wchar_t* v : {L"b", L"a", L"b", L""})
        EXPECT_TRUE(param.Process(S(L"c"), S(v)));
    ASSERT_EQ(4u, values.size());
    EXPECT_EQ(S(L"b"), values[0]);
    EXPECT_EQ(S(L"a"), values[1]);
    EXPECT_EQ(S(L"b"), values[2]);
    EXPECT_TRUE(values[3].IsEmpty());
    EXPECT_TRUE(param.GetError().IsEmpty());
}

TEST(CmdLineParameters, FlagIgnoresItsValue)
{
    bool flag = false;
    CFlagParameter param(&flag);
    EXPECT_TRUE(param.Process(S(L"verbose"), S(L"no")));
    EXPECT_TRUE(flag);
    EXPECT_TRUE(param.Process(S(L"verbose"), S(L"")));
    EXPECT_TRUE(flag);
}

struct ActionFixture : testing::Test
{
    bool actionChosen = false;
    bool elevation = true;
    CWorkFlowFunction runner = Returning(0);
};

TEST_F(ActionFixture, FirstExclusiveActionWinsAndLaterOnesComplainWithTheirName)
{
    CActionParameter install(&actionChosen, &elevation, false, &runner, Returning(11));
    CActionParameter waitForCd(&actionChosen, &elevation, true, &runner, Returning(22));

    EXPECT_TRUE(install.Process(S(L"installall"), S(L"")));
    EXPECT_TRUE(actionChosen);
    EXPECT_FALSE(elevation);
    EXPECT_EQ(11, Call(runner));
    EXPECT_TRUE(install.GetError().IsEmpty());

    EXPECT_TRUE(waitForCd.Process(S(L"waitforcd"), S(L"")));
    EXPECT_EQ(11, Call(runner));
    EXPECT_FALSE(elevation) << "a refused action must not change the elevation";
    EXPECT_EQ(S(L"Illegal: \"waitforcd\""), waitForCd.GetError());

    // The same object met again complains too, under the name it was met by.
    EXPECT_TRUE(install.Process(S(L"h"), S(L"")));
    EXPECT_EQ(S(L"Illegal: \"h\""), install.GetError());
}

TEST_F(ActionFixture, ElevatingActionRaisesTheFlagAgain)
{
    elevation = false;
    CActionParameter justUpdated(&actionChosen, &elevation, true, &runner, Returning(5));
    justUpdated.Process(S(L"justupdated"), S(L""));
    EXPECT_TRUE(elevation);
    EXPECT_EQ(5, Call(runner));
}

TEST_F(ActionFixture, NonExclusiveActionAlwaysRebinds)
{
    CActionParameter first(&actionChosen, &elevation, true, &runner, Returning(1));
    CActionParameter usage(&actionChosen, &elevation, false, &runner, Returning(666), false);
    first.Process(S(L"waitforcd"), S(L""));
    usage.Process(S(L"x"), S(L""));
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
        return value == S(L"good");
    };
    CValueActionParameter configuration(load, &used);
    CValueActionParameter guid(load, &used);

    EXPECT_FALSE(guid.Process(S(L"guid"), S(L"bad"))) << "the action's result is passed on";
    EXPECT_TRUE(used);
    EXPECT_TRUE(guid.GetError().IsEmpty()) << "a failed load records no message";

    EXPECT_TRUE(configuration.Process(S(L"configuration"), S(L"good")));
    EXPECT_TRUE(guid.Process(S(L"guid"), S(L"good")));
    ASSERT_EQ(1u, loaded.size()) << "only the first use runs the action";
    EXPECT_EQ(S(L"bad"), loaded[0]);
    EXPECT_EQ(S(L"Illegal: \"configuration\""), configuration.GetError());
    EXPECT_EQ(S(L"Illegal: \"guid\""), guid.GetError());
}

TEST(CmdLineParameters, ValueActionWithoutActionRefuses)
{
    bool used = false;
    CValueActionParameter empty(CValueActionParameter::Action(), &used);
    EXPECT_FALSE(empty.Process(S(L"guid"), S(L"x")));
    EXPECT_FALSE(used);
}

struct ErrorFixture : testing::Test
{
    bool ownChosen = false;
    bool elevation = true;
    std::vector<CAtlString> errors;
    CWorkFlowFunction runner = Returning(0);
    CErrorParameter error{&ownChosen, &elevation, &runner, Returning(666), &errors};
};

TEST_F(ErrorFixture, RewritesEachReservedNameIntoItsMessage)
{
    error.Process(S(CmdLineReserved::ParamNoValue), S(L"destination"));
    error.Process(S(CmdLineReserved::UnknownParam), S(L"foo"));
    error.Process(S(CmdLineReserved::DefaultParam), S(L"stray"));
    error.Process(S(CmdLineReserved::GenericError), S(L"Illegal: \"guid\""));
    error.Process(S(CmdLineReserved::UnknownParam), S(L""));

    ASSERT_EQ(5u, errors.size());
    EXPECT_EQ(S(L"Missing value: \"destination\""), errors[0]);
    EXPECT_EQ(S(L"Unknown: \"foo\""), errors[1]);
    EXPECT_EQ(S(L"Ignored: \"stray\""), errors[2]);
    EXPECT_EQ(S(L"Illegal: \"guid\""), errors[3]);
    EXPECT_EQ(S(L"Unknown: \"\""), errors[4]);
    EXPECT_TRUE(error.GetError().IsEmpty());
}

TEST_F(ErrorFixture, UnknownAndIgnoredLeaveTheWorkFlowAlone)
{
    error.Process(S(CmdLineReserved::UnknownParam), S(L"foo"));
    error.Process(S(CmdLineReserved::DefaultParam), S(L"x"));
    EXPECT_EQ(0, Call(runner));
    EXPECT_TRUE(elevation);
}

TEST_F(ErrorFixture, MissingValueAndCollectedComplaintsSwitchToUsageEveryTime)
{
    for (const wchar_t* name : {CmdLineReserved::ParamNoValue, CmdLineReserved::GenericError}) {
        runner = Returning(0);
        elevation = true;
        EXPECT_TRUE(error.Process(S(name), S(L"x")));
        EXPECT_EQ(666, Call(runner)) << "not exclusive: it wins even after an action was chosen";
        EXPECT_FALSE(elevation);
    }
}

}  // namespace

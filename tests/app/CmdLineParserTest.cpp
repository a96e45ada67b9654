#include "app/CCmdLineContext.h"
#include "app/CCmdLineParser.h"
#include "app/CmdLineParameters.h"
#include "support/TestText.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace {

using curatool::test::W;

CWorkFlowFunction Returning(int code)
{
    return [code](const CCmdLineContext&, std::shared_ptr<CConfiguration>) { return code; };
}

// A small vocabulary of each kind, with actions that tell by their code which one was bound.
struct ParserHarness : testing::Test {
    enum { kNormal = 1, kInstall = 11, kUninstall = 22, kHelp = 33, kUsage = 666 };

    CCmdLineContext context;
    bool actionChosen = false;
    bool errorChosen = false;
    bool elevation = true;
    bool valueUsed = false;
    std::vector<CAtlString> loads;
    CWorkFlowFunction runner = Returning(kNormal);

    CMultiValueParameter positional{&context.defaultParams};
    CMultiValueParameter aliases{&context.categoryAliases};
    CPathParameter source{&context.source};
    CStringParameter proxy{&context.proxy};
    CFlagParameter verbose{&context.verbose};
    CActionParameter install{&actionChosen, &elevation, false, &runner, Returning(kInstall)};
    CActionParameter uninstall{&actionChosen, &elevation, false, &runner, Returning(kUninstall)};
    CActionParameter help{&actionChosen, &elevation, false, &runner, Returning(kHelp)};
    CValueActionParameter configuration{[this](const CAtlString& v) {
                                            loads.push_back(v);
                                            return true;
                                        },
                                        &valueUsed};
    CErrorParameter error{&errorChosen, &elevation, &runner, Returning(kUsage), &context.errors};
    CCmdLineParser parser;

    void SetUp() override
    {
        parser.SetDefaultParam(&positional);
        parser.SetErrorParam(&error);
        parser.AddValueParam(W(L"source"), &source);
        parser.AddValueParam(W(L"proxy"), &proxy);
        parser.AddValueParam(W(L"c"), &aliases);
        parser.AddValueParam(W(L"configuration"), &configuration);
        parser.AddFlagParam(W(L"verbose"), &verbose);
        parser.AddFlagParam(W(L"installall"), &install);
        parser.AddFlagParam(W(L"uninstall"), &uninstall);
        parser.AddFlagParam(W(L"help"), &help);
        parser.AddFlagParam(W(L"?"), &help);
        parser.AddFlagParam(W(L"h"), &help);
    }

    bool Parse(std::initializer_list<const wchar_t*> tokens)
    {
        std::vector<CAtlString> arguments{W(L"/opt/curatool")};
        for (const wchar_t* token : tokens)
            arguments.push_back(W(token));
        return parser.Parse(arguments);
    }

    int Bound() { return runner(context, nullptr); }

    std::vector<std::wstring> Errors() const
    {
        std::vector<std::wstring> result;
        for (const CAtlString& e : context.errors)
            result.emplace_back(e.GetString());
        return result;
    }
};

using Strings = std::vector<std::wstring>;

// One backslash or at most two dashes are removed; a token without them is positional and stays.
TEST(CmdLineParserPrefix, StripOptionPrefix)
{
    struct Case {
        const wchar_t* token;
        const wchar_t* name;  // null: positional
    };
    for (Case c :
         {Case{L"-x", L"x"}, Case{L"--x", L"x"}, Case{L"\\x", L"x"}, Case{L"---x", L"-x"}, Case{L"\\\\x", L"\\x"},
          Case{L"\\-x", L"-x"}, Case{L"-\\x", L"\\x"}, Case{L"-", L""}, Case{L"--", L""}, Case{L"", nullptr},
          Case{L"x-y", nullptr}, Case{L"/tmp/-a", nullptr}, Case{L" -a", nullptr}, Case{L"installall", nullptr}})
    {
        CAtlString t(c.token);
        EXPECT_EQ(c.name != nullptr, CCmdLineParser::StripOptionPrefix(t)) << c.token;
        EXPECT_EQ(W(c.name ? c.name : c.token), t) << c.token;
    }
}

TEST_F(ParserHarness, ValuesFlagsAndPositionalsLandInTheirFields)
{
    EXPECT_TRUE(Parse({L"first", L"-source", L"/media/cd", L"--verbose", L"", L"-c", L"a", L"\\c", L"b", L"last"}));
    EXPECT_EQ(W(L"/media/cd"), context.source);
    EXPECT_TRUE(context.verbose);
    ASSERT_EQ(2u, context.categoryAliases.size());
    EXPECT_EQ(W(L"b"), context.categoryAliases[1]);
    ASSERT_EQ(3u, context.defaultParams.size());
    EXPECT_EQ(W(L"first"), context.defaultParams[0]);
    EXPECT_TRUE(context.defaultParams[1].IsEmpty()) << "an empty token is positional";
    EXPECT_EQ(W(L"last"), context.defaultParams[2]);
    EXPECT_TRUE(context.errors.empty());
}

TEST_F(ParserHarness, AnOptionIsNeverTakenAsAValueAndIsExaminedItself)
{
    EXPECT_FALSE(Parse({L"-Verbose", L"-source", L"-verbose"}));
    EXPECT_TRUE(context.source.IsEmpty());
    EXPECT_TRUE(context.verbose);
    EXPECT_EQ(kUsage, Bound());
    EXPECT_EQ((Strings{L"Unknown: \"Verbose\"", L"Missing value: \"source\""}), Errors()) << "names are case-sensitive";
}

TEST_F(ParserHarness, ColonFormPassesValuesThatLookLikeOptions)
{
    EXPECT_TRUE(Parse({L"-source:-odd", L"--proxy:host:8080", L"-c:", L"-c:\\x"}));
    EXPECT_EQ(W(L"-odd"), context.source);
    EXPECT_EQ(W(L"host:8080"), context.proxy) << "only the first colon splits";
    ASSERT_EQ(2u, context.categoryAliases.size());
    EXPECT_TRUE(context.categoryAliases[0].IsEmpty());
    EXPECT_EQ(W(L"\\x"), context.categoryAliases[1]);
    EXPECT_TRUE(context.errors.empty());
}

TEST_F(ParserHarness, LaterRegistrationReplacesAnEntry)
{
    parser.AddFlagParam(W(L"installall"), &uninstall);
    Parse({L"--installall"});
    EXPECT_EQ(kUninstall, Bound());
}

TEST(CmdLineParserBare, WithoutDefaultParameterAPositionalTokenStopsTheParse)
{
    CCmdLineContext context;
    CFlagParameter verbose(&context.verbose);
    CCmdLineParser parser;
    parser.AddFlagParam(W(L"verbose"), &verbose);
    EXPECT_FALSE(parser.Parse({W(L"prog"), W(L"stray"), W(L"-verbose")}));
    EXPECT_FALSE(context.verbose);
    EXPECT_TRUE(parser.Parse({W(L"prog"), W(L"-verbose")}));
    EXPECT_TRUE(context.verbose);
}

}  // namespace

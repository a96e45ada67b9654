#include "SaxRecorder.h"
#include "TestEnvironment.h"
#include "ZOLTASaxParser.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using Events = std::vector<std::string>;

// Parses a copy that ends exactly where the document ends, so that any read past the end
// lands outside the allocation.
HRESULT Parse(const std::string& document, SaxRecorder& recorder)
{
    std::unique_ptr<char[]> bytes(new char[document.size() ? document.size() : 1]);
    std::copy(document.begin(), document.end(), bytes.get());
    return ZOLTASaxParser::ParseBuffer(bytes.get(), static_cast<std::uint32_t>(document.size()),
                                       recorder);
}

Events ParseEvents(const std::string& document, HRESULT expected = S_OK)
{
    SaxRecorder recorder;
    EXPECT_EQ(Parse(document, recorder), expected) << document;
    return recorder.events;
}

// ---- Elements and text ----

TEST(SaxParserElements, EmptyElementReportsStartAndEndBehindTheTag)
{
    EXPECT_EQ(ParseEvents("<a/>"),
              (Events{"start-document", "<a text=- @4", "</a @4", "end-document"}));
}

TEST(SaxParserElements, WhiteSpaceOnlyDocumentFailsAfterStartDocument)
{
    EXPECT_EQ(ParseEvents(" \t\r\n ", E_FAIL), (Events{"start-document"}));
    EXPECT_EQ(ParseEvents("", E_FAIL), (Events{"start-document"}));
}

TEST(SaxParserElements, WhiteSpaceAloneIsNoText)
{
    EXPECT_EQ(ParseEvents("<a> <b/></a>"),
              (Events{"start-document", "<a text=- @4", "<b text=- @8", "</b @8", "</a @11",
                      "end-document"}));
}

TEST(SaxParserElements, TextKeepsItsSurroundingWhiteSpace)
{
    const Events events = ParseEvents("<a> x <b/></a>");
    EXPECT_EQ(events[1], "<a text=[ x ] @6");
}

TEST(SaxParserElements, OnlyTextDirectlyBehindAStartTagIsReported)
{
    EXPECT_EQ(ParseEvents("<r><a>text</a> tail <b/></r>"),
              (Events{"start-document", "<r text=- @3", "<a text=[text] @10", "</a @13",
                      "<b text=- @24", "</b @24", "</r @27", "end-document"}));
}

TEST(SaxParserElements, EndTagNamesAreNotCheckedAgainstTheOpenElement)
{
    SaxRecorder recorder;
    EXPECT_EQ(Parse("<a></b>", recorder), S_OK);
    EXPECT_EQ(recorder.events[2], "</b @6");
    // At an end tag only qName is new: the prefix is empty, localName the last start tag.
    EXPECT_EQ(recorder.prefixes, (Events{"-", "-"}));
    EXPECT_EQ(recorder.localNames, (Events{"[a]", "[a]"}));
}

TEST(SaxParserElements, UnbalancedDepthFailsAtTheEndWithoutEndDocument)
{
    EXPECT_EQ(ParseEvents("<a><b></b>", E_FAIL),
              (Events{"start-document", "<a text=- @3", "<b text=- @6", "</b @9"}));
    EXPECT_EQ(ParseEvents("<a/></a>", E_FAIL).back(), "</a @7");
}

TEST(SaxParserElements, BangWithoutCommentIsAStartTag)
{
    const Events events = ParseEvents("<r><!x/></r>");
    EXPECT_EQ(events[2], "<!x text=- @8");
}

TEST(SaxParserElements, EndTagSkipsWhiteSpaceAndExtraClosers)
{
    EXPECT_EQ(ParseEvents("<a>t</a \n>>> <b/>").size(), 6u);
}

TEST(SaxParserElements, PositionAndLengthLetHandlersReportProgress)
{
    SaxRecorder recorder;
    const std::string document = "<root>\n  <item/>\n</root>\n";
    ASSERT_EQ(Parse(document, recorder), S_OK);
    EXPECT_EQ(recorder.lastLength, document.size());
    EXPECT_EQ(recorder.events[2], "<item text=- @16");
}

// ---- Attributes ----

TEST(SaxParserAttributes, QuotedUnquotedAndBareAttributes)
{
    EXPECT_EQ(ParseEvents("<a x=1 y=\"2\" z/>")[1], "<a text=- x=[1] y=[2] z=- @16");
}

TEST(SaxParserAttributes, UnquotedValueSwallowsTheClosingBytes)
{
    // "x=1/>" keeps "/>" in the value; the tag then runs on to the next real closer.
    EXPECT_EQ(ParseEvents("<a x=1/> y='2' >t</a>")[1], "<a text=[t] x=[1/>] y=['2'] @17");
}

TEST(SaxParserAttributes, WhiteSpaceAroundEqualsSign)
{
    EXPECT_EQ(ParseEvents("<a x = \"v w\"\t/>")[1], "<a text=- x=[v w] @15");
}

TEST(SaxParserAttributes, NineteenAttributesFitTwentyFail)
{
    std::string nineteen = "<a";
    for (int i = 0; i < 19; ++i)
        nineteen += " n" + std::to_string(i) + "=\"" + std::to_string(i) + "\"";
    SaxRecorder recorder;
    EXPECT_EQ(Parse(nineteen + "/>", recorder), S_OK);
    EXPECT_EQ(recorder.lastAttributeCount, 19u);

    SaxRecorder failing;
    EXPECT_EQ(Parse(nineteen + " n19/>", failing), E_FAIL);
    EXPECT_EQ(failing.events, (Events{"start-document"}));
}

TEST(SaxParserAttributes, StoreIsResetAtEveryStartTag)
{
    const Events events = ParseEvents("<a x=\"1\" y=\"2\"><b z=\"3\"/></a>");
    EXPECT_EQ(events[2], "<b text=- z=[3] @25");
}

class AttributeLookup : public ZOLTASaxContentHandler
{
public:
    HRESULT StartElement(const ZOLTASaxString&, const ZOLTASaxString&, const ZOLTASaxString&,
                         const ZOLTASaxAttributes& attributes, const ZOLTASaxString&,
                         std::uint32_t, std::uint32_t) override
    {
        capacity = attributes.capacity;
        indexOfY = attributes.IndexOf("y");
        indexOfMissing = attributes.IndexOf("missing");
        count = attributes.count;
        y = SaxRecorder::Show(attributes.GetValue("y"));
        missing = attributes.GetValue("missing");
        bare = attributes.GetValue("bare");
        return S_OK;
    }
    std::uint32_t capacity = 0, indexOfY = 0, indexOfMissing = 0, count = 0;
    std::string y;
    ZOLTASaxString missing{"x", 1};
    ZOLTASaxString bare{"x", 1};
};

TEST(SaxParserAttributes, LookUpByExactName)
{
    AttributeLookup lookup;
    const std::string document = "<a x=\"1\" y=\"2\" y=\"3\" bare/>";
    ASSERT_EQ(ZOLTASaxParser::ParseBuffer(document.data(), document.size(), lookup), S_OK);
    EXPECT_EQ(lookup.capacity, ZOLTASaxParser::kAttributeCapacity);
    EXPECT_EQ(lookup.indexOfY, 1u);
    EXPECT_EQ(lookup.indexOfMissing, lookup.count);
    EXPECT_EQ(lookup.y, "[2]");
    // An absent attribute gives the shared empty slice: invalid, and equal to "".
    EXPECT_FALSE(lookup.missing.IsValid());
    EXPECT_TRUE(lookup.missing == "");
    EXPECT_FALSE(lookup.bare.IsValid());
}

// ---- Declarations, DOCTYPE, processing instructions ----

TEST(SaxParserProlog, DeclarationIsSkippedWhateverItSays)
{
    EXPECT_EQ(ParseEvents("  <?xml version=\"1.0\" encoding=\"Klingon\"?>\n<a/>").size(), 4u);
}

TEST(SaxParserProlog, UnterminatedDeclarationFails)
{
    EXPECT_EQ(ParseEvents("<?xml version=\"1.0\"", E_FAIL), (Events{"start-document"}));
    EXPECT_EQ(ParseEvents("<?xml ?", E_FAIL), (Events{"start-document"}));
}

TEST(SaxParserProlog, DoctypeWithBalancedInternalSubset)
{
    EXPECT_EQ(ParseEvents("<!DOCTYPE r [ <!ENTITY e \"x>\"> [nested] ]>\n<r/>").size(), 4u);
}

TEST(SaxParserProlog, DoctypeFailures)
{
    EXPECT_EQ(ParseEvents("<!DOCTYPE r [ <!ENTITY e> \n<r/>", E_FAIL), (Events{"start-document"}));
    EXPECT_EQ(ParseEvents("<!DOCTYPE r ] >\n<r/>", E_FAIL), (Events{"start-document"}));
    // Nothing may follow the DOCTYPE's ">" only if it is the end of the buffer.
    EXPECT_EQ(ParseEvents("<!DOCTYPE r>", E_FAIL), (Events{"start-document"}));
}

TEST(SaxParserProlog, ProcessingInstructionsInTheBodyAreSkipped)
{
    EXPECT_EQ(ParseEvents("<r><?pi a <b/> ?><c/></r>"),
              (Events{"start-document", "<r text=- @3", "<c text=- @21", "</c @21", "</r @24",
                      "end-document"}));
}

TEST(SaxParserProlog, UnterminatedProcessingInstructionFails)
{
    EXPECT_EQ(ParseEvents("<r><?pi a </r>", E_FAIL).size(), 2u);
    EXPECT_EQ(ParseEvents("<r/><?pi ?", E_FAIL).size(), 3u);
}

// ---- Comment and CDATA scanning ----

TEST(SaxParserComments, CommentBeforeTheRootNeedsAByteBehindIt)
{
    EXPECT_EQ(ParseEvents("<!-- a -->\n<r/>").size(), 4u);
}

TEST(SaxParserComments, ByteBehindACommentIsPassedOverUnread)
{
    // "x" straight behind "-->" is stepped over, so the run behind <r> starts at "<b/>".
    EXPECT_EQ(ParseEvents("<r><!--a-->x<b/></r>")[1], "<r text=- @12");
}

TEST(SaxParserComments, CommentEndIsFoundOnlyAtAnOddDistance)
{
    // Body "a": "-->" starts five bytes after "<!--" and is seen.
    EXPECT_EQ(ParseEvents("<r><!--a-->\n<b/></r>").size(), 6u);
    // Body "ab": "-->" starts six bytes after "<!--" and is missed; the scan eats the rest.
    EXPECT_EQ(ParseEvents("<r><!--ab-->\n<b/></r>", E_FAIL).size(), 1u);
    // ... until a later "-->" at an odd distance.
    EXPECT_EQ(ParseEvents("<r><!--ab-->xy-->\n<b/></r>").size(), 6u);
}

TEST(SaxParserComments, CommentMarkerInTheLastFourBytesIsNoComment)
{
    // Read as a start tag called "!--" that the buffer cuts short.
    EXPECT_EQ(ParseEvents("<a/><!--", E_FAIL).size(), 3u);
    // One more byte makes it a comment that runs to the end.
    EXPECT_EQ(ParseEvents("<a/><!--x").back(), "end-document");
}

TEST(SaxParserComments, CdataMarkersAreTrackedTheOtherWayRound)
{
    // "]]>" opens verbatim mode, which only "<![CDATA[" ends; the step behind it also passes
    // over the "<" of "<b/>".
    EXPECT_EQ(ParseEvents("<r>x]]>y<![CDATA[<b/></r>"),
              (Events{"start-document", "<r text=[x]]>y<![CDATA[<b/>] @21", "</r @24",
                      "end-document"}));
    // Without the closing marker the text runs to the end of the buffer.
    EXPECT_EQ(ParseEvents("<r>x]]>y<b/></r>", E_FAIL).back(), "<r text=[x]]>y<b/></r>] @16");
}

// ---- Handler results ----

TEST(SaxParserHandler, StartDocumentResultStopsAtOnce)
{
    SaxRecorder recorder;
    recorder.stopAtStartDocument = E_ABORT;
    EXPECT_EQ(Parse("<a/>", recorder), E_ABORT);
    EXPECT_EQ(recorder.events, (Events{"start-document"}));
}

TEST(SaxParserHandler, AnyNonZeroResultStopsWithoutEndDocument)
{
    SaxRecorder atStart;
    atStart.stopAtStart = 2;
    EXPECT_EQ(Parse("<a><b/><c/></a>", atStart), S_FALSE);
    EXPECT_EQ(atStart.events.back(), "<b text=- @7");

    SaxRecorder atEnd;
    atEnd.stopAtEnd = 1;
    atEnd.stopResult = E_ABORT;
    EXPECT_EQ(Parse("<a><b/><c/></a>", atEnd), E_ABORT);
    EXPECT_EQ(atEnd.events.back(), "</b @7");
}

TEST(SaxParserHandler, EndDocumentResultIsReturnedAsItStands)
{
    SaxRecorder recorder;
    recorder.endDocumentResult = 42;
    EXPECT_EQ(Parse("<a/>", recorder), 42);
}

TEST(SaxParserHandler, BaseHandlerAcceptsEverything)
{
    ZOLTASaxContentHandler base;
    const std::string document = "<a x=\"1\">t<b/></a>";
    EXPECT_EQ(ZOLTASaxParser::ParseBuffer(document.data(), document.size(), base), S_OK);
    EXPECT_EQ(base.UnusedEvent(), S_OK);
}

TEST(SaxParserHandler, NullBufferWithALength)
{
    SaxRecorder recorder;
    EXPECT_EQ(ZOLTASaxParser::ParseBuffer(nullptr, 4, recorder), E_POINTER);
    EXPECT_EQ(ZOLTASaxParser::ParseBuffer(nullptr, 0, recorder), E_FAIL);
}

// ---- Damaged input ----

TEST(SaxParserDamage, EveryTruncationOfAManifestEndsCleanly)
{
    const std::string document =
        "<?xml version=\"1.0\"?>\n<!DOCTYPE m [<!ELEMENT m ANY>]>\n<manifest identifier=\"id1\">"
        "<!-- c -->\n<organizations default=\"id2\"><organization identifier=\"id2\">"
        "<title>T &amp; t</title><item identifier=\"i\" identifierref=\"r\"/></organization>"
        "</organizations><?pi x?><resources><resource href=\"a.png\"/></resources></manifest>\n";
    SaxRecorder whole;
    ASSERT_EQ(Parse(document, whole), S_OK);
    // Before the root element a cut may leave a document without elements, which is
    // accepted; once the root is open every cut must fail.
    const std::size_t rootOpen = document.find("<manifest") + 2;
    for (std::size_t cut = 0; cut < document.size() - 1; ++cut) {
        SaxRecorder recorder;
        const HRESULT hr = Parse(document.substr(0, cut), recorder);
        if (cut >= rootOpen) {
            EXPECT_EQ(hr, E_FAIL) << "cut at " << cut;
            EXPECT_NE(recorder.events.back(), "end-document");
        } else {
            EXPECT_TRUE(hr == E_FAIL || hr == S_OK) << "cut at " << cut;
        }
    }
}

TEST(SaxParserDamage, SlicesNeverReachPastTheBuffer)
{
    // A comment opened in the last bytes moves the scan past the end; the text slice that is
    // still reported must stop at the last byte.
    const Events events = ParseEvents("<r>ab<!--c", E_FAIL);
    EXPECT_EQ(events.back(), "<r text=[ab<!--c] @10");
}

// ---- Files ----

TEST(SaxParserFile, ParsesAMappedFile)
{
    const std::string path = curatool::test::MakeScratchDir("sax") + "/doc.xml";
    ASSERT_TRUE(curatool::test::WriteFile(path, "<a><b>x</b></a>"));
    SaxRecorder recorder;
    EXPECT_EQ(ZOLTASaxParser::ParseFile(path.c_str(), recorder), S_OK);
    EXPECT_EQ(recorder.events[2], "<b text=[x] @7");
}

TEST(SaxParserFile, MissingOrEmptyFileFails)
{
    const std::string folder = curatool::test::MakeScratchDir("sax-missing");
    SaxRecorder recorder;
    EXPECT_EQ(ZOLTASaxParser::ParseFile((folder + "/none.xml").c_str(), recorder), E_FAIL);
    ASSERT_TRUE(curatool::test::WriteFile(folder + "/empty.xml", ""));
    EXPECT_EQ(ZOLTASaxParser::ParseFile((folder + "/empty.xml").c_str(), recorder), E_FAIL);
    EXPECT_TRUE(recorder.events.empty());
}

}  // namespace

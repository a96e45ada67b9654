#include "SaxRecorder.h"
#include "support/TestEnvironment.h"
#include "gallery/sax/ZOLTASaxParser.h"

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
    return ZOLTASaxParser::ParseBuffer(bytes.get(), static_cast<std::uint32_t>(document.size()), recorder);
}

Events ParseEvents(const std::string& document, HRESULT expected = S_OK)
{
    SaxRecorder recorder;
    EXPECT_EQ(Parse(document, recorder), expected) << document;
    return recorder.events;
}

struct SequenceCase {
    std::string document;
    HRESULT result;
    Events events;
};

TEST(SaxParserEvents, WholeEventSequences)
{
    const SequenceCase cases[] = {
        // An empty element reports start and end behind the tag.
        {"<a/>", S_OK, {"start-document", "<a text=- @4", "</a @4", "end-document"}},
        // A document without elements fails after start-document.
        {" \t\r\n ", E_FAIL, {"start-document"}},
        {"", E_FAIL, {"start-document"}},
        // White space alone is no text.
        {"<a> <b/></a>", S_OK, {"start-document", "<a text=- @4", "<b text=- @8", "</b @8", "</a @11", "end-document"}},
        // Only text directly behind a start tag is reported.
        {"<r><a>text</a> tail <b/></r>",
         S_OK,
         {"start-document", "<r text=- @3", "<a text=[text] @10", "</a @13", "<b text=- @24", "</b @24", "</r @27",
          "end-document"}},
        // Unbalanced depth fails at the end, without end-document.
        {"<a><b></b>", E_FAIL, {"start-document", "<a text=- @3", "<b text=- @6", "</b @9"}},
        // Processing instructions in the body are skipped.
        {"<r><?pi a <b/> ?><c/></r>",
         S_OK,
         {"start-document", "<r text=- @3", "<c text=- @21", "</c @21", "</r @24", "end-document"}},
        // "]]>" opens verbatim mode, which only "<![CDATA[" ends; the step behind it also passes
        // over the "<" of "<b/>".
        {"<r>x]]>y<![CDATA[<b/></r>",
         S_OK,
         {"start-document", "<r text=[x]]>y<![CDATA[<b/>] @21", "</r @24", "end-document"}},
    };
    for (const SequenceCase& c : cases)
        EXPECT_EQ(ParseEvents(c.document, c.result), c.events) << c.document;
}

// One event of the sequence (counted from the back when `at` is negative) and/or its length.
struct SpotCase {
    std::string document;
    HRESULT result;
    std::size_t count;  // 0: not checked
    int at;
    std::string event;  // empty: not checked
};

TEST(SaxParserEvents, SingleEventsAndCounts)
{
    const SpotCase cases[] = {
        {"<a> x <b/></a>", S_OK, 0, 1, "<a text=[ x ] @6"},  // text keeps its white space
        {"<a/></a>", E_FAIL, 0, -1, "</a @7"},
        {"<r><!x/></r>", S_OK, 0, 2, "<!x text=- @8"},  // a bang without comment is a start tag
        {"<a>t</a \n>>> <b/>", S_OK, 6, 0, ""},         // end tags skip white space and extra closers
        // Attributes: quoted, unquoted, bare; white space around "="; a fresh store per tag.
        {"<a x=1 y=\"2\" z/>", S_OK, 0, 1, "<a text=- x=[1] y=[2] z=- @16"},
        {"<a x = \"v w\"\t/>", S_OK, 0, 1, "<a text=- x=[v w] @15"},
        {"<a x=\"1\" y=\"2\"><b z=\"3\"/></a>", S_OK, 0, 2, "<b text=- z=[3] @25"},
        // "x=1/>" keeps "/>" in the value; the tag then runs on to the next real closer.
        {"<a x=1/> y='2' >t</a>", S_OK, 0, 1, "<a text=[t] x=[1/>] y=['2'] @17"},
        // The declaration is skipped whatever it says, but must be closed.
        {"  <?xml version=\"1.0\" encoding=\"Klingon\"?>\n<a/>", S_OK, 4, 0, ""},
        {"<?xml version=\"1.0\"", E_FAIL, 1, 0, ""},
        {"<?xml ?", E_FAIL, 1, 0, ""},
        {"<!DOCTYPE r [ <!ENTITY e \"x>\"> [nested] ]>\n<r/>", S_OK, 4, 0, ""},
        {"<!DOCTYPE r [ <!ENTITY e> \n<r/>", E_FAIL, 1, 0, ""},
        {"<!DOCTYPE r ] >\n<r/>", E_FAIL, 1, 0, ""},
        {"<!DOCTYPE r>", E_FAIL, 1, 0, ""},  // the DOCTYPE's ">" may not end the buffer
        {"<r><?pi a </r>", E_FAIL, 2, 0, ""},
        {"<r/><?pi ?", E_FAIL, 3, 0, ""},
        // A comment before the root needs a byte behind it, which is passed over unread.
        {"<!-- a -->\n<r/>", S_OK, 4, 0, ""},
        {"<r><!--a-->x<b/></r>", S_OK, 0, 1, "<r text=- @12"},
        // The comment end is found only at an odd distance from "<!--"; else the scan eats on.
        {"<r><!--a-->\n<b/></r>", S_OK, 6, 0, ""},
        {"<r><!--ab-->\n<b/></r>", E_FAIL, 1, 0, ""},
        {"<r><!--ab-->xy-->\n<b/></r>", S_OK, 6, 0, ""},
        // A comment marker in the last four bytes is a start tag "!--" cut short; one byte more
        // makes it a comment running to the end.
        {"<a/><!--", E_FAIL, 3, 0, ""},
        {"<a/><!--x", S_OK, 0, -1, "end-document"},
        // Without the closing marker verbatim text runs to the end of the buffer.
        {"<r>x]]>y<b/></r>", E_FAIL, 0, -1, "<r text=[x]]>y<b/></r>] @16"},
        // A comment opened in the last bytes moves the scan past the end; the slice stops at
        // the last byte.
        {"<r>ab<!--c", E_FAIL, 0, -1, "<r text=[ab<!--c] @10"},
    };
    for (const SpotCase& c : cases) {
        const Events events = ParseEvents(c.document, c.result);
        if (c.count) {
            EXPECT_EQ(events.size(), c.count) << c.document;
        }
        if (!c.event.empty()) {
            const int index = c.at < 0 ? static_cast<int>(events.size()) + c.at : c.at;
            ASSERT_TRUE(index >= 0 && index < static_cast<int>(events.size())) << c.document;
            EXPECT_EQ(events[static_cast<std::size_t>(index)], c.event) << c.document;
        }
    }
}

TEST(SaxParserElements, EndTagNamesAreNotCheckedAndPositionsReportProgress)
{
    SaxRecorder recorder;
    EXPECT_EQ(Parse("<a></b>", recorder), S_OK);
    EXPECT_EQ(recorder.events[2], "</b @6");
    // At an end tag only qName is new: the prefix is empty, localName the last start tag.
    EXPECT_EQ(recorder.prefixes, (Events{"-", "-"}));
    EXPECT_EQ(recorder.localNames, (Events{"[a]", "[a]"}));

    SaxRecorder progress;
    const std::string document = "<root>\n  <item/>\n</root>\n";
    ASSERT_EQ(Parse(document, progress), S_OK);
    EXPECT_EQ(progress.lastLength, document.size());
    EXPECT_EQ(progress.events[2], "<item text=- @16");
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

TEST(SaxParserAttributes, LookUpByExactName)
{
    SaxRecorder lookup;
    int seen = 0;
    lookup.onAttributes = [&seen](const ZOLTASaxAttributes& attributes) {
        ++seen;
        EXPECT_EQ(attributes.capacity, ZOLTASaxParser::kAttributeCapacity);
        EXPECT_EQ(attributes.IndexOf("y"), 1u);
        EXPECT_EQ(attributes.IndexOf("missing"), attributes.count);
        EXPECT_EQ(SaxRecorder::Show(attributes.GetValue("y")), "[2]");
        // An absent attribute gives the shared empty slice: invalid, and equal to "".
        EXPECT_FALSE(attributes.GetValue("missing").IsValid());
        EXPECT_TRUE(attributes.GetValue("missing") == "");
        EXPECT_FALSE(attributes.GetValue("bare").IsValid());
    };
    ASSERT_EQ(Parse("<a x=\"1\" y=\"2\" y=\"3\" bare/>", lookup), S_OK);
    EXPECT_EQ(seen, 1);
}

TEST(SaxParserHandler, AnyNonZeroResultStopsAtOnceAndEndDocumentsResultIsReturned)
{
    SaxRecorder atStartDocument;
    atStartDocument.stopAtStartDocument = E_ABORT;
    EXPECT_EQ(Parse("<a/>", atStartDocument), E_ABORT);
    EXPECT_EQ(atStartDocument.events, (Events{"start-document"}));

    SaxRecorder atStart;
    atStart.stopAtStart = 2;
    EXPECT_EQ(Parse("<a><b/><c/></a>", atStart), S_FALSE);
    EXPECT_EQ(atStart.events.back(), "<b text=- @7");

    SaxRecorder atEnd;
    atEnd.stopAtEnd = 1;
    atEnd.stopResult = E_ABORT;
    EXPECT_EQ(Parse("<a><b/><c/></a>", atEnd), E_ABORT);
    EXPECT_EQ(atEnd.events.back(), "</b @7");

    SaxRecorder atEndDocument;
    atEndDocument.endDocumentResult = 42;
    EXPECT_EQ(Parse("<a/>", atEndDocument), 42);

    ZOLTASaxContentHandler base;
    const std::string document = "<a x=\"1\">t<b/></a>";
    EXPECT_EQ(ZOLTASaxParser::ParseBuffer(document.data(), static_cast<std::uint32_t>(document.size()), base), S_OK);
    EXPECT_EQ(base.UnusedEvent(), S_OK);
    EXPECT_EQ(ZOLTASaxParser::ParseBuffer(nullptr, 4, atEnd), E_POINTER);
    EXPECT_EQ(ZOLTASaxParser::ParseBuffer(nullptr, 0, atEnd), E_FAIL);
}

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

TEST(SaxParserFile, ParsesAMappedFileAndFailsOnAMissingOrEmptyOne)
{
    const std::string folder = curatool::test::MakeScratchDir("sax");
    ASSERT_TRUE(curatool::test::WriteFile(folder + "/doc.xml", "<a><b>x</b></a>"));
    SaxRecorder recorder;
    EXPECT_EQ(ZOLTASaxParser::ParseFile((folder + "/doc.xml").c_str(), recorder), S_OK);
    EXPECT_EQ(recorder.events[2], "<b text=[x] @7");

    SaxRecorder failing;
    EXPECT_EQ(ZOLTASaxParser::ParseFile((folder + "/none.xml").c_str(), failing), E_FAIL);
    ASSERT_TRUE(curatool::test::WriteFile(folder + "/empty.xml", ""));
    EXPECT_EQ(ZOLTASaxParser::ParseFile((folder + "/empty.xml").c_str(), failing), E_FAIL);
    EXPECT_TRUE(failing.events.empty());
}

}  // namespace

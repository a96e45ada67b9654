#include "libZoltaAtl/CAtlStringA.h"
#include "foundation/CComPtr.h"
#include "foundation/CZoltaFilePath.h"
#include "foundation/IZOLTAXMLWriter.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"
#include "foundation/ZOLTAXMLWriter.h"
#include "foundation/ZoltaStreamBase.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using curatool::test::FilePath;
using curatool::test::MakeScratchDir;
using curatool::test::ReadFile;

// Runs `build` on a fresh string writer and gives what it wrote.
std::string Written(const std::function<void(IZOLTAXMLWriter*)>& build)
{
    CComPtr<IZOLTAXMLWriter> writer;
    EXPECT_EQ(S_OK, CreateStringWriter(&writer));
    build(writer);
    CAtlStringA text;
    EXPECT_EQ(S_OK, writer->GetResult(&text));
    return std::string(static_cast<const char*>(text), static_cast<std::size_t>(text.GetLength()));
}

// A stream whose writes all fail, though they seem to go through.
class RecordingStream : public CZoltaStreamBase<IStream> {
public:
    HRESULT Read(void*, std::uint32_t, std::uint32_t*) override { return E_NOTIMPL; }
    HRESULT Write(const void* data, std::uint32_t size, std::uint32_t* outWritten) override
    {
        if (outWritten)
            *outWritten = size;
        return failWrites ? E_FAIL : S_OK;
    }
    HRESULT Seek(LARGE_INTEGER, std::uint32_t, ULARGE_INTEGER*) override { return E_NOTIMPL; }
    HRESULT Stat(STATSTG*, std::uint32_t) override { return E_NOTIMPL; }

    bool failWrites = false;
};

class WriterOn : public CMyWriter {
public:
    explicit WriterOn(IStream* stream)
        : CMyWriter(CComPtr<IStream>(stream))
    {}
    HRESULT GetResult(CAtlStringA*) override { return S_OK; }
};

TEST(XmlWriterTest, ElementsTakeTheEmptyFormUntilContentClosesAndFiveBytesAreEscaped)
{
    EXPECT_EQ("<a/>", Written([](IZOLTAXMLWriter* w) {
                  w->StartElement("a");
                  w->EndElement("a");
              }));
    // Text closes the start tag even when it is empty.
    EXPECT_EQ("<a></a>", Written([](IZOLTAXMLWriter* w) {
                  w->StartElement("a");
                  w->AddText("");
                  w->EndElement("a");
              }));
    EXPECT_EQ("<a x=\"1\"><b/></a>", Written([](IZOLTAXMLWriter* w) {
                  w->StartElement("a");
                  w->AddAttribute("x", "1");
                  w->StartElement("b");
                  w->EndElement("b");
                  w->EndElement("a");
              }));
    // The five special bytes are escaped, in attributes and text alike, and nothing else.
    EXPECT_EQ("<t v=\"say &quot;hi&quot; &amp; &apos;bye&apos; &lt;x&gt;\">a&lt;b&amp;c&gt;&quot;&apos;</t>",
              Written([](IZOLTAXMLWriter* w) {
                  w->StartElement("t");
                  w->AddAttribute("v", "say \"hi\" & 'bye' <x>");
                  w->AddText("a<b&c>\"'");
                  w->EndElement("t");
              }));
    // Control characters and UTF-8 go through untouched.
    const char* raw = "tab\there\x01\x1f caf\xc3\xa9";
    EXPECT_EQ(raw, Written([raw](IZOLTAXMLWriter* w) { w->AddText(raw); }));
}

TEST(XmlWriterTest, MultiPartWideAndRawWriting)
{
    // A multi-part attribute stops at the first null; wide text is written as UTF-8.
    EXPECT_EQ("<e n=\"a&lt;bc\" m=\"ab\" k=\"a\" v=\"\xc3\xa9\xe2\x82\xac&amp;\xf0\x9f\x98\x80\"/>",
              Written([](IZOLTAXMLWriter* w) {
                  w->StartElement("e");
                  w->AddAttribute("n", "a<", "b", "c");
                  w->AddAttribute("m", "a", "b", nullptr);
                  w->AddAttribute("k", "a", nullptr, "never");
                  w->AddAttributeWide("v", L"\u00e9\u20ac&\U0001F600");
                  w->EndElement("e");
              }));
    // Raw writing leaves the start tag open and text unescaped.
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"
              "<root xmlns:z=\"u&v\"><i>&amp;</i></root>",
              Written([](IZOLTAXMLWriter* w) {
                  w->WriteHeader();
                  w->StartElement("root");
                  w->WriteRaw(" xmlns:z=\"u&v\"");
                  w->AddRawText("<i>&amp;</i>");
                  w->EndElement("root");
              }));
}

TEST(XmlWriterTest, OnlyAMissingStreamIsReportedAsFailure)
{
    CComPtr<IZOLTAXMLWriter> writer;
    writer.Attach(new WriterOn(nullptr));
    EXPECT_EQ(E_FAIL, writer->WriteHeader());
    EXPECT_EQ(E_FAIL, writer->StartElement("a"));
    EXPECT_EQ(E_FAIL, writer->AddText("t"));

    // Failed writes on a live stream are not reported.
    auto* stream = new RecordingStream;
    stream->failWrites = true;
    CComPtr<IStream> keep;
    keep.Attach(stream);
    CComPtr<IZOLTAXMLWriter> live;
    live.Attach(new WriterOn(stream));
    EXPECT_EQ(S_OK, live->StartElement("a"));
    EXPECT_EQ(S_OK, live->AddText("b"));
}

TEST(XmlWriterTest, FileWriterWritesTheFileOrRefusesToExist)
{
    const std::string dir = MakeScratchDir("xml-file");
    const std::string path = dir + "/out.xml";
    {
        CComPtr<IZOLTAXMLWriter> writer;
        ASSERT_EQ(S_OK, CreateFileWriter(&writer, FilePath(path)));
        writer->WriteHeader();
        EXPECT_EQ(S_OK, WriteSimpleElement(writer, "name", "Tom & Jerry"));
        EXPECT_EQ(S_OK, writer->GetResult(nullptr));
    }
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><name>Tom &amp; Jerry</name>",
              ReadFile(path));

    IZOLTAXMLWriter* failed = reinterpret_cast<IZOLTAXMLWriter*>(&failed);
    EXPECT_EQ(E_FAIL, CreateFileWriter(&failed, FilePath(dir + "/missing/out.xml")));
    EXPECT_EQ(nullptr, failed);

    // /dev/full takes the open and refuses every byte when the buffer goes out: the result shows it.
    CComPtr<IZOLTAXMLWriter> full;
    ASSERT_EQ(S_OK, CreateFileWriter(&full, FilePath("/dev/full")));
    EXPECT_EQ(S_OK, WriteSimpleElement(full, "a", "b"));
    EXPECT_EQ(E_FAIL, full->GetResult(nullptr));
}

TEST(XmlWriterTest, TypedHelpersFormatTheirValues)
{
    EXPECT_EQ("<e f=\"3.14\" g=\"-1.50\" h=\"2.00\" i=\"-42\" c=\"#0a0bff\" n=\"none\" d=\"data:;base64,aGVsbG8=\" "
              "z=\"data:;base64,\"/>",
              Written([](IZOLTAXMLWriter* w) {
                  w->StartElement("e");
                  EXPECT_EQ(S_OK, AddAttributeFloat(w, "f", 3.14159));
                  EXPECT_EQ(S_OK, AddAttributeFloat(w, "g", -1.5));
                  EXPECT_EQ(S_OK, AddAttributeFloat(w, "h", 2.0));
                  EXPECT_EQ(S_OK, AddAttributeInt(w, "i", -42));
                  EXPECT_EQ(S_OK, AddAttributeColor(w, "c", 0x0A0BFF));
                  EXPECT_EQ(S_OK, AddAttributeColor(w, "n", 0x123456, true));
                  EXPECT_EQ(S_OK, AddAttributeBinary(w, "d", "hello", 5));
                  EXPECT_EQ(S_OK, AddAttributeBinary(w, "z", nullptr, 0));
                  w->EndElement("e");
              }));
    EXPECT_EQ("<s>a&lt;b</s><s></s><c><![CDATA[x<&y]]></c>", Written([](IZOLTAXMLWriter* w) {
                  EXPECT_EQ(S_OK, WriteSimpleElement(w, "s", "a<b"));
                  EXPECT_EQ(S_OK, WriteSimpleElement(w, "s", nullptr));
                  w->StartElement("c");
                  EXPECT_EQ(S_OK, AddCData(w, "x<&y"));
                  w->EndElement("c");
              }));
}

}  // namespace

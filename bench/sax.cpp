// Reading speed of the gallery SAX parser on a large generated imsmanifest.xml, against a DOM
// parse of the same bytes by pugixml, in interleaved pairs (5 unless the first argument asks for
// more). Prints the median and the spread of the ratio (DOM time / SAX time): 1.0 or more means
// the SAX reader is at least as fast.
#include "Pairs.h"
#include "gallery/sax/ZOLTASaxParser.h"

#include <benchmark/benchmark.h>

#if __has_include(<pugixml.hpp>)
#include <pugixml.hpp>
#define CURATOOL_HAVE_PUGIXML 1
#endif

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kTargetSize = 100u * 1024u * 1024u;

void AppendActivity(std::string& out, unsigned number)
{
    const std::string n = std::to_string(number);
    out += "        <item identifier=\"id" + n + "\" identifierref=\"res" + n +
           "\">\n"
           "          <title>Activity " +
           n +
           "</title>\n"
           "          <metadata>\n"
           "            <lom:lom>\n"
           "              <lom:general>\n"
           "                <lom:identifier>\n"
           "                  <lom:catalog>URI</lom:catalog>\n"
           "                  <lom:entry>zolta-placeholder://gallery.zoltaworks.invalid/uniqueid?"
           "type=activity&amp;id=6F9619FF-8B86-D011-B42D-00C04FC9" +
           n +
           "</lom:entry>\n"
           "                </lom:identifier>\n"
           "                <lom:title>\n"
           "                  <lom:string language=\"en\">Picture number " +
           n +
           "</lom:string>\n"
           "                  <lom:string language=\"fr-CA\">Image num\xC3\xA9ro " +
           n +
           "</lom:string>\n"
           "                </lom:title>\n"
           "                <lom:keyword>\n"
           "                  <lom:string language=\"en\">animals &amp; plants</lom:string>\n"
           "                </lom:keyword>\n"
           "              </lom:general>\n"
           "              <lom:technical>\n"
           "                <lom:format>application/x-zoltaworks-galleryitem;x-original-type=image/png</lom:format>\n"
           "              </lom:technical>\n"
           "            </lom:lom>\n"
           "          </metadata>\n"
           "        </item>\n";
}

// A manifest of the shape this system writes, grown past kTargetSize.
std::string GenerateManifest()
{
    std::string out;
    out.reserve(kTargetSize + kTargetSize / 4);
    out += "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
           "<manifest identifier=\"id1\" version=\"2006-01\" xmlns=\"http://www.imsglobal.org/xsd/imscp_v1p1\" "
           "xmlns:lom=\"http://ltsc.ieee.org/xsd/LOM\">\n"
           "  <organizations default=\"id2\">\n"
           "    <organization identifier=\"id2\" zoltagallery:readonly=\"false\">\n"
           "      <title>Benchmark</title>\n";
    unsigned number = 3;
    std::vector<unsigned> activities;
    while (out.size() < kTargetSize * 9 / 10) {
        out += "      <item identifier=\"id" + std::to_string(number++) +
               "\">\n"
               "        <title>Category</title>\n";
        for (int i = 0; i < 100; ++i) {
            activities.push_back(number);
            AppendActivity(out, number++);
        }
        out += "      </item>\n";
    }
    out += "    </organization>\n  </organizations>\n  <resources>\n";
    for (std::size_t i = 0; out.size() < kTargetSize; ++i) {
        const std::string n = std::to_string(activities[i % activities.size()]);
        out += "    <resource identifier=\"res" + n +
               "\" type=\"webcontent\" adlcp:scormType=\"asset\" "
               "href=\"Content/item" +
               n + ".png\">\n      <file href=\"Content/item" + n +
               ".png\"/>\n"
               "    </resource>\n";
    }
    out += "  </resources>\n</manifest>\n";
    return out;
}

const std::string& Manifest()
{
    static const std::string manifest = GenerateManifest();
    return manifest;
}

// Looks at what a reader of manifests looks at: names, attributes, text.
class CountingHandler : public ZOLTASaxContentHandler {
public:
    HRESULT StartElement(const ZOLTASaxString&, const ZOLTASaxString&, const ZOLTASaxString& qName,
                         const ZOLTASaxAttributes& attributes, const ZOLTASaxString& text, std::uint32_t,
                         std::uint32_t) override
    {
        ++elements;
        attributeCount += attributes.count;
        textBytes += text.length;
        if (qName == "item" && attributes.GetValue("identifierref").IsValid())
            ++activities;
        return S_OK;
    }
    HRESULT EndElement(const ZOLTASaxString&, const ZOLTASaxString&, const ZOLTASaxString&, std::uint32_t,
                       std::uint32_t) override
    {
        ++endElements;
        return S_OK;
    }
    std::size_t elements = 0, endElements = 0, attributeCount = 0, textBytes = 0, activities = 0;
};

double SaxSeconds()
{
    const std::string& manifest = Manifest();
    CountingHandler handler;
    const auto start = std::chrono::steady_clock::now();
    const HRESULT hr =
        ZOLTASaxParser::ParseBuffer(manifest.data(), static_cast<std::uint32_t>(manifest.size()), handler);
    const auto stop = std::chrono::steady_clock::now();
    if (hr != S_OK || handler.elements != handler.endElements) {
        std::fprintf(stderr, "SAX parse failed: 0x%x\n", static_cast<unsigned>(hr));
        std::exit(1);
    }
    benchmark::DoNotOptimize(handler.activities);
    return std::chrono::duration<double>(stop - start).count();
}

#ifdef CURATOOL_HAVE_PUGIXML
// One pugixml parse of `bytes` through `load`, timed; the program ends if it fails.
template <class Bytes, class Load>
double DomParseSeconds(Bytes& bytes, Load load)
{
    pugi::xml_document document;
    const auto start = std::chrono::steady_clock::now();
    const pugi::xml_parse_result result = load(document, bytes);
    const auto stop = std::chrono::steady_clock::now();
    if (!result) {
        std::fprintf(stderr, "pugixml failed: %s\n", result.description());
        std::exit(1);
    }
    benchmark::DoNotOptimize(document.first_child());
    return std::chrono::duration<double>(stop - start).count();
}

// The library's ordinary entry: it copies the bytes, then parses in place.
double DomSeconds()
{
    return DomParseSeconds(Manifest(), [](pugi::xml_document& document, const std::string& bytes) {
        return document.load_buffer(bytes.data(), bytes.size());
    });
}

// Its fastest entry: in place over a private copy made before the clock starts.
double DomInPlaceSeconds()
{
    std::string copy = Manifest();
    return DomParseSeconds(copy, [](pugi::xml_document& document, std::string& bytes) {
        return document.load_buffer_inplace(bytes.data(), bytes.size());
    });
}
#endif

}  // namespace

int main(int argc, char** argv)
{
    const int pairs = argc > 1 ? std::max(5, std::atoi(argv[1])) : 5;
    const std::size_t size = Manifest().size();
    std::printf("manifest: %.1f MB\n", static_cast<double>(size) / (1024.0 * 1024.0));
#ifdef CURATOOL_HAVE_PUGIXML
    // Each comparison in interleaved pairs, so that both sides see the same machine.
    const bench::PairResult dom = bench::RunPairs(pairs, DomSeconds, SaxSeconds);
    const bench::PairResult inPlace = bench::RunPairs(pairs, DomInPlaceSeconds, SaxSeconds);
    bench::PrintPairs("pugixml DOM against SAX", "pugixml DOM", "SAX", dom, pairs);
    bench::PrintPairs("pugixml DOM in place against SAX", "pugixml in place", "SAX", inPlace, pairs);
    std::printf("SAX: %.0f MB/s (median)\n", static_cast<double>(size) / dom.second.median / 1048576.0);
    return dom.ratio.median >= 1.0 ? 0 : 1;
#else
    std::vector<double> times;
    for (int i = 0; i < pairs; ++i)
        times.push_back(SaxSeconds());
    std::printf("SAX parse: %s; pugixml not found, no ratio\n",
                bench::Format(bench::SpreadOf(times), 1e3, "ms", 1).c_str());
    return 0;
#endif
}

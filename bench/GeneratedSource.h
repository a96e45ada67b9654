#pragma once
// Generated gallery sources for the benchmarks: content that barely compresses, package manifests
// and the categories document, zipped by Info-ZIP as a publisher would make them.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace bench {

// Pictures and sounds barely compress: mostly random bytes, a little text.
inline std::string ContentBytes(unsigned seed, std::size_t size)
{
    std::string bytes;
    bytes.reserve(size + 64);
    std::uint64_t state = seed * 0x9E3779B97F4A7C15ull + 1;
    while (bytes.size() < size) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        if (state % 16 == 0)
            bytes += "<meta name=\"picture\" content=\"lesson " + std::to_string(state % 977) + "\"/>\n";
        else
            bytes.append(reinterpret_cast<const char*>(&state), 8);
    }
    bytes.resize(size);
    return bytes;
}

inline void WriteFile(const std::filesystem::path& path, const std::string& bytes)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string Lom(const std::string& id)
{
    return "<lom:lom><lom:general><lom:identifier><lom:entry>" + id +
           "</lom:entry></lom:identifier><lom:title><lom:string language=\"en\">" + id +
           "</lom:string></lom:title></lom:general><lom:lifeCycle><lom:version><lom:string language=\"en\">1.0"
           "</lom:string></lom:version></lom:lifeCycle></lom:lom>";
}

// One package: a category of the gallery holding one activity with its content file.
inline std::string PackageManifest(int category, const std::string& id, const std::string& content)
{
    const std::string folder = "bench.category" + std::to_string(category);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<manifest identifier=\"m\" version=\"2006-01\"><metadata>" +
           Lom(id) +
           "</metadata>\n<organizations default=\"o\"><organization identifier=\"o\"><title>Bench</title>\n"
           "<item identifier=\"c\"><title>" +
           folder + "</title>\n<item identifier=\"a\" identifierref=\"r\"><title>" + id + "</title><metadata>" +
           Lom(id + ".activity") + "</metadata></item>\n<metadata>" + Lom(folder) + "</metadata></item>\n<metadata>" +
           Lom("bench.organization") +
           "</metadata></organization></organizations>\n<resources><resource identifier=\"r\" type=\"webcontent\" "
           "href=\"" +
           content + "\"><file href=\"" + content + "\"/></resource></resources>\n</manifest>\n";
}

// `categories` x `perCategory` packages of one content file of `contentSize` bytes each, and the
// categories document, in `source`; `staging` holds the unzipped packages.
inline void MakeSource(const std::filesystem::path& source, const std::filesystem::path& staging, int categories,
                       int perCategory, std::size_t contentSize)
{
    std::string document = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<gallery>\n<categories>\n";
    for (int c = 0; c < categories; ++c) {
        document += "<category id=\"bench.category" + std::to_string(c) +
                    "\" version=\"1.0\">\n<title><t language=\"en\">Category " + std::to_string(c) +
                    "</t></title>\n<files>\n";
        for (int p = 0; p < perCategory; ++p) {
            const int n = c * perCategory + p;
            const std::string id = "bench.package" + std::to_string(n);
            const std::string content = "content" + std::to_string(n) + ".bin";
            const std::filesystem::path folder = staging / std::to_string(n);
            WriteFile(folder / "imsmanifest.xml", PackageManifest(c, id, content));
            WriteFile(folder / content, ContentBytes(unsigned(n), contentSize));
            const std::string zip = "cd '" + folder.string() + "' && zip -q -r '" +
                                    (source / ("package" + std::to_string(n) + ".zip")).string() + "' .";
            if (std::system(zip.c_str()) != 0)
                std::exit(2);
            document += "<file id=\"" + id + "\" version=\"1.0\">package" + std::to_string(n) + ".zip</file>\n";
        }
        document += "</files>\n</category>\n";
    }
    WriteFile(source / "gallery_categories.xml", document + "</categories>\n</gallery>\n");
}

}  // namespace bench

#pragma once

// Shared pieces of the archive tests: a raw archive writer that does not use the code under test
// (so hostile and damaged archives can be made byte by byte), tree comparison, and tool runs.

#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"
#include "TestEnvironment.h"
#include "TestText.h"

#include <QString>

#include <zlib.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace ziptest {

using curatool::test::FilePath;
using curatool::test::FolderPath;

inline bool HasTool(const char* name)
{
    return std::system((std::string("command -v ") + name + " >/dev/null 2>&1").c_str()) == 0;
}

inline int RunShell(const std::string& command)
{
    return std::system(("( " + command + " ) >/dev/null 2>&1").c_str());
}

inline std::string Quote(const std::string& text)
{
    std::string quoted = "'";
    for (char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

// Relative path -> contents, with "/" appended to folder names and "<dir>" as their contents.
inline std::map<std::string, std::string> ReadTree(const std::string& root)
{
    namespace fs = std::filesystem;
    std::map<std::string, std::string> tree;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const std::string relative = fs::relative(entry.path(), root).generic_string();
        if (entry.is_directory()) {
            tree[relative + "/"] = "<dir>";
        } else {
            tree[relative] = curatool::test::ReadFile(entry.path().string());
        }
    }
    return tree;
}

// Text and random bytes mixed, the way real content is: some compresses, some does not.
inline std::string SampleBytes(size_t size, unsigned seed)
{
    std::string bytes;
    bytes.reserve(size);
    uint32_t state = seed * 2654435761u + 1;
    while (bytes.size() < size) {
        state = state * 1103515245u + 12345u;
        if ((state >> 16) % 3 == 0) {
            for (int i = 0; i < 64 && bytes.size() < size; ++i) {
                state = state * 1103515245u + 12345u;
                bytes += char(state >> 24);
            }
        } else {
            bytes += "line " + std::to_string(state % 1000) + " of the gallery text\n";
        }
    }
    bytes.resize(size);
    return bytes;
}

// Writes archives field by field, stored entries only, with every field open to tampering.
struct RawEntry {
    std::string name;
    std::string data;
    uint16_t madeBy = 0x0314;  // Unix, 2.0
    uint32_t externalAttr = 0100644u << 16;
    uint16_t flags = 0;
    uint16_t method = 0;
    bool badCrc = false;
    bool deflate = false;       // the data goes in deflated (method 8)
    int64_t declaredSize = -1;  // the uncompressed size claimed, when not the data's own
    int sharesDataOf = -1;      // index of an earlier entry whose local header this one names
};

// Raw deflate, as an archive holds it.
inline std::string Deflated(const std::string& data)
{
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&stream, uLong(data.size())), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    stream.avail_in = uInt(data.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = uInt(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(out.size() - stream.avail_out);
    deflateEnd(&stream);
    return out;
}

class RawZip {
public:
    void Add(RawEntry entry) { m_entries.push_back(std::move(entry)); }
    void Add(const std::string& name, const std::string& data)
    {
        RawEntry entry;
        entry.name = name;
        entry.data = data;
        Add(entry);
    }

    std::string Build(uint16_t thisDisk = 0, uint16_t centralDisk = 0) const
    {
        std::string out;
        std::string central;
        std::vector<uint32_t> offsets;
        for (const RawEntry& entry : m_entries) {
            uint32_t crc =
                uint32_t(crc32(0, reinterpret_cast<const Bytef*>(entry.data.data()), uInt(entry.data.size())));
            if (entry.badCrc)
                crc ^= 0x5A5A5A5Au;
            const std::string stored = entry.deflate ? Deflated(entry.data) : entry.data;
            const uint32_t size = entry.declaredSize >= 0 ? uint32_t(entry.declaredSize) : uint32_t(entry.data.size());
            // The fields the local header and the central record share, from "version needed" on.
            auto common = [&](std::string& to) {
                Put16(to, 10);
                Put16(to, entry.flags);
                Put16(to, entry.deflate ? 8 : entry.method);
                Put16(to, 0);
                Put16(to, 0x5A21);  // 2025-01-01
                Put32(to, crc);
                Put32(to, uint32_t(stored.size()));
                Put32(to, size);
                Put16(to, uint16_t(entry.name.size()));
                Put16(to, 0);
            };
            const uint32_t offset =
                entry.sharesDataOf >= 0 ? offsets[size_t(entry.sharesDataOf)] : uint32_t(out.size());
            offsets.push_back(offset);
            if (entry.sharesDataOf < 0) {
                Put32(out, 0x04034b50);
                common(out);
                out += entry.name + stored;
            }

            Put32(central, 0x02014b50);
            Put16(central, entry.madeBy);
            common(central);
            Put16(central, 0);  // comment length, disk, internal attributes
            Put16(central, 0);
            Put16(central, 0);
            Put32(central, entry.externalAttr);
            Put32(central, offset);
            central += entry.name;
        }
        const uint32_t centralOffset = uint32_t(out.size());
        out += central;
        Put32(out, 0x06054b50);
        Put16(out, thisDisk);
        Put16(out, centralDisk);
        Put16(out, uint16_t(m_entries.size()));
        Put16(out, uint16_t(m_entries.size()));
        Put32(out, uint32_t(central.size()));
        Put32(out, centralOffset);
        Put16(out, 0);
        return out;
    }

private:
    static void Put16(std::string& out, uint16_t v)
    {
        out += char(v & 0xFF);
        out += char(v >> 8);
    }
    static void Put32(std::string& out, uint32_t v)
    {
        Put16(out, uint16_t(v & 0xFFFF));
        Put16(out, uint16_t(v >> 16));
    }

    std::vector<RawEntry> m_entries;
};

// An archive of these entries in one call.
inline std::string Archive(const std::vector<RawEntry>& entries)
{
    RawZip zip;
    for (const RawEntry& entry : entries)
        zip.Add(entry);
    return zip.Build();
}

}  // namespace ziptest

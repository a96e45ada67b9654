// Opens arbitrary bytes as an archive, lists every entry, reads each into memory and extracts
// all of them into a scratch folder, then checks that nothing landed beside that folder.
#include "ziparchive/CZipArchive.h"
#include "ziparchive/CZipException.h"
#include "ziparchive/CZipMemFile.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

const fs::path& ScratchRoot()
{
    static const fs::path root = [] {
        const char* tmp = std::getenv("TMPDIR");
        fs::path path = fs::path(tmp && *tmp ? tmp : "/tmp") / ("zip_reader_fuzz-" + std::to_string(getpid()));
        fs::create_directories(path);
        return path;
    }();
    return root;
}

void ListAndRead(CZipArchive& zip)
{
    for (int i = 0; i < zip.GetCount(); ++i) {
        CZipFileHeader header;
        zip.GetFileInfo(header, i);
        (void)header.GetTime();
        (void)header.IsDirectory();
        (void)header.GetFileNameWide();
        try {
            CZipMemFile memory;
            zip.ExtractFile(i, memory);
        }
        catch (const CZipException&) {
        }
        try {
            zip.TestFile(i);
        }
        catch (const CZipException&) {
        }
    }
}

void ExtractAll(CZipArchive& zip, const fs::path& destination)
{
    for (int i = 0; i < zip.GetCount(); ++i) {
        try {
            zip.ExtractFile(i, destination.string(), true);
            zip.ExtractFile(i, destination.string(), false);
        }
        catch (const CZipException&) {
        }
    }
}

void CheckNothingOutside(const fs::path& root)
{
    for (const auto& entry : fs::directory_iterator(root)) {
        if (entry.path().filename() != "dest") {
            std::fprintf(stderr, "extraction escaped its folder: %s\n", entry.path().c_str());
            std::abort();
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const fs::path root = ScratchRoot();
    const fs::path destination = root / "dest";
    fs::create_directories(destination);

    CZipMemFile memory(data, size);
    CZipArchive zip;
    try {
        zip.Open(memory, CZipArchive::zipOpenReadOnly);
        ListAndRead(zip);
        ExtractAll(zip, destination);
        zip.Close();
    }
    catch (const CZipException&) {
        if (!zip.IsClosed())
            zip.Close(true);
    }

    CheckNothingOutside(root);
    std::error_code error;
    fs::remove_all(destination, error);
    return 0;
}

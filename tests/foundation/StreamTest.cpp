#include "foundation/CComPtr.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"
#include "foundation/ZoltaBufferStream.h"
#include "foundation/ZoltaFileStreams.h"
#include "foundation/ZoltaStreamHelpers.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using curatool::test::FilePath;
using curatool::test::MakeScratchDir;
using curatool::test::ReadFile;
using curatool::test::WriteFile;

std::string ReadAll(IStream* stream, std::uint32_t chunk = 7)
{
    std::string all;
    std::vector<char> buffer(chunk);
    std::uint32_t read = 0;
    while (stream->Read(buffer.data(), chunk, &read) == S_OK)
        all.append(buffer.data(), read);
    return all;
}

HRESULT WriteText(IStream* stream, const std::string& text)
{
    return stream->Write(text.data(), static_cast<std::uint32_t>(text.size()), nullptr);
}

std::uint32_t WordAt(const std::string& bytes, std::size_t offset)
{
    std::uint32_t word = 0;
    std::memcpy(&word, bytes.data() + offset, sizeof word);
    return word;
}

std::string BufferBytes(IStreamOnBuffer* buffer)
{
    return std::string(reinterpret_cast<const char*>(buffer->GetData()), buffer->GetLength());
}

// ---- holders ----

class CountedObject : public IUnknown {
public:
    explicit CountedObject(bool* deleted)
        : m_deleted(deleted)
    {}
    HRESULT QueryInterface(REFIID, void**) override { return E_NOTIMPL; }
    std::uint32_t AddRef() override { return ++refs; }
    std::uint32_t Release() override
    {
        const std::uint32_t left = --refs;
        if (left == 0) {
            *m_deleted = true;
            delete this;
        }
        return left;
    }
    std::uint32_t refs = 1;

private:
    bool* m_deleted;
};

TEST(CComPtrTest, SharesAndReleasesReferences)
{
    bool deleted = false;
    auto* object = new CountedObject(&deleted);
    {
        CComPtr<CountedObject> first;
        first.Attach(object);  // adopts the creation reference
        EXPECT_EQ(1u, object->refs);
        CComPtr<CountedObject> second = first;
        EXPECT_EQ(2u, object->refs);
        CComPtr<IUnknown> asBase = second;
        EXPECT_EQ(3u, object->refs);
        CComPtr<CountedObject> moved = std::move(second);
        EXPECT_EQ(3u, object->refs);
        EXPECT_FALSE(second);
        asBase = nullptr;
        EXPECT_EQ(2u, object->refs);
        CountedObject* handedOut = moved.Detach();
        EXPECT_EQ(2u, object->refs);
        handedOut->Release();
        EXPECT_FALSE(deleted);
    }
    EXPECT_TRUE(deleted);

    // The address of an empty holder is an out argument that fills it.
    bool filledDeleted = false;
    CComPtr<IUnknown> holder;
    IUnknown** slot = &holder;
    *slot = new CountedObject(&filledDeleted);
    EXPECT_TRUE(holder != nullptr);
    holder.Release();
    EXPECT_TRUE(filledDeleted);
}

TEST(CComPtrDeathTest, UsingAnEmptyHolderEndsTheProcess)
{
    CComPtr<IStream> empty;
    EXPECT_DEATH(empty->AddRef(), "p != nullptr");
}

// ---- file streams ----

TEST(FileStreamTest, WritesSeeksAndTruncatesAnOldFile)
{
    const std::string dir = MakeScratchDir("stream-write");
    const std::string path = dir + "/out.bin";
    ASSERT_TRUE(WriteFile(path, "old content that is longer than the new one"));
    {
        CComPtr<IStream> stream = CreateWriteStream(FilePath(path), 5, 0);
        ASSERT_TRUE(stream);
        EXPECT_EQ(S_OK, WriteText(stream, "hello world"));
        ULARGE_INTEGER position{};
        EXPECT_EQ(S_OK, stream->Seek(MakeLargeInteger(6), STREAM_SEEK_SET, &position));
        EXPECT_EQ(6u, position.LowPart);
        EXPECT_EQ(S_OK, WriteText(stream, "WORLD"));
        EXPECT_EQ(S_OK, stream->Seek(MakeLargeInteger(-2), STREAM_SEEK_END, &position));
        EXPECT_EQ(9u, position.LowPart);
        STATSTG stat{};
        EXPECT_EQ(S_OK, stream->Stat(&stat, 0));
        EXPECT_EQ(11u, stat.cbSize.Quad());
    }
    EXPECT_EQ("hello WORLD", ReadFile(path));
}

TEST(FileStreamTest, ReadsSeeksAndGivesFalseAndZeroCountAtTheEnd)
{
    const std::string dir = MakeScratchDir("stream-read");
    ASSERT_TRUE(WriteFile(dir + "/in.bin", "0123456789"));
    CComPtr<IStream> stream = OpenReadStream(FilePath(dir + "/in.bin"));
    ASSERT_TRUE(stream);
    char buffer[16];
    std::uint32_t read = 99;
    ULARGE_INTEGER position{};
    ASSERT_EQ(S_OK, stream->Seek(MakeLargeInteger(7), STREAM_SEEK_SET, nullptr));
    EXPECT_EQ(S_OK, stream->Seek(MakeLargeInteger(2), 42, &position));  // an unknown origin counts from the start
    EXPECT_EQ(2u, position.Quad());
    EXPECT_EQ(S_OK, stream->Read(buffer, 1, &read));
    EXPECT_EQ('2', buffer[0]);
    EXPECT_EQ(S_OK, stream->Seek(MakeLargeInteger(4), STREAM_SEEK_CUR, &position));
    EXPECT_EQ(7u, position.Quad());
    EXPECT_EQ(E_FAIL, stream->Seek(MakeLargeInteger(-100), STREAM_SEEK_SET, &position));
    EXPECT_EQ(S_OK, stream->Seek(MakeLargeInteger(-3), STREAM_SEEK_END, &position));
    EXPECT_EQ(7u, position.Quad());

    EXPECT_EQ(S_OK, stream->Read(buffer, 2, &read));
    EXPECT_EQ(2u, read);
    EXPECT_EQ(S_OK, stream->Read(buffer, sizeof buffer, &read));  // short, but something came
    EXPECT_EQ(1u, read);
    EXPECT_EQ('9', buffer[0]);
    EXPECT_EQ(S_FALSE, stream->Read(buffer, sizeof buffer, &read));
    EXPECT_EQ(0u, read);

    EXPECT_EQ(E_FAIL, stream->Read(nullptr, 1, &read));
    EXPECT_EQ(E_FAIL, stream->Read(buffer, 1, nullptr));
    EXPECT_EQ(E_FAIL, WriteText(stream, "x"));  // opened for reading only
    STATSTG stat{};
    EXPECT_EQ(S_OK, stream->Stat(&stat, 0));
    EXPECT_EQ(10u, stat.cbSize.Quad());
}

// ---- seek-and-patch helpers ----

TEST(StreamPatchTest, WriteBytesAddsSizeModuloFourZeroBytes)
{
    struct Case {
        std::uint32_t size;
        std::size_t written;
    };
    // Not a padding to four: a size of 3 gives six bytes, a size of 6 gives eight.
    for (const Case c : {Case{0, 0}, Case{1, 2}, Case{2, 4}, Case{3, 6}, Case{4, 4}, Case{6, 8}, Case{8, 8}}) {
        CComPtr<IStreamOnBuffer> buffer = CreateBufferStream();
        const std::string data(c.size, 'z');
        EXPECT_EQ(S_OK, WriteBytes(buffer, data.data(), c.size));
        const std::string bytes = BufferBytes(buffer);
        ASSERT_EQ(c.written, bytes.size()) << "size " << c.size;
        EXPECT_EQ(data, bytes.substr(0, c.size));
        EXPECT_EQ(std::string(c.written - c.size, '\0'), bytes.substr(c.size));
    }
}

TEST(StreamPatchTest, PatchWordWritesInPlaceAndComesBack)
{
    const std::string dir = MakeScratchDir("stream-patch");
    const std::string path = dir + "/image.bin";
    {
        CComPtr<IStream> stream = CreateWriteStream(FilePath(path));
        ASSERT_TRUE(stream);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(S_OK, WriteWord(stream, 0));
        ASSERT_EQ(16u, GetPosition(stream));
        EXPECT_EQ(S_OK, PatchWord(stream, 4, 8, 0xDEADBEEFu));
        EXPECT_EQ(16u, GetPosition(stream));
        EXPECT_EQ(S_OK, WriteWord(stream, 0x01020304u));
    }
    const std::string bytes = ReadFile(path);
    ASSERT_EQ(20u, bytes.size());
    EXPECT_EQ(0u, WordAt(bytes, 8));
    EXPECT_EQ(0xDEADBEEFu, WordAt(bytes, 12));
    EXPECT_EQ(0x01020304u, WordAt(bytes, 16));
}

TEST(StreamPatchTest, PatchStringPointsTheFieldAtTheTextWritten)
{
    CComPtr<IStreamOnBuffer> buffer = CreateBufferStream();
    const std::uint32_t record = 8;
    EXPECT_EQ(S_OK, WriteWord(buffer, 0xAAAAAAAAu));
    EXPECT_EQ(S_OK, WriteWord(buffer, 0xBBBBBBBBu));
    EXPECT_EQ(S_OK, WriteWord(buffer, 0));  // record field 0
    EXPECT_EQ(S_OK, WriteWord(buffer, 0));  // record field 4
    ASSERT_EQ(16u, GetPosition(buffer));

    EXPECT_EQ(S_OK, PatchString(buffer, record, 4, L"hi"));
    EXPECT_EQ(S_OK, PatchString(buffer, record, 0, nullptr));

    const std::string bytes = BufferBytes(buffer);
    ASSERT_EQ(16u + 3 * sizeof(wchar_t) + sizeof(wchar_t), bytes.size());
    EXPECT_EQ(16u, WordAt(bytes, 12));
    EXPECT_EQ(static_cast<std::uint32_t>(L'h'), WordAt(bytes, 16));
    EXPECT_EQ(static_cast<std::uint32_t>(L'i'), WordAt(bytes, 20));
    EXPECT_EQ(0u, WordAt(bytes, 24));
    // The null text became the empty string: one zero unit at its own offset.
    EXPECT_EQ(28u, WordAt(bytes, 8));
    EXPECT_EQ(0u, WordAt(bytes, 28));
    EXPECT_EQ(0xAAAAAAAAu, WordAt(bytes, 0));
}

TEST(StreamPatchTest, HelpersWithoutAStreamOrWithoutData)
{
    EXPECT_EQ(0u, GetPosition(nullptr));
    EXPECT_EQ(E_POINTER, SetPosition(nullptr, 0));
    EXPECT_EQ(E_POINTER, WriteWord(nullptr, 1));
    EXPECT_EQ(E_POINTER, WriteBytes(nullptr, "ab", 2));
    EXPECT_EQ(E_POINTER, PatchWord(nullptr, 0, 0, 1));
    EXPECT_EQ(E_POINTER, PatchString(nullptr, 0, 0, L"x"));

    CComPtr<IStreamOnBuffer> buffer = CreateBufferStream();
    EXPECT_EQ(E_INVALIDARG, WriteBytes(buffer, nullptr, 4));
    EXPECT_EQ(S_OK, WriteBytes(buffer, nullptr, 0));
    EXPECT_EQ(0u, buffer->GetLength());
}

// ---- compressed file stream ----

class CompressedStreamTest : public testing::Test {
protected:
    void SetUp() override
    {
        dir = MakeScratchDir("stream-compressed");
        tempDir = MakeScratchDir("stream-rawtemp");
        SetTempFolderOverride(CZoltaDirectoryPath(QString::fromStdString(tempDir)));
    }
    void TearDown() override { SetTempFolderOverride(CZoltaDirectoryPath()); }

    bool TempFolderIsEmpty() const { return std::filesystem::is_empty(tempDir); }

    std::string dir;
    std::string tempDir;
};

TEST_F(CompressedStreamTest, RoundTripThroughUncompress)
{
    const std::string path = dir + "/data.z";
    std::string expected;
    for (int i = 0; i < 5000; ++i)
        expected += "record " + std::to_string(i) + ";";
    expected.replace(0, 4, "HEAD");

    auto* stream = new CWritableCompressedFileStream(FilePath(path));
    ASSERT_TRUE(stream->IsValid());
    const CZoltaFilePath raw = stream->GetRawPath();
    EXPECT_TRUE(raw.Exists());
    EXPECT_EQ(".rawstream", raw.GetExtension().ToQString().toStdString());
    {
        CComPtr<IStream> holder;
        holder.Attach(stream);
        std::string unpatched = expected;
        unpatched.replace(0, 4, "XXXX");
        for (std::size_t at = 0; at < unpatched.size(); at += 1000)
            ASSERT_EQ(S_OK, WriteText(holder, unpatched.substr(at, 1000)));
        const std::uint32_t end = GetPosition(holder);
        EXPECT_EQ(S_OK, SetPosition(holder, 0));
        EXPECT_EQ(S_OK, WriteText(holder, "HEAD"));
        EXPECT_EQ(S_OK, SetPosition(holder, end));
        // Nothing reaches the target until the stream closes.
        EXPECT_EQ("", ReadFile(path));
    }
    EXPECT_FALSE(raw.Exists());
    EXPECT_TRUE(TempFolderIsEmpty());

    const std::string stored = ReadFile(path);
    ASSERT_FALSE(stored.empty());
    EXPECT_LT(stored.size(), expected.size());
    std::vector<Bytef> plain(expected.size());
    uLongf plainSize = plain.size();
    ASSERT_EQ(Z_OK, uncompress(plain.data(), &plainSize, reinterpret_cast<const Bytef*>(stored.data()), stored.size()));
    EXPECT_EQ(expected, std::string(reinterpret_cast<const char*>(plain.data()), plainSize));
}

TEST_F(CompressedStreamTest, FactoriesGiveNullHoldersAndNoTemporaryFileWhenNothingOpens)
{
    EXPECT_FALSE(OpenReadStream(FilePath(dir + "/absent.bin")));
    EXPECT_FALSE(CreateWriteStream(CZoltaFilePath()));
    EXPECT_FALSE(CreateWriteStream(FilePath(dir + "/no/such/folder/x.bin")));
    EXPECT_FALSE(CreateCompressedWriteStream(CZoltaFilePath()));
    EXPECT_FALSE(CreateCompressedWriteStream(FilePath(dir + "/missing/data.z")));
    EXPECT_TRUE(TempFolderIsEmpty());
    EXPECT_FALSE(std::filesystem::exists(dir + "/missing"));
}

TEST_F(CompressedStreamTest, ReadCompressedFileTakesAnEmptyStreamAndRefusesWhatIsNotCompressed)
{
    // A stream closed without data leaves a compressed empty file in place of the old one.
    ASSERT_TRUE(WriteFile(dir + "/empty.z", "stale"));
    CreateCompressedWriteStream(FilePath(dir + "/empty.z"));  // the holder goes at once
    std::vector<std::uint8_t> read{1, 2, 3};
    EXPECT_EQ(S_OK, ReadCompressedFile(FilePath(dir + "/empty.z"), read));
    EXPECT_TRUE(read.empty());
    EXPECT_TRUE(TempFolderIsEmpty());

    std::string data(20000, 'q');
    std::vector<Bytef> packed(compressBound(data.size()));
    uLongf packedSize = packed.size();
    ASSERT_EQ(Z_OK, compress(packed.data(), &packedSize, reinterpret_cast<const Bytef*>(data.data()), data.size()));
    ASSERT_TRUE(WriteFile(dir + "/cut.z", std::string(reinterpret_cast<const char*>(packed.data()), packedSize / 2)));
    ASSERT_TRUE(WriteFile(dir + "/plain.txt", "this is not zlib data at all"));
    for (const char* name : {"/absent.z", "/plain.txt", "/cut.z"}) {
        EXPECT_EQ(E_FAIL, ReadCompressedFile(FilePath(dir + name), read)) << name;
        EXPECT_TRUE(read.empty()) << name;
    }
}

// ---- buffer stream ----

TEST(BufferStreamTest, WritesInsideOverwriteAndAtTheEndAppend)
{
    CComPtr<IStreamOnBuffer> buffer = CreateBufferStream();
    EXPECT_EQ(nullptr, buffer->GetData());
    ASSERT_EQ(S_OK, WriteText(buffer, "abcdef"));
    ULARGE_INTEGER position{};
    ASSERT_EQ(S_OK, buffer->Seek(MakeLargeInteger(2), STREAM_SEEK_SET, &position));
    EXPECT_EQ(2u, position.Quad());
    ASSERT_EQ(S_OK, WriteText(buffer, "XY"));
    EXPECT_EQ("abXYef", BufferBytes(buffer));
    ASSERT_EQ(S_OK, buffer->Seek(MakeLargeInteger(-1), STREAM_SEEK_END, nullptr));
    ASSERT_EQ(S_OK, WriteText(buffer, "FGH"));
    EXPECT_EQ("abXYeFGH", BufferBytes(buffer));

    // Seeks stay within the bytes written.
    EXPECT_EQ(E_FAIL, buffer->Seek(MakeLargeInteger(1), STREAM_SEEK_END, nullptr));
    EXPECT_EQ(E_FAIL, buffer->Seek(MakeLargeInteger(-9), STREAM_SEEK_CUR, nullptr));
    EXPECT_EQ(8u, GetPosition(buffer));

    ASSERT_EQ(S_OK, buffer->Seek(MakeLargeInteger(3), STREAM_SEEK_SET, nullptr));
    EXPECT_EQ("YeFGH", ReadAll(buffer, 2));
    STATSTG stat{};
    EXPECT_EQ(S_OK, buffer->Stat(&stat, 0));
    EXPECT_EQ(8u, stat.cbSize.Quad());
}

TEST(BufferStreamTest, GrowsAcrossManyWritesAndHandsTheBlockOver)
{
    CComPtr<IStreamOnBuffer> buffer = CreateBufferStream();
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        const std::string piece = std::to_string(i * 7919);
        expected += piece;
        ASSERT_EQ(S_OK, WriteText(buffer, piece));
    }
    EXPECT_EQ(expected, BufferBytes(buffer));

    std::size_t length = 0;
    std::uint8_t* block = buffer->DetachBuffer(&length);
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(expected, std::string(reinterpret_cast<char*>(block), length));
    std::free(block);

    // The stream starts afresh after giving its block away.
    EXPECT_EQ(0u, buffer->GetLength());
    EXPECT_EQ(0u, GetPosition(buffer));
    ASSERT_EQ(S_OK, WriteText(buffer, "new"));
    EXPECT_EQ("new", BufferBytes(buffer));
}

}  // namespace

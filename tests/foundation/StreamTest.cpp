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
        CComPtr<IUnknown> asBase = first;
        CComPtr<CountedObject> second = first;
        CComPtr<CountedObject> moved = std::move(second);
        EXPECT_FALSE(second);
        EXPECT_EQ(3u, object->refs);
        asBase = nullptr;
        EXPECT_EQ(2u, object->refs);
        moved.Detach()->Release();
        EXPECT_FALSE(deleted);
    }
    EXPECT_TRUE(deleted);
    EXPECT_DEATH(CComPtr<IStream>()->AddRef(), "p != nullptr");
}

TEST(FileStreamTest, WritesTruncateAndReadsEndWithFalseAndZeroCount)
{
    const std::string path = MakeScratchDir("stream-file") + "/data.bin";
    ASSERT_TRUE(WriteFile(path, "old content that is longer than the new one"));
    {
        CComPtr<IStream> stream = CreateWriteStream(FilePath(path), 5, 0);
        ASSERT_TRUE(stream);
        EXPECT_EQ(S_OK, WriteText(stream, "hello world"));
        EXPECT_EQ(S_OK, stream->Seek(MakeLargeInteger(6), STREAM_SEEK_SET, nullptr));
        EXPECT_EQ(S_OK, WriteText(stream, "WORLD"));
    }
    EXPECT_EQ("hello WORLD", ReadFile(path));

    CComPtr<IStream> stream = OpenReadStream(FilePath(path));
    ASSERT_TRUE(stream);
    char buffer[16];
    std::uint32_t read = 99;
    ULARGE_INTEGER position{};
    EXPECT_EQ(S_OK, stream->Seek(MakeLargeInteger(2), 42, &position));  // an unknown origin counts from the start
    EXPECT_EQ(2u, position.Quad());
    EXPECT_EQ(E_FAIL, stream->Seek(MakeLargeInteger(-100), STREAM_SEEK_SET, &position));
    EXPECT_EQ(S_OK, stream->Seek(MakeLargeInteger(-3), STREAM_SEEK_END, &position));
    EXPECT_EQ(S_OK, stream->Read(buffer, sizeof buffer, &read));  // short, but something came
    EXPECT_EQ("RLD", std::string(buffer, read));
    EXPECT_EQ(S_FALSE, stream->Read(buffer, sizeof buffer, &read));
    EXPECT_EQ(0u, read);
    EXPECT_EQ(E_FAIL, WriteText(stream, "x"));  // opened for reading only
}

TEST(StreamPatchTest, WriteBytesAddsSizeModuloFourZeroBytes)
{
    struct Case {
        std::uint32_t size;
        std::size_t written;
    };
    // Not a padding to four: a size of 3 gives six bytes, a size of 6 gives eight.
    for (const Case c : {Case{0, 0}, Case{1, 2}, Case{3, 6}, Case{4, 4}, Case{6, 8}}) {
        CComPtr<IStreamOnBuffer> buffer = CreateBufferStream();
        const std::string data(c.size, 'z');
        EXPECT_EQ(S_OK, WriteBytes(buffer, data.data(), c.size));
        EXPECT_EQ(data + std::string(c.written - c.size, '\0'), BufferBytes(buffer)) << "size " << c.size;
    }
}

TEST(StreamPatchTest, PatchesWriteInPlaceAndComeBack)
{
    CComPtr<IStreamOnBuffer> buffer = CreateBufferStream();
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(S_OK, WriteWord(buffer, 0));
    EXPECT_EQ(S_OK, PatchWord(buffer, 0, 12, 0xDEADBEEFu));
    EXPECT_EQ(16u, GetPosition(buffer));
    EXPECT_EQ(S_OK, PatchString(buffer, 0, 4, L"hi"));
    EXPECT_EQ(S_OK, PatchString(buffer, 0, 8, nullptr));

    const std::string bytes = BufferBytes(buffer);
    ASSERT_EQ(16u + 4 * sizeof(wchar_t), bytes.size());
    EXPECT_EQ(0xDEADBEEFu, WordAt(bytes, 12));
    EXPECT_EQ(16u, WordAt(bytes, 4));
    EXPECT_EQ(static_cast<std::uint32_t>(L'h'), WordAt(bytes, 16));
    EXPECT_EQ(0u, WordAt(bytes, 24));
    // The null text became the empty string: one zero unit at its own offset.
    EXPECT_EQ(28u, WordAt(bytes, 8));
    EXPECT_EQ(0u, WordAt(bytes, 28));
    EXPECT_EQ(E_POINTER, PatchWord(nullptr, 0, 0, 1));
}

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

TEST_F(CompressedStreamTest, PatchedDataReachesTheTargetOnlyOnCloseAsZlib)
{
    const std::string path = dir + "/data.z";
    std::string expected;
    for (int i = 0; i < 5000; ++i)
        expected += "record " + std::to_string(i) + ";";
    {
        CComPtr<IStream> holder = CreateCompressedWriteStream(FilePath(path));
        ASSERT_TRUE(holder);
        EXPECT_FALSE(TempFolderIsEmpty());  // the raw data waits in a temporary file
        ASSERT_EQ(S_OK, WriteText(holder, "XXXX" + expected.substr(4)));
        EXPECT_EQ(S_OK, SetPosition(holder, 0));
        EXPECT_EQ(S_OK, WriteText(holder, expected.substr(0, 4)));
        EXPECT_EQ("", ReadFile(path));
    }
    EXPECT_TRUE(TempFolderIsEmpty());
    std::vector<std::uint8_t> plain;
    ASSERT_EQ(S_OK, ReadCompressedFile(FilePath(path), plain));
    EXPECT_EQ(expected, std::string(plain.begin(), plain.end()));
    EXPECT_LT(ReadFile(path).size(), expected.size());
}

TEST_F(CompressedStreamTest, NothingOpensWithoutAFolderAndOnlyWholeZlibDataIsRead)
{
    EXPECT_FALSE(OpenReadStream(FilePath(dir + "/absent.bin")));
    EXPECT_FALSE(CreateWriteStream(FilePath(dir + "/no/such/folder/x.bin")));
    EXPECT_FALSE(CreateCompressedWriteStream(FilePath(dir + "/missing/data.z")));
    EXPECT_TRUE(TempFolderIsEmpty());
    EXPECT_FALSE(std::filesystem::exists(dir + "/missing"));

    // A stream closed without data leaves a compressed empty file in place of the old one.
    ASSERT_TRUE(WriteFile(dir + "/empty.z", "stale"));
    CreateCompressedWriteStream(FilePath(dir + "/empty.z"));
    std::vector<std::uint8_t> read{1, 2, 3};
    EXPECT_EQ(S_OK, ReadCompressedFile(FilePath(dir + "/empty.z"), read));
    EXPECT_TRUE(read.empty());

    const std::string data(20000, 'q');
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

TEST(BufferStreamTest, OverwritesInsideAppendsAtTheEndAndHandsTheBlockOver)
{
    CComPtr<IStreamOnBuffer> buffer = CreateBufferStream();
    ASSERT_EQ(S_OK, WriteText(buffer, "abcdef"));
    ASSERT_EQ(S_OK, buffer->Seek(MakeLargeInteger(2), STREAM_SEEK_SET, nullptr));
    ASSERT_EQ(S_OK, WriteText(buffer, "XY"));
    ASSERT_EQ(S_OK, buffer->Seek(MakeLargeInteger(-1), STREAM_SEEK_END, nullptr));
    ASSERT_EQ(S_OK, WriteText(buffer, "FGH"));
    EXPECT_EQ("abXYeFGH", BufferBytes(buffer));
    // Seeks stay within the bytes written.
    EXPECT_EQ(E_FAIL, buffer->Seek(MakeLargeInteger(1), STREAM_SEEK_END, nullptr));
    EXPECT_EQ(E_FAIL, buffer->Seek(MakeLargeInteger(-9), STREAM_SEEK_CUR, nullptr));

    std::string expected = "abXYeFGH";
    for (int i = 0; i < 3000; ++i) {
        expected += std::to_string(i * 7919);
        ASSERT_EQ(S_OK, WriteText(buffer, std::to_string(i * 7919)));
    }
    std::size_t length = 0;
    std::uint8_t* block = buffer->DetachBuffer(&length);
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(expected, std::string(reinterpret_cast<char*>(block), length));
    std::free(block);
    // The stream starts afresh after giving its block away.
    ASSERT_EQ(S_OK, WriteText(buffer, "new"));
    EXPECT_EQ("new", BufferBytes(buffer));
}

}  // namespace

#pragma once

#include "foundation/CComPtr.h"
#include "foundation/IZOLTAXMLWriter.h"
#include "foundation/ZoltaStreams.h"

#include <cstddef>
#include <cstdint>

class CStdioFileStream;
class CWritableCompressedFileStream;
class CZoltaFilePath;

// The writing logic shared by the file and string writers; subclasses choose the stream and
// what GetResult gives.
class CMyWriter : public IZOLTAXMLWriter {
public:
    CMyWriter(const CMyWriter&) = delete;
    CMyWriter& operator=(const CMyWriter&) = delete;

    [[nodiscard]] HRESULT QueryInterface(REFIID iid, void** outObject) override;  // always E_NOTIMPL
    std::uint32_t AddRef() override;
    std::uint32_t Release() override;

    [[nodiscard]] HRESULT WriteHeader() override;
    [[nodiscard]] HRESULT WriteRaw(const char* text) override;
    [[nodiscard]] HRESULT StartElement(const char* name) override;
    [[nodiscard]] HRESULT EndElement(const char* name) override;
    [[nodiscard]] HRESULT AddAttribute(const char* name, const char* value) override;
    [[nodiscard]] HRESULT AddAttribute(const char* name, const char* value1, const char* value2,
                                       const char* value3) override;
    [[nodiscard]] HRESULT AddAttributeWide(const char* name, const wchar_t* value) override;
    [[nodiscard]] HRESULT AddText(const char* text) override;
    [[nodiscard]] HRESULT AddRawText(const char* text) override;

protected:
    explicit CMyWriter(CComPtr<IStream> stream);
    ~CMyWriter() override;

    CComPtr<IStream> m_stream;

private:
    void Put(const char* bytes, std::size_t length);
    void Put(const char* text);
    // Plain runs go out with one write each, every entity with one more.
    void PutEscaped(const char* text);
    void CloseOpenTag();

    std::uint32_t m_refs = 1;
    bool m_tagOpen = false;
};

// Writes to a file, plainly or through a compressed stream.
class CMyFileWriter : public CMyWriter {
public:
    CMyFileWriter(const CZoltaFilePath& path, bool compressed);

    // Whether the stream opened; a writer that did not is of no use.
    bool IsOpen() const { return m_stream != nullptr; }
    // S_OK while every write has gone through, E_FAIL otherwise or when nothing opened.
    [[nodiscard]] HRESULT GetResult(CAtlStringA* outText) override;

private:
    CStdioFileStream* m_plain = nullptr;                    // owned through m_stream
    CWritableCompressedFileStream* m_compressed = nullptr;  // owned through m_stream
};

// Collects the document in memory.
class CMyStringWriter : public CMyWriter {
public:
    CMyStringWriter();

    [[nodiscard]] HRESULT GetResult(CAtlStringA* outText) override;

private:
    IStreamOnBuffer* m_buffer = nullptr;  // owned through m_stream
};

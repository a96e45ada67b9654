#include "foundation/ZOLTAXMLWriter.h"

#include "libZoltaAtl/CAtlStringA.h"
#include "libZoltaAtl/ZoltaAssert.h"
#include "foundation/ZoltaBufferStream.h"
#include "foundation/ZoltaFileStreams.h"

#include <cstring>
#include <utility>

namespace {

const char* EntityFor(char byte)
{
    switch (byte) {
    case '&':
        return "&amp;";
    case '"':
        return "&quot;";
    case '\'':
        return "&apos;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    default:
        return nullptr;
    }
}

const char* OrEmpty(const char* text)
{
    return text ? text : "";
}

}  // namespace

// ---- CMyWriter ----

CMyWriter::CMyWriter(CComPtr<IStream> stream)
    : m_stream(std::move(stream))
{}

CMyWriter::~CMyWriter() = default;

HRESULT CMyWriter::QueryInterface(REFIID, void** outObject)
{
    if (outObject)
        *outObject = nullptr;
    return E_NOTIMPL;
}

std::uint32_t CMyWriter::AddRef()
{
    return ++m_refs;
}

std::uint32_t CMyWriter::Release()
{
    ZOLTA_ASSERT(m_refs > 0);
    const std::uint32_t remaining = --m_refs;
    if (remaining == 0)
        delete this;
    return remaining;
}

void CMyWriter::Put(const char* bytes, std::size_t length)
{
    if (length != 0)
        m_stream->Write(bytes, static_cast<std::uint32_t>(length), nullptr);
}

void CMyWriter::Put(const char* text)
{
    Put(text, std::strlen(text));
}

void CMyWriter::PutEscaped(const char* text)
{
    const char* run = text;
    for (const char* cursor = text;; ++cursor) {
        const char* entity = EntityFor(*cursor);
        if (*cursor != '\0' && !entity)
            continue;
        Put(run, static_cast<std::size_t>(cursor - run));
        if (*cursor == '\0')
            return;
        Put(entity);
        run = cursor + 1;
    }
}

void CMyWriter::CloseOpenTag()
{
    if (m_tagOpen) {
        Put(">");
        m_tagOpen = false;
    }
}

HRESULT CMyWriter::WriteHeader()
{
    if (!m_stream)
        return E_FAIL;
    Put("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>");
    return S_OK;
}

HRESULT CMyWriter::WriteRaw(const char* text)
{
    if (!m_stream)
        return E_FAIL;
    Put(OrEmpty(text));
    return S_OK;
}

HRESULT CMyWriter::StartElement(const char* name)
{
    if (!m_stream)
        return E_FAIL;
    CloseOpenTag();
    Put("<");
    Put(OrEmpty(name));
    m_tagOpen = true;
    return S_OK;
}

HRESULT CMyWriter::EndElement(const char* name)
{
    if (!m_stream)
        return E_FAIL;
    if (m_tagOpen) {
        Put("/>");
    } else {
        Put("</");
        Put(OrEmpty(name));
        Put(">");
    }
    m_tagOpen = false;
    return S_OK;
}

HRESULT CMyWriter::AddAttribute(const char* name, const char* value)
{
    return AddAttribute(name, value, nullptr, nullptr);
}

HRESULT CMyWriter::AddAttribute(const char* name, const char* value1, const char* value2, const char* value3)
{
    if (!m_stream)
        return E_FAIL;
    Put(" ");
    Put(OrEmpty(name));
    Put("=\"");
    PutEscaped(OrEmpty(value1));
    if (value2) {
        PutEscaped(value2);
        if (value3)
            PutEscaped(value3);
    }
    Put("\"");
    return S_OK;
}

HRESULT CMyWriter::AddAttributeWide(const char* name, const wchar_t* value)
{
    const CAtlStringA utf8(value ? value : L"");
    return AddAttribute(name, static_cast<const char*>(utf8));
}

HRESULT CMyWriter::AddText(const char* text)
{
    if (!m_stream)
        return E_FAIL;
    CloseOpenTag();
    PutEscaped(OrEmpty(text));
    return S_OK;
}

HRESULT CMyWriter::AddRawText(const char* text)
{
    if (!m_stream)
        return E_FAIL;
    CloseOpenTag();
    Put(OrEmpty(text));
    return S_OK;
}

// ---- CMyFileWriter ----

CMyFileWriter::CMyFileWriter(const CZoltaFilePath& path, bool compressed)
    : CMyWriter(nullptr)
{
    if (compressed) {
        auto* stream = new CWritableCompressedFileStream(path);
        m_stream.Attach(stream);
        m_compressed = stream;
        if (!stream->IsValid()) {
            m_stream.Release();
            m_compressed = nullptr;
        }
    } else {
        auto* stream = new CWritableFileStream(path);
        m_stream.Attach(stream);
        m_plain = stream;
        if (!stream->IsValid()) {
            m_stream.Release();
            m_plain = nullptr;
        }
    }
}

HRESULT CMyFileWriter::GetResult(CAtlStringA*)
{
    if (m_plain)
        return m_plain->GetWriteStatus();
    if (m_compressed)
        return m_compressed->GetWriteStatus();
    return E_FAIL;
}

// ---- CMyStringWriter ----

CMyStringWriter::CMyStringWriter()
    : CMyWriter(nullptr)
{
    CComPtr<IStreamOnBuffer> buffer = CreateBufferStream();
    m_buffer = buffer.p;
    m_stream = static_cast<IStream*>(buffer.p);
}

HRESULT CMyStringWriter::GetResult(CAtlStringA* outText)
{
    if (!outText)
        return E_POINTER;
    const auto* data = reinterpret_cast<const char*>(m_buffer->GetData());
    *outText = CAtlStringA(data, static_cast<int>(m_buffer->GetLength()));
    return S_OK;
}

// ---- creation ----

HRESULT CreateFileWriter(IZOLTAXMLWriter** outWriter, const CZoltaFilePath& path)
{
    if (!outWriter)
        return E_POINTER;
    *outWriter = nullptr;
    auto* writer = new CMyFileWriter(path, false);
    if (!writer->IsOpen()) {
        writer->Release();
        return E_FAIL;
    }
    *outWriter = writer;
    return S_OK;
}

HRESULT CreateStringWriter(IZOLTAXMLWriter** outWriter)
{
    if (!outWriter)
        return E_POINTER;
    *outWriter = new CMyStringWriter();
    return S_OK;
}

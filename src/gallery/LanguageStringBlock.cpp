#include "gallery/LanguageStringBlock.h"

#include "libZoltaAtl/CAtlString.h"
#include "gallery/GalleryLanguage.h"
#include "gallery/GalleryText.h"

#include <cstdlib>
#include <cwchar>
#include <new>
#include <stdexcept>
#include <string>

namespace {

const wchar_t kEmptyBlock[1] = {0};

// Start of the pair behind the one at `pair`.
const wchar_t* SkipPair(const wchar_t* pair)
{
    pair += std::wcslen(pair) + 1;
    return pair + std::wcslen(pair) + 1;
}

// Start of pair `index`, or null if there are fewer pairs.
const wchar_t* PairAt(const wchar_t* data, int index)
{
    if (index < 0)
        return nullptr;
    const wchar_t* pair = data;
    for (; *pair && index > 0; --index)
        pair = SkipPair(pair);
    return *pair ? pair : nullptr;
}

const wchar_t* ValueOf(const wchar_t* pair)
{
    return pair + std::wcslen(pair) + 1;
}

// Builds a block from pieces; the caller owns the result (array allocator).
class BlockBuilder {
public:
    void AddPair(const wchar_t* key, const wchar_t* value)
    {
        m_text.append(key).push_back(0);
        m_text.append(value ? value : L"").push_back(0);
    }
    void AddPairsOf(const wchar_t* data, const wchar_t* except = nullptr)
    {
        for (const wchar_t* pair = data; *pair; pair = SkipPair(pair)) {
            if (pair != except)
                AddPair(pair, ValueOf(pair));
        }
    }
    const wchar_t* Finish() const { return GalleryCopyText(m_text.data(), m_text.size()); }

private:
    std::wstring m_text;
};

}  // namespace

HRESULT LanguageStringBlock::Create(LanguageStringBlock** target)
{
    if (!target || *target)
        return E_INVALIDARG;
    auto* block = static_cast<LanguageStringBlock*>(std::calloc(1, sizeof(LanguageStringBlock)));
    if (!block)
        return E_OUTOFMEMORY;
    *target = block;
    return S_OK;
}

void LanguageStringBlock::Destroy(LanguageStringBlock*& block)
{
    if (!block)
        return;
    block->Clear();
    GalleryFreeRecord(block);
    block = nullptr;
}

const wchar_t* LanguageStringBlock::GetData() const
{
    return m_data ? m_data : kEmptyBlock;
}

std::size_t LanguageStringBlock::GetSizeInChars() const
{
    const wchar_t* pair = GetData();
    while (*pair)
        pair = SkipPair(pair);
    return static_cast<std::size_t>(pair - GetData()) + 1;
}

HRESULT LanguageStringBlock::Add(const wchar_t* key, const wchar_t* value)
{
    if (IsBlankText(key))
        return E_INVALIDARG;
    BlockBuilder builder;
    builder.AddPairsOf(GetData());
    builder.AddPair(key, value);
    return Adopt(builder.Finish());
}

void LanguageStringBlock::Clear()
{
    if (!m_data)
        return;
    GalleryFreeText(m_data);
    m_data = nullptr;
}

int LanguageStringBlock::GetCount() const
{
    int count = 0;
    for (const wchar_t* pair = GetData(); *pair; pair = SkipPair(pair))
        ++count;
    return count;
}

const wchar_t* LanguageStringBlock::GetKey(int index) const
{
    const wchar_t* pair = PairAt(GetData(), index);
    if (!pair)
        throw std::out_of_range("LanguageStringBlock::GetKey");
    return pair;
}

const wchar_t* LanguageStringBlock::GetValue(int index) const
{
    return ValueOf(GetKey(index));
}

HRESULT LanguageStringBlock::Adopt(const wchar_t* replacement)
{
    if (!replacement)
        return E_OUTOFMEMORY;
    Clear();
    m_data = replacement;
    return S_OK;
}

HRESULT LanguageStringBlock::Remove(int index)
{
    const wchar_t* removed = GetKey(index);
    BlockBuilder builder;
    builder.AddPairsOf(GetData(), removed);
    return Adopt(builder.Finish());
}

HRESULT LanguageStringBlock::Append(const LanguageStringBlock& other)
{
    if (other.GetData()[0] == 0)
        return S_FALSE;
    BlockBuilder builder;
    builder.AddPairsOf(GetData());
    builder.AddPairsOf(other.GetData());
    return Adopt(builder.Finish());
}

HRESULT LanguageStringBlock::CopyFrom(const LanguageStringBlock& other)
{
    if (&other == this)
        return S_OK;
    const wchar_t* replacement = nullptr;
    if (other.GetData()[0] != 0) {
        replacement = GalleryCopyText(other.GetData(), other.GetSizeInChars() - 1);
        if (!replacement)
            return E_OUTOFMEMORY;
    }
    Clear();
    m_data = replacement;
    return S_OK;
}

int LanguageStringBlock::FindLanguage(const wchar_t* language, int minLevel) const
{
    if (IsBlankText(language) || !m_data)
        return -1;
    for (int level = 3; level >= 1; --level) {
        if (level < 3 && minLevel >= level + 1)
            break;
        int index = 0;
        for (const wchar_t* pair = m_data; *pair; pair = SkipPair(pair), ++index) {
            if (MatchLanguage(language, pair) == level)
                return index;
        }
    }
    return -1;
}

const wchar_t* LanguageStringBlock::Lookup(const wchar_t* language) const
{
    if (IsBlankText(language))
        language = GetCurrentLanguageText();
    int index = FindLanguage(language, 1);
    if (index < 0)
        index = FindLanguage(L"en", 1);
    if (index >= 0)
        return GetValue(index);
    const wchar_t* data = GetData();
    for (const wchar_t* pair = data; *pair; pair = SkipPair(pair)) {
        if (!std::wcschr(pair, L'-'))
            return ValueOf(pair);
    }
    return *data ? ValueOf(data) : GalleryEmptyString();
}

HRESULT LanguageStringBlock::ReplaceLanguage(const wchar_t* language, const std::vector<CAtlString>& texts)
{
    for (int index = FindLanguage(language, 2); index >= 0; index = FindLanguage(language, 2)) {
        // Copies first: Add rebuilds the block the key and value point into.
        const std::wstring key = GetKey(index);
        const std::wstring value = GetValue(index);
        const wchar_t* regions[2] = {nullptr, nullptr};
        if (key == L"zh") {
            regions[0] = L"zh-CN";
            regions[1] = L"zh-TW";
        } else if (key == L"pt") {
            regions[0] = L"pt-PT";
            regions[1] = L"pt-BR";
        }
        for (const wchar_t* region : regions) {
            if (!region)
                continue;
            const HRESULT hr = Add(region, value.c_str());
            if (FAILED(hr))
                return hr;
        }
        const HRESULT hr = Remove(index);
        if (FAILED(hr))
            return hr;
    }
    for (const CAtlString& text : texts) {
        const HRESULT hr = Add(language, text.GetString());
        if (FAILED(hr))
            return hr;
    }
    return S_OK;
}

LanguageStringBlock::Iterator::Iterator(const LanguageStringBlock* block, const LanguageStringBlock* versions,
                                        const wchar_t* minimumVersion)
    : m_next(block ? block->GetData() : kEmptyBlock),
      m_versions(versions),
      m_minimumVersion(minimumVersion)
{}

bool LanguageStringBlock::Iterator::Next()
{
    while (*m_next) {
        m_key = m_next;
        m_value = ValueOf(m_next);
        m_next = SkipPair(m_next);
        if (Accepts())
            return true;
    }
    m_key = m_value = nullptr;
    return false;
}

bool LanguageStringBlock::Iterator::Accepts() const
{
    if (!m_versions || IsBlankText(m_minimumVersion))
        return true;
    const int index = m_versions->FindLanguage(m_key, 3);
    if (index < 0)
        return true;
    return CompareStringVersions(m_versions->GetValue(index), m_minimumVersion) >= 0;
}

int CompareStringVersions(const wchar_t* a, const wchar_t* b)
{
    a = a ? a : L"";
    b = b ? b : L"";
    while (*a || *b) {
        wchar_t* endA = nullptr;
        wchar_t* endB = nullptr;
        const unsigned long long partA = std::wcstoull(a, &endA, 10);
        const unsigned long long partB = std::wcstoull(b, &endB, 10);
        if (partA != partB)
            return partA < partB ? -1 : 1;
        // Move past this part and its dot; anything that isn't a number ends the compare.
        a = std::wcschr(endA, L'.') ? std::wcschr(endA, L'.') + 1 : endA + std::wcslen(endA);
        b = std::wcschr(endB, L'.') ? std::wcschr(endB, L'.') + 1 : endB + std::wcslen(endB);
    }
    return 0;
}

#pragma once

#include "foundation/ZoltaResult.h"

#include <cstddef>
#include <vector>

class CAtlString;

// Localised text of one field: a single pointer to a packed run of wide characters, pairs of
// zero-closed key (a language code, never empty) and zero-closed value, closed by one more
// zero. No pairs is a single zero; a null pointer reads the same. The packed form is also the
// file form of the manifest cache, so a block can be copied byte for byte and used in place
// from a read buffer. Every change builds a new block: meant for a few languages, not many.
// When a key occurs twice, look-ups find the first pair.
struct LanguageStringBlock {
    const wchar_t* m_data;

    // Allocates a zeroed, empty block; E_INVALIDARG if `target` is null or already set.
    [[nodiscard]] static HRESULT Create(LanguageStringBlock** target);
    // Frees the block and its text (image data left alone) and nulls the pointer.
    static void Destroy(LanguageStringBlock*& block);

    // A blank key is E_INVALIDARG; a null value counts as empty.
    [[nodiscard]] HRESULT Add(const wchar_t* key, const wchar_t* value);
    void Clear();
    int GetCount() const;
    // Index past the end throws std::out_of_range.
    const wchar_t* GetKey(int index) const;
    const wchar_t* GetValue(int index) const;
    [[nodiscard]] HRESULT Remove(int index);
    // Copies every pair of `other` behind the own ones; S_FALSE when it has none.
    [[nodiscard]] HRESULT Append(const LanguageStringBlock& other);
    // Makes this block an exact copy of `other`.
    [[nodiscard]] HRESULT CopyFrom(const LanguageStringBlock& other);

    // Index of the best-matching key (level 3 first, then 2 if minLevel < 3, then 1 if
    // minLevel < 2; earliest pair within a level), or -1. A blank language gives -1.
    int FindLanguage(const wchar_t* language, int minLevel) const;

    // The text to show for `language` (blank: the current language): its best match at
    // level 1 or better, else English, else the first key without "-", else the first pair,
    // else "". The pointer lives until the block changes.
    const wchar_t* Lookup(const wchar_t* language) const;

    // Drops every pair that matches `language` at level 2 or better, then adds `texts` under
    // `language`. A general "zh" or "pt" text that goes is first kept for both regions
    // ("zh-CN"/"zh-TW", "pt-PT"/"pt-BR"), so that the region not replaced keeps it.
    [[nodiscard]] HRESULT ReplaceLanguage(const wchar_t* language, const std::vector<CAtlString>& texts);

    // The packed characters (never null) and their number including the final zero.
    const wchar_t* GetData() const;
    std::size_t GetSizeInChars() const;

    // Walks the pairs in order. With a minimum version, pairs whose language has a version
    // in `versions` (the manifest's string versions) below it are skipped; a language
    // without a version is kept.
    class Iterator {
    public:
        explicit Iterator(const LanguageStringBlock* block, const LanguageStringBlock* versions = nullptr,
                          const wchar_t* minimumVersion = nullptr);
        // Moves to the next pair; false at the end.
        bool Next();
        const wchar_t* Key() const { return m_key; }
        const wchar_t* Value() const { return m_value; }

    private:
        bool Accepts() const;

        const wchar_t* m_next;
        const wchar_t* m_key = nullptr;
        const wchar_t* m_value = nullptr;
        const LanguageStringBlock* m_versions;
        const wchar_t* m_minimumVersion;
    };

private:
    // Puts a freshly built text in place of the current one; E_OUTOFMEMORY when the build failed.
    [[nodiscard]] HRESULT Adopt(const wchar_t* replacement);
};

// Compares dotted numeric versions part by part ("1.10" after "1.9"); missing parts are 0.
int CompareStringVersions(const wchar_t* a, const wchar_t* b);

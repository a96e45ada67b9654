#pragma once

#include "gallery/LanguageStringBlock.h"
#include "foundation/ZoltaResult.h"

#include <cstdint>

// The metadata record every gallery node carries. A plain record: text fields are never null
// after Create (the shared empty string at least), and the four blocks always exist.
struct CGalleryMetadata {
    const wchar_t* m_identifier;  // stable identifier, compared exactly
    const wchar_t* m_version;
    const wchar_t* m_sortKey;  // sort override, may be blank
    const wchar_t* m_format;   // mime type, activities only
    LanguageStringBlock* m_titles;
    LanguageStringBlock* m_keywords;
    std::uint32_t m_creationTime;            // seconds since 1970, 0 if unknown
    const wchar_t* m_originalId;             // identifier of the object this one was copied from
    const wchar_t* m_showInLanguages;        // ";"-separated
    const wchar_t* m_hideInLanguages;        // ";"-separated
    LanguageStringBlock* m_minimumVersions;  // browser name to minimum version
    LanguageStringBlock* m_maximumVersions;  // browser name to maximum version

    // Allocates a zeroed record with empty texts and four empty blocks. E_INVALIDARG if
    // `target` is null or already set, E_OUTOFMEMORY with nothing left behind.
    [[nodiscard]] static HRESULT Create(CGalleryMetadata** target);
    // Frees texts, blocks and record (image data left alone) and nulls the pointer.
    static void Destroy(CGalleryMetadata*& metadata);

    [[nodiscard]] HRESULT SetIdentifier(const wchar_t* text);
    [[nodiscard]] HRESULT SetVersion(const wchar_t* text);
    [[nodiscard]] HRESULT SetSortKey(const wchar_t* text);
    [[nodiscard]] HRESULT SetFormat(const wchar_t* text);
    [[nodiscard]] HRESULT SetOriginalId(const wchar_t* text);
    [[nodiscard]] HRESULT SetShowInLanguages(const wchar_t* text);
    [[nodiscard]] HRESULT SetHideInLanguages(const wchar_t* text);

    // Copies every field of `other` (texts and blocks duplicated).
    [[nodiscard]] HRESULT CopyFrom(const CGalleryMetadata& other);
};

#pragma once

class CAtlString;

// Placeholder scheme and host of generated identifiers.
inline constexpr wchar_t PLACEHOLDER_URI_BASE[] = L"zolta-placeholder://gallery.zoltaworks.invalid";

// A fresh UUID in upper-case text form (libuuid).
CAtlString NewUuidText();

// PLACEHOLDER_URI_BASE + "/uniqueid?type=%s&id=%s"; a blank type word becomes "unknown".
CAtlString NewGalleryIdentifier(const wchar_t* type);

// "%s/%s": the type part defaults to a new identifier of the type "activity", the second
// part to a new UUID.
CAtlString NewActivityIdentifier(const wchar_t* typePart = nullptr, const wchar_t* idPart = nullptr);

// PLACEHOLDER_URI_BASE + "/randomid?id=%s", for pasted content.
CAtlString NewRandomIdentifier();

// Fixed identifiers of the user's own collection, My Content.
CAtlString MyContentManifestIdentifier();
CAtlString MyContentOrganizationIdentifier();
CAtlString MyContentCategoryIdentifier();

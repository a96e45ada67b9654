#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <vector>

// A gallery's record in the settings store, under
// "Software\ZOLTA Technologies Inc.\Gallery\<group>\<id>": where its manifest and metadata are,
// which program manages it with which arguments, and whether it is enabled.
class CGalleryRepositoryEntry {
public:
    static const wchar_t* const SystemGroup;  // "TeamContent", kept machine-wide
    static const wchar_t* const UserGroup;    // "PersonalTeamContent", kept per user

    CAtlString group;
    CAtlString id;
    CAtlString manifestPath;     // ImsManifestXml
    CAtlString metadataPath;     // MetadataXml
    CAtlString applicationPath;  // AppPath
    CAtlString arguments;        // Args
    bool enabled = true;         // Enabled

    // Reads the five values of `group`\`id`. True when there is a manifest path and at least one
    // of the metadata and application paths.
    [[nodiscard]] bool Read(const CAtlString& entryGroup, const CAtlString& entryId);
    // Writes the five values; true when every write succeeded.
    [[nodiscard]] bool Write() const;
    // Deletes the entry in the scope of its group and then, in any case, in the user's scope.
    [[nodiscard]] bool Remove() const;
    void Clear();

    CAtlString Section() const;
    static CAtlString GroupSection(const CAtlString& group);
    // The scope a group is kept in: false for the machine-wide store, true for the user's.
    static bool IsUserScope(const CAtlString& group);
    // Every entry of a group that reads successfully, in the order the store lists them.
    static std::vector<CGalleryRepositoryEntry> List(const CAtlString& group);
};

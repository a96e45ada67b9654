#pragma once

#include <cstddef>
#include <string_view>
#include <unordered_map>

struct CGalleryManifest;
struct CGalleryObject;
struct CGalleryFolder;

// Hash of identifiers for the tables of the gallery library: the string hash from 0.
struct GalleryIdentifierHash {
    std::size_t operator()(std::wstring_view identifier) const;
};

// Every object of a tree by its identifier, for look-ups that would otherwise walk the
// lists. The keys point into the records: rebuild after the tree changes. Where several
// objects share an identifier, the first in tree order wins (organizations, then each
// category before its activities and children).
class CGalleryIdentifierIndex {
public:
    void Build(const CGalleryManifest& manifest);
    void Clear() { m_objects.clear(); }
    CGalleryObject* Find(const wchar_t* identifier) const;
    std::size_t GetCount() const { return m_objects.size(); }

private:
    void Insert(CGalleryObject* object);
    void InsertTree(CGalleryFolder* root);

    std::unordered_map<std::wstring_view, CGalleryObject*, GalleryIdentifierHash> m_objects;
};

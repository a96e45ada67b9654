#pragma once

#include "gallery/CGalleryList.h"
#include "gallery/CGalleryObject.h"

#include <cstdint>
#include <memory>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

struct CGalleryManifest;

// Finds the child of a list by identifier without walking the list, with the result a walk
// would give: the first child in list order whose identifier is exactly the one asked for.
// The tables live from one merge to the next, so that installing package after package costs
// the size of each package, not of the gallery it goes into. Before a table is believed it is
// checked against its list (count, array, first and last child and their identifiers), and a
// hit is checked against the list slot it names; a table found out of step is built anew.
class CGalleryMergeIndex {
public:
    template <class Node>
    Node* Find(const CGalleryList<Node>& list, const wchar_t* identifier)
    {
        return static_cast<Node*>(FindObject(ViewOf(list), identifier));
    }

    // Tells the index that the caller has just added one child at the end of `list`.
    template <class Node>
    void NoteAppended(const CGalleryList<Node>& list)
    {
        NoteAppendedObject(ViewOf(list));
    }

    void Clear() { m_lists.clear(); }

    // The index kept for one manifest across merges; created on first use.
    static std::shared_ptr<CGalleryMergeIndex> ForManifest(const CGalleryManifest& manifest);
    // Drops the manifest's index: its tree has gone or been replaced.
    static void Forget(const CGalleryManifest& manifest);

private:
    // A child list seen through its common head, whatever its node type.
    struct ListView {
        const void* key;
        std::uint32_t count;
        const void* array;
        CGalleryObject* (*at)(const void* list, std::uint32_t index);

        CGalleryObject* At(std::uint32_t index) const { return at(key, index); }
    };

    template <class Node>
    static ListView ViewOf(const CGalleryList<Node>& list)
    {
        return {&list, list.m_count, list.m_array, [](const void* raw, std::uint32_t index) -> CGalleryObject* {
                    return static_cast<const CGalleryList<Node>*>(raw)->m_array[index];
                }};
    }

    struct Entry {
        CGalleryObject* node;
        std::uint32_t position;
    };

    // Looks identifiers up as they stand, without making a string of each one first.
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::wstring_view text) const { return std::hash<std::wstring_view>()(text); }
    };

    struct ListTable {
        bool built = false;
        std::uint32_t count = 0;
        const void* array = nullptr;
        const CGalleryObject* first = nullptr;
        const CGalleryObject* last = nullptr;
        std::uint32_t firstHash = 0;
        std::uint32_t lastHash = 0;
        std::unordered_map<std::wstring, Entry, TextHash, std::equal_to<>> entries;
    };

    CGalleryObject* FindObject(const ListView& list, const wchar_t* identifier);
    void NoteAppendedObject(const ListView& list);
    static bool InStep(const ListTable& table, const ListView& list);
    static void Rebuild(ListTable& table, const ListView& list);
    static void TakeSignature(ListTable& table, const ListView& list);
    static CGalleryObject* Confirm(const ListTable& table, const ListView& list, const wchar_t* identifier);

    std::unordered_map<const void*, ListTable> m_lists;
};

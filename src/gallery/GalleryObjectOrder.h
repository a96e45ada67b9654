#pragma once

class CAtlString;
struct CGalleryObject;

// Total order of display texts: blanks first (two blanks are equal); otherwise the lowered
// texts by the current locale's collation, and on a tie the originals exactly. Two different
// texts never compare equal.
int CompareTitles(const wchar_t* a, const wchar_t* b);

// The display title of a node, possibly blank: "My Content" (translated) for the nodes of
// the user's own collection; the current-language title of activities, categories and
// organizations; the name of the folder that holds a manifest.
CAtlString GetObjectTitle(const CGalleryObject* object);

// Display order of a tree: by sort key, or the current title where the sort key is blank
// (CompareTitles); then creation time, earlier first; then identifiers exactly; at last the
// addresses. A null `a` sorts after, a null `b` before.
int CompareObjects(const CGalleryObject* a, const CGalleryObject* b);

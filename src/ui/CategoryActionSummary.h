#pragma once

#include <QString>

#include <array>

// How a planned change of a category is announced in the summary of changes: its heading and the
// resource of its icon. Headings are marked for translation in the "MainWindow" context.
struct CategoryActionSummary {
    int action;
    const char* heading;
    const char* icon;

    QString Heading() const;
};

// Add, update and remove, in the order the summary lists them.
const std::array<CategoryActionSummary, 3>& CategoryActionSummaries();
// Null for an action that the summary does not list (none, install without string packages).
const CategoryActionSummary* FindCategoryActionSummary(int action);

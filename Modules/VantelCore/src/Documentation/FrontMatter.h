// FrontMatter.h: splits a doc into its YAML front matter and its Markdown body, and names taken from doc
// paths.
#pragma once

#include <string>
#include <string_view>

namespace Vantel::Documentation {

struct FrontMatter {
    bool found = false;     // the text starts with a "---" line and has a second one
    std::string_view yaml;  // the lines between the two marker lines
    std::string_view body;  // everything after the second marker line; the whole text when not found
};

// Only the first two marker lines count, so the body may hold "---" lines of its own. A marker line may end
// in blanks or "\r"; a byte order mark before the first one is skipped.
FrontMatter SplitFrontMatter(std::string_view text);

// The last part of `path` (split at "/" or "\"), less ".md".
std::string_view FileStem(std::string_view path);

// The folders between the last "Operators" folder and the file ("Docs/Operators/General/Graph.md" ->
// "General"); without an "Operators" folder, the file's own folder; empty when there is none.
std::string OperatorCategory(std::string_view path);

}  // namespace Vantel::Documentation

#include "Documentation/DocChecker.h"

#include <algorithm>

#include <Vantel/Support/Logging.h>

#include "Documentation/FrontMatter.h"

namespace Vantel::Documentation {
namespace {

std::string Quote(std::string_view text) {
    std::string quoted = "\"";
    quoted += text;
    quoted += '"';
    return quoted;
}

// Looks keys up by walking the map: a const subscript of yaml-cpp throws on scalars and cannot take a view.
std::optional<YAML::Node> FindKey(const YAML::Node& map, std::string_view key) {
    if (!map.IsMap()) {
        return std::nullopt;
    }
    for (auto it = map.begin(); it != map.end(); ++it) {
        if (it->first.IsScalar() && it->first.Scalar() == key) {
            return it->second;
        }
    }
    return std::nullopt;
}

// The value under `key` when it is a non-empty scalar; an empty or null value counts as missing.
std::optional<std::string> FindText(const YAML::Node& map, std::string_view key) {
    const std::optional<YAML::Node> node = FindKey(map, key);
    if (!node || !node->IsScalar() || node->Scalar().empty()) {
        return std::nullopt;
    }
    return node->Scalar();
}

bool IsWord(const YAML::Node& node) {
    if (!node.IsScalar() || node.Scalar().empty()) {
        return false;
    }
    return node.Scalar().find_first_of(" \t\r\n") == std::string::npos;
}

bool IsKnown(std::string_view key, std::initializer_list<std::string_view> known) {
    return std::find(known.begin(), known.end(), key) != known.end();
}

}  // namespace

DocChecker::DocChecker(std::string_view path) : path(path) {}

void DocChecker::Warn(std::string_view problem) const {
    std::string message = "Doc ";
    message += Quote(path);
    message += ": ";
    message += problem;
    LogWarning(message);
}

bool DocChecker::CheckTypeGiven(bool given) const {
    if (!given) {
        Warn("no type was given for the doc.");
    }
    return given;
}

void DocChecker::CheckFileName(std::string_view expected, std::string_view problem) const {
    if (FileStem(path) != expected) {
        Warn(problem);
    }
}

std::optional<YAML::Node> DocChecker::ReadFrontMatter(std::string_view text, std::string& body) const {
    const FrontMatter split = SplitFrontMatter(text);
    body = split.body;
    if (!split.found) {
        Warn("the file must start with a frontmatter between two \"---\" lines.");
        return std::nullopt;
    }
    YAML::Node root;
    try {
        // The leading line break stands for the opening marker, so that the positions in the library's
        // messages are those of the file.
        root = YAML::Load("\n" + std::string(split.yaml));
    } catch (const YAML::Exception& error) {
        std::string problem = "the frontmatter could not be read: ";
        if (!error.mark.is_null()) {
            problem += "line " + std::to_string(error.mark.line + 1) + ", column " +
                       std::to_string(error.mark.column + 1) + ": ";
        }
        problem += error.msg;
        Warn(problem);
        return std::nullopt;
    }
    if (!root.IsMap()) {
        Warn("the frontmatter must be a map of fields such as type and summary.");
        return std::nullopt;
    }
    return root;
}

std::string DocChecker::ReadTypeName(const YAML::Node& root, std::string_view expected,
                                     bool mustMatch) const {
    const std::optional<std::string> named = FindText(root, "type");
    if (!named) {
        Warn("the frontmatter has no \"type\"; expected " + Quote(expected) + ".");
        return {};
    }
    if (mustMatch && *named != expected) {
        Warn("the frontmatter names the type " + Quote(*named) + ", but the doc is registered for " +
             Quote(expected) + ".");
    }
    return *named;
}

std::string DocChecker::ReadSummary(const YAML::Node& root) const {
    const std::optional<std::string> summary = FindText(root, "summary");
    if (!summary) {
        Warn("the frontmatter has no \"summary\".");
        return {};
    }
    return *summary;
}

std::vector<std::string> DocChecker::ReadTags(const YAML::Node& root) const {
    const std::optional<YAML::Node> tags = FindKey(root, "tags");
    if (!tags || tags->IsNull()) {
        return {};
    }
    std::vector<std::string> words;
    bool allWords = tags->IsSequence();
    if (tags->IsSequence()) {
        for (const YAML::Node& item : *tags) {
            if (IsWord(item)) {
                words.push_back(item.Scalar());
            } else {
                allWords = false;
            }
        }
    } else if (IsWord(*tags)) {
        words.push_back(tags->Scalar());
    }
    if (!allWords) {
        Warn("\"tags\" must be a list of words.");
    }
    return words;
}

void DocChecker::ReadMembers(const YAML::Node& root, OperatorInfo& info) {
    struct Section {
        std::string_view key;
        std::vector<OperatorInfo::Entry>* entries;
        std::optional<YAML::Node> map;
    };
    Section sections[] = {
        {"outputs", &info.outputs, std::nullopt},
        {"inputs", &info.inputs, std::nullopt},
        {"parameters", &info.parameters, std::nullopt},
    };
    // Every map is checked before any entry, so that the warnings keep the order of the checks.
    for (Section& section : sections) {
        section.map = FindKey(root, section.key);
        if (section.map && !section.map->IsMap() && !section.map->IsNull()) {
            Warn(Quote(section.key) + " must be a map from key to entry.");
        }
    }
    for (Section& section : sections) {
        if (section.map && section.map->IsMap()) {
            *section.entries = ReadEntries(*section.map, Quote(section.key), section.key == "parameters");
        }
    }
}

std::vector<OperatorInfo::Entry> DocChecker::ReadEntries(const YAML::Node& map, const std::string& owner,
                                                         bool allowBundleLists) {
    std::vector<OperatorInfo::Entry> entries;
    for (auto it = map.begin(); it != map.end(); ++it) {
        const std::string id = owner + " entry " + Quote(it->first.Scalar());
        entries.push_back(ReadEntry(it->first, it->second, id, allowBundleLists));
    }
    return entries;
}

OperatorInfo::Entry DocChecker::ReadEntry(const YAML::Node& key, const YAML::Node& node,
                                          const std::string& id, bool allowBundleLists) {
    OperatorInfo::Entry entry;
    entry.name = key.Scalar();
    if (!node.IsMap()) {
        Warn(id + " must be a map with a type and a description.");
        return entry;
    }
    if (allowBundleLists && FindKey(node, "kinds")) {
        ReadBundleList(node, id, entry);
        return entry;
    }
    NoteUnknownKeys(node, {"type", "description"}, id);
    const std::optional<std::string> type = FindText(node, "type");
    const std::optional<std::string> description = FindText(node, "description");
    if (!type) {
        Warn(id + " must be a map with a type and a description.");
    } else if (!description) {
        Warn(id + " has no \"description\".");
    }
    entry.type = type.value_or("");
    entry.description = description.value_or("");
    return entry;
}

void DocChecker::ReadBundleList(const YAML::Node& node, const std::string& id, OperatorInfo::Entry& entry) {
    // A type or description is reported below as the mark of a misunderstood bundle list, not as unknown.
    NoteUnknownKeys(node, {"summary", "kinds", "type", "description"}, id);
    if (FindKey(node, "type") || FindKey(node, "description")) {
        Warn(id + " is a bundle list, which has a summary and kinds instead of a type and description.");
    }
    const std::optional<std::string> summary = FindText(node, "summary");
    if (!summary) {
        Warn(id + " is a bundle list and needs a \"summary\".");
    }
    entry.summary = summary.value_or("");
    const YAML::Node kinds = *FindKey(node, "kinds");
    if (!kinds.IsMap()) {
        Warn(id + " \"kinds\" must be a map from kind name to its parameters.");
    } else {
        for (auto it = kinds.begin(); it != kinds.end(); ++it) {
            entry.kinds.push_back(ReadKind(it->first, it->second, id));
        }
    }
}

OperatorInfo::BundleKind DocChecker::ReadKind(const YAML::Node& key, const YAML::Node& node,
                                              const std::string& listId) {
    OperatorInfo::BundleKind kind;
    kind.name = key.Scalar();
    const std::string id = listId + " kind " + Quote(kind.name);
    NoteUnknownKeys(node, {"parameters", "kinds"}, id);
    const std::optional<YAML::Node> parameters = FindKey(node, "parameters");
    if (parameters && FindKey(node, "kinds")) {
        Warn(id + " has both \"parameters\" and \"kinds\"; use one of the two.");
    }
    if (!parameters || !parameters->IsMap()) {
        Warn(id + " must have a \"parameters\" map.");
    } else {
        kind.parameters = ReadEntries(*parameters, id, true);
    }
    return kind;
}

void DocChecker::NoteUnknownKeys(const YAML::Node& map, std::initializer_list<std::string_view> known,
                                 const std::string& id) {
    if (!map.IsMap()) {
        return;
    }
    for (auto it = map.begin(); it != map.end(); ++it) {
        if (!IsKnown(it->first.Scalar(), known)) {
            unknownInEntries.push_back("unknown key " + Quote(it->first.Scalar()) + " of " + id +
                                       " in the frontmatter.");
        }
    }
}

void DocChecker::ReportUnknownKeys(const YAML::Node& root,
                                   std::initializer_list<std::string_view> known) const {
    for (auto it = root.begin(); it != root.end(); ++it) {
        if (!IsKnown(it->first.Scalar(), known)) {
            Warn("unknown key " + Quote(it->first.Scalar()) + " in the frontmatter.");
        }
    }
    for (const std::string& problem : unknownInEntries) {
        Warn(problem);
    }
}

}  // namespace Vantel::Documentation

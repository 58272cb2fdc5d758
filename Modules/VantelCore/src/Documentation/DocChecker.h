// DocChecker.h: the checks that a type's doc goes through while it is read, each reporting its own problem.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <yaml-cpp/yaml.h>

#include <Vantel/Operators/OperatorInfo.h>

namespace Vantel::Documentation {

// DocChecker
//
// Reads one doc and logs each problem as the warning `Doc "<path>": <problem>`. The steps are called in the
// order of their functions below, so the warnings come in that order; unknown keys are gathered on the way
// and reported last, by ReportUnknownKeys.
class DocChecker {
public:
    explicit DocChecker(std::string_view path);

    // False, after a warning, when no type was given.
    bool CheckTypeGiven(bool given) const;
    // The file name less ".md" must be `expected`; `problem` is the warning when it is not.
    void CheckFileName(std::string_view expected, std::string_view problem) const;
    // The front matter when it is found, reads as YAML and is a map; `body` receives the help text either
    // way.
    std::optional<YAML::Node> ReadFrontMatter(std::string_view text, std::string& body) const;
    // What "type" names, or empty. A missing "type" is reported with `expected`; a different one only when
    // `mustMatch`.
    std::string ReadTypeName(const YAML::Node& root, std::string_view expected, bool mustMatch) const;
    std::string ReadSummary(const YAML::Node& root) const;
    // A single word instead of a list is reported but kept; items that are not words are dropped.
    std::vector<std::string> ReadTags(const YAML::Node& root) const;
    // The "outputs", "inputs" and "parameters" maps of an operator doc. Only parameters may be bundle lists.
    void ReadMembers(const YAML::Node& root, OperatorInfo& info);
    // Keys of the front matter outside `known`, then the unknown keys met inside entries.
    void ReportUnknownKeys(const YAML::Node& root, std::initializer_list<std::string_view> known) const;

private:
    void Warn(std::string_view problem) const;
    std::vector<OperatorInfo::Entry> ReadEntries(const YAML::Node& map, const std::string& owner,
                                                 bool allowBundleLists);
    OperatorInfo::Entry ReadEntry(const YAML::Node& key, const YAML::Node& node, const std::string& id,
                                  bool allowBundleLists);
    void ReadBundleList(const YAML::Node& node, const std::string& id, OperatorInfo::Entry& entry);
    OperatorInfo::BundleKind ReadKind(const YAML::Node& key, const YAML::Node& node,
                                      const std::string& listId);
    void NoteUnknownKeys(const YAML::Node& map, std::initializer_list<std::string_view> known,
                         const std::string& id);

    std::string path;
    std::vector<std::string> unknownInEntries;
};

}  // namespace Vantel::Documentation

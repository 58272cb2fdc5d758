#include <Vantel/Operators/OperatorInfo.h>

#include <cstddef>
#include <string>

namespace Vantel {

bool OperatorInfo::Entry::IsBundleList() const {
    return !kinds.empty();
}

const OperatorInfo::BundleKind* OperatorInfo::Entry::FindKind(std::string_view kind) const {
    if (kinds.size() == 1 && kinds.front().name.empty()) {
        return &kinds.front();
    }
    for (const BundleKind& candidate : kinds) {
        if (candidate.name == kind) {
            return &candidate;
        }
    }
    return nullptr;
}

const OperatorInfo::Entry* OperatorInfo::FindEntry(const std::vector<Entry>& entries, std::string_view name) {
    for (const Entry& entry : entries) {
        if (entry.name == name) {
            return &entry;
        }
    }
    // A family entry such as "Image [1]" or "[Inputs]" stands for every key that begins with its prefix.
    for (const Entry& entry : entries) {
        const std::size_t bracket = entry.name.find('[');
        if (bracket != std::string::npos &&
            name.starts_with(std::string_view(entry.name).substr(0, bracket))) {
            return &entry;
        }
    }
    return nullptr;
}

const OperatorInfo::Entry* OperatorInfo::FindInput(std::string_view name) const {
    return FindEntry(inputs, name);
}

const OperatorInfo::Entry* OperatorInfo::FindOutput(std::string_view name) const {
    return FindEntry(outputs, name);
}

const OperatorInfo::Entry* OperatorInfo::FindParameter(std::string_view name) const {
    return FindEntry(parameters, name);
}

const OperatorInfo::Entry* OperatorInfo::FindBundleParameter(std::string_view list, std::string_view kind,
                                                             std::string_view parameter) const {
    const Entry* listEntry = FindParameter(list);
    if (listEntry == nullptr || !listEntry->IsBundleList()) {
        return nullptr;
    }
    // FindKind already picks a lone unnamed kind for any name, and the first unnamed kind for an empty name.
    const BundleKind* bundleKind = listEntry->FindKind(kind);
    if (bundleKind == nullptr) {
        return nullptr;
    }
    return FindEntry(bundleKind->parameters, parameter);
}

}  // namespace Vantel

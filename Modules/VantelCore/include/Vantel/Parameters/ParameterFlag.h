// ParameterFlag.h: the flag bits and update policy of parameters.
//
//   radius.SetParameterFlag(ParameterFlag::Structural, true);
//   if (radius.HasParameterFlag(ParameterFlag::Output)) { ... }
#pragma once

#include <cstdint>

namespace Vantel {

// The numbers are fixed: they are tested as such across the library and stored by hosts. Bits not named here
// are free for hosts and plug-ins and are kept as given.
enum class ParameterFlag : std::uint64_t {
    None = 0,
    MarksOutdated = 1,      // a change makes the owning operator run again
    Output = 1024,          // written by the operator; no incoming connection; value not saved
    Structural = 2048,      // decides the operator's ports and parameters; no incoming connection
    NotConnectable = 8192,  // no incoming connection
    NotSaved = 2097152,     // value not written to the project file
    NotUndoable = 4194304,  // changes not recorded for undo
};

constexpr ParameterFlag operator|(ParameterFlag a, ParameterFlag b) {
    return static_cast<ParameterFlag>(static_cast<std::uint64_t>(a) | static_cast<std::uint64_t>(b));
}

// When a changed value takes effect; until SetUpdatePolicy is called it is Deferred for a structural
// parameter and Immediate for any other.
enum class UpdatePolicy : std::uint32_t {
    Immediate = 0,
    Deferred = 1,
};

// Flags<E>
//
// A set of flag bits of the enum E (64 bits wide). Has() is true only when every bit of its argument is set.
template <typename E>
class Flags {
public:
    constexpr Flags() = default;
    constexpr Flags(E flags) : bits(static_cast<std::uint64_t>(flags)) {}

    constexpr bool Has(E flags) const {
        const auto wanted = static_cast<std::uint64_t>(flags);
        return (bits & wanted) == wanted;
    }
    constexpr void Set(E flags, bool on) {
        const auto changed = static_cast<std::uint64_t>(flags);
        bits = on ? (bits | changed) : (bits & ~changed);
    }
    constexpr std::uint64_t GetBits() const { return bits; }
    constexpr bool operator==(const Flags&) const = default;

private:
    std::uint64_t bits = 0;
};

}  // namespace Vantel

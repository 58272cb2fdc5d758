// Path.h: the address of an object in the project tree.
//
//   std::optional<Path> blur = Path::Parse("/Main/Blur 1");
//   Path radius = blur->GetChild("Radius");        // "/Main/Blur 1/Radius"
//   radius.MakeRelative(*blur)->ToString();         // "Radius"
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Export.h>

namespace Vantel {

// Path
//
// A list of keys from the root (absolute) or from some object (relative) down to a descendant. A value: copy
// it, compare it, store it. It keeps nothing alive; Object::Resolve turns it back into an object, or null
// when nothing answers. Text form: keys joined by "/", with a leading "/" when absolute; there is no escaping
// because keys never contain "/". The root is "/", the empty relative path "".
class VANTEL_API Path {
public:
    Path() = default;  // the empty relative path

    // A key is valid when it is not empty, is not "..", and has no "/". "." and spaces are fine.
    static bool IsValidKey(std::string_view key);
    // No value for an empty piece ("a//b", "a/", "//a") or a ".." piece. Never logs.
    static std::optional<Path> Parse(std::string_view text);

    std::string ToString() const;

    bool IsEmpty() const { return components.empty(); }
    unsigned long long Size() const { return components.size(); }
    // The key at `index`, outermost first; the index must be below Size().
    const std::string& operator[](unsigned long long index) const { return components[index]; }

    bool IsAbsolute() const { return absolute; }
    void SetAbsolute(bool isAbsolute) { absolute = isAbsolute; }

    // The parent of a path without components (the root, or the empty path) is the path itself.
    Path GetParent() const;
    // Throws std::invalid_argument("Invalid path key: " + key) for an invalid key.
    Path GetChild(std::string_view key) const;
    // No value unless both paths are absolute and `base`'s keys are a prefix of this path's keys.
    std::optional<Path> MakeRelative(const Path& base) const;

    bool operator==(const Path& other) const = default;

private:
    std::vector<std::string> components;  // outermost first
    bool absolute = false;
};

// GenerateKey()
//
// A fresh key from `base` that `isFree` accepts: "Blur [k3x]", or "[0a9]" for an empty base ("/" in the base
// becomes a space). Digits are drawn from a per-thread 64-bit Mersenne Twister; after ten refused candidates
// the number of digits grows by one. An empty `isFree` throws std::bad_function_call.
VANTEL_API std::string GenerateKey(std::string_view base,
                                   const std::function<bool(std::string_view)>& isFree);

}  // namespace Vantel

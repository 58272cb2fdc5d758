#include <Vantel/Objects/KeySettling.h>

#include <string>

#include <Vantel/Objects/Object.h>
#include <Vantel/Support/Logging.h>

namespace Vantel {

void SettleChildKey(Object& child, std::string_view prefix, std::string_view where,
                    const std::function<bool(std::string_view)>& isFree) {
    SettleChildKey(
        child, prefix, [where] { return std::string(where); }, isFree);
}

void SettleChildKey(Object& child, std::string_view prefix, const std::function<std::string()>& where,
                    const std::function<bool(std::string_view)>& isFree) {
    if (child.GetKey().empty()) {
        child.SetKey(GenerateKey(prefix, isFree));
        return;
    }
    if (isFree(child.GetKey())) {
        return;
    }
    std::string key = child.GetKey();
    while (!isFree(key)) {
        key += '_';
    }
    LogError("The key '" + child.GetKey() + "' is already taken in " + where() +
             ". Keys must be unique among all children of their parent. Using '" + key +
             "' instead. Values stored under that key are lost once the collision is fixed.");
    child.SetKey(key);
}

}  // namespace Vantel

// KeySettling.h: how a container gives a child a key that is unique among its siblings.
//
//   SettleChildKey(*input, "Image", "data input list 'Layers'",
//                  [&](std::string_view key) { return list.FindInput(key) == nullptr; });
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include <Vantel/Export.h>

namespace Vantel {

class Object;

// SettleChildKey()
//
// Run by a container just before it attaches `child` (the child must still be detached, or its key cannot
// change). A child without a key gets GenerateKey(prefix, isFree). A taken key gets "_" appended until
// `isFree` accepts it, with the error "The key '<key>' is already taken in <where>. Keys must be unique among
// all children of their parent. Using '<new key>' instead. Values stored under that key are lost once the
// collision is fixed." A free key is kept as it is.
VANTEL_API void SettleChildKey(Object& child, std::string_view prefix, std::string_view where,
                               const std::function<bool(std::string_view)>& isFree);
// The same, with `where` made only for the error: a container that settles thousands of keys (a load) then
// builds no text for the ones that are free.
VANTEL_API void SettleChildKey(Object& child, std::string_view prefix,
                               const std::function<std::string()>& where,
                               const std::function<bool(std::string_view)>& isFree);

}  // namespace Vantel

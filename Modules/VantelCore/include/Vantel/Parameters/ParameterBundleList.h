// ParameterBundleList.h: a list of parameter bundles that the user adds, removes and reorders.
//
//   ParameterBundleList layers{this, "Layers", {.created = [](ParameterBundle& layer) {
//       layer.Add(std::make_unique<FloatParameter>(ParameterScope(nullptr), "Opacity", 1.0));
//   }}};
//   layers.CreateBundle("Image", "Layer 1");
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Parameters/ParameterGroup.h>

namespace Vantel {

class Operator;
class ParameterBundle;
class ParameterRootGroup;

// What the operator type does when bundles come, go and move; each handler may be empty.
struct BundleHandlers {
    std::function<void(ParameterBundle&)> created = {};   // fill a new bundle with its parameters
    std::function<void(ParameterBundle&)> removing = {};  // a bundle is about to be removed
    std::function<void()> reordered = {};                 // after the order of the bundles changed
};

// ParameterBundleList
//
// A group in an operator's root group whose children are all bundles, which it owns. Creating a bundle is one
// undoable step that includes the parameters the created handler adds. The three switches are kept for the
// host's user interface only: the list itself never refuses a removal or a move. Main thread only.
class VANTEL_API ParameterBundleList : public ParameterGroup {
public:
    // Set the key, then add the list to the root group (or the operator's root group).
    ParameterBundleList(ParameterRootGroup& group, std::string_view key, BundleHandlers handlers);
    ParameterBundleList(Operator* op, std::string_view key, BundleHandlers handlers);
    ~ParameterBundleList() override;

    VANTEL_DECLARE_OBJECT_TYPE(ParameterBundleList);

    // Null when the list refuses the new bundle (nothing is left behind then).
    ParameterBundle* CreateBundle(std::string_view kind, std::string_view key);
    // False for null and for a bundle of another list.
    bool RemoveBundle(ParameterBundle* bundle);
    bool MoveBundle(ParameterBundle* bundle, std::size_t index);

    std::vector<ParameterBundle*> GetBundles();
    std::vector<const ParameterBundle*> GetBundles() const;
    // Null past the end.
    ParameterBundle* GetBundle(std::size_t index) const;
    std::size_t GetBundleCount() const;
    // npos when the bundle is not in this list.
    std::size_t IndexOf(const ParameterBundle* bundle) const;

    bool BundlesRemovable() const;
    void SetBundlesRemovable(bool removable);
    bool BundlesMovable() const;
    void SetBundlesMovable(bool movable);
    bool BundlesNumbered() const;
    void SetBundlesNumbered(bool numbered);

protected:
    bool AcceptsChild(const ParameterNode& node) override;
    void ChildRemoving(ParameterNode* node) override;
    void ChildrenReordered() override;

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel

// ParameterBundle.h: one repeated set of parameters in a bundle list (one layer, one item).
//
//   ParameterBundle* layer = layers.CreateBundle("Image", "Layer 1");
//   layer->Add(std::make_unique<FloatParameter>(ParameterScope(nullptr), "Opacity", 1.0));
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Parameters/ParameterGroup.h>

namespace Vantel {

class ParameterBundleList;

// ParameterBundle
//
// A group of parameters of a given kind, made only by its ParameterBundleList, which owns it. The kind is
// fixed at creation and tells the operator what the bundle holds; the display name is separate from the key.
// It accepts parameters only.
class VANTEL_API ParameterBundle : public ParameterGroup {
public:
    ~ParameterBundle() override;

    VANTEL_DECLARE_OBJECT_TYPE(ParameterBundle);

    // Null when the parent is not a bundle list.
    ParameterBundleList* GetBundleList() const;
    const std::string& GetKind() const;
    const std::string& GetName() const;
    // Stores the text; no event and no record.
    void SetName(std::string_view name);

    bool Add(Parameter* parameter);
    bool Add(std::unique_ptr<Parameter>&& parameter);
    bool Insert(Parameter* parameter, std::size_t index);
    bool Insert(std::unique_ptr<Parameter>&& parameter, std::size_t index);
    std::vector<Parameter*> GetParameters();
    std::vector<const Parameter*> GetParameters() const;

protected:
    bool AcceptsChild(const ParameterNode& node) override;

private:
    friend class ParameterBundleList;
    explicit ParameterBundle(std::string_view kind);

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel

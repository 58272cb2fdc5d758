#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <Vantel/Objects/KeySettling.h>
#include <Vantel/Objects/Object.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Ptr.h>

#include "Support/LogCapture.h"

namespace Vantel {
namespace {

using Testing::LogCapture;

// A container object: owns its children, settles their keys as they are attached.
class Node : public Object {
public:
    using Object::Object;

    static const ObjectType* Type() {
        static const ObjectType type("Vantel.Test.Node", Object::Type(), MakeFactory<Node>());
        return &type;
    }
    const ObjectType* GetType() const override { return Type(); }

    Node& Add(std::unique_ptr<Node> child) {
        SettleChildKey(*child, "Node", "node '" + GetKey() + "'",
                       [this](std::string_view key) { return FindChildImplementation(key) == nullptr; });
        child->parent = this;
        children.push_back(std::move(child));
        return *children.back();
    }
    Node& Add(std::string_view key) { return Add(std::make_unique<Node>(key)); }
    void RemoveAll() { children.clear(); }

protected:
    Object* GetParentObjectImplementation() override { return parent; }
    Object* FindChildImplementation(std::string_view key) override {
        for (const auto& child : children) {
            if (child->GetKey() == key) {
                return child.get();
            }
        }
        return nullptr;
    }

private:
    Node* parent = nullptr;
    std::vector<std::unique_ptr<Node>> children;
};

TEST(Object, SetKeyRefusesInvalidKeysAndAttachedObjects) {
    LogCapture log;
    Object object;
    object.SetKey("");
    object.SetKey("a/b");
    object.SetKey("..");
    EXPECT_EQ(log.Text(),
              "[Error] Object::SetKey: '' is not a valid key.\n"
              "[Error] Object::SetKey: 'a/b' is not a valid key.\n"
              "[Error] Object::SetKey: '..' is not a valid key.\n");
    EXPECT_EQ(object.GetKey(), "");

    log.Clear();
    object.SetKey(".");
    EXPECT_EQ(object.GetKey(), ".");
    EXPECT_EQ(log.Text(), "");

    Node root;
    Node& child = root.Add("Blur");
    child.SetKey("Blur");
    EXPECT_EQ(log.Text(), "");
    child.SetKey("Sharpen");
    EXPECT_EQ(
        log.Text(),
        "[Error] Object::SetKey: refusing to change the key of an attached object ('Blur' -> 'Sharpen'), "
        "the key is its identity.\n");
    EXPECT_EQ(child.GetKey(), "Blur");

    log.Clear();
    const Object constructed("bad/key");
    EXPECT_EQ(constructed.GetKey(), "");
    EXPECT_EQ(log.Text(), "[Error] Object::SetKey: 'bad/key' is not a valid key.\n");
}

TEST(Object, PathsResolveAndRelativePathsNeedAnAncestor) {
    Node root("Project");
    Node& main = root.Add("Main");
    Node& blur = main.Add("Blur");
    Node& radius = blur.Add("Radius");

    EXPECT_EQ(root.GetPath().ToString(), "/");
    EXPECT_EQ(radius.GetPath().ToString(), "/Main/Blur/Radius");
    EXPECT_EQ(radius.GetRelativePath(main).ToString(), "Blur/Radius");
    EXPECT_EQ(radius.GetRelativePath(root).ToString(), "Main/Blur/Radius");
    EXPECT_EQ(root.Resolve(*Path::Parse("/Main/Blur/Radius")), &radius);
    EXPECT_EQ(main.Resolve(*Path::Parse("Blur")), &blur);
    EXPECT_EQ(main.Resolve(Path()), &main);
    EXPECT_EQ(root.Resolve(*Path::Parse("Main/Nothing/Radius")), nullptr);
    EXPECT_EQ(blur.GetParentObject(), &main);
    EXPECT_EQ(root.FindChild("Main"), &main);

    Node& sibling = main.Add("Other");
    for (const Object* notAncestor :
         {static_cast<const Object*>(&radius), static_cast<const Object*>(&sibling)}) {
        try {
            (void)radius.GetRelativePath(*notAncestor);
            ADD_FAILURE() << "no exception";
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), "GetRelativePath: the given object is not an ancestor.");
        }
    }
}

TEST(Object, SiblingKeysAreSettledOnAttach) {
    LogCapture log;
    Node root("Root");
    root.Add("Blur");
    Node& second = root.Add("Blur");
    Node& third = root.Add("Blur");
    EXPECT_EQ(second.GetKey(), "Blur_");
    EXPECT_EQ(third.GetKey(), "Blur__");
    const std::string tail = ". Keys must be unique among all children of their parent. Using '";
    const std::string end = "' instead. Values stored under that key are lost once the collision is fixed.\n";
    EXPECT_EQ(log.Text(), "[Error] The key 'Blur' is already taken in node 'Root'" + tail + "Blur_" + end +
                              "[Error] The key 'Blur' is already taken in node 'Root'" + tail + "Blur__" +
                              end);

    log.Clear();
    Node& generated = root.Add(std::make_unique<Node>());
    EXPECT_EQ(generated.GetKey().rfind("Node [", 0), 0u);
    EXPECT_EQ(log.Text(), "");
}

TEST(Object, PtrReadsNullOnceItsObjectDies) {
    auto owner = std::make_unique<Node>("Owner");
    Node& child = owner->Add("Child");
    Ptr<Node> first(&child);
    Ptr<Object> second = first;  // shares the cell made for the first
    Ptr<Node> never;
    EXPECT_EQ(first.Get(), &child);
    EXPECT_TRUE(first == second);
    EXPECT_FALSE(never);
    EXPECT_EQ(second.DynamicCast<Node>().Get(), &child);

    Object plain;
    EXPECT_FALSE(Ptr<Object>(&plain).DynamicCast<Node>());

    owner->RemoveAll();
    EXPECT_EQ(first.Get(), nullptr);
    EXPECT_EQ(second.Get(), nullptr);
    EXPECT_FALSE(first);
}

TEST(Object, DestructionFiresThenReleasesSubscriptionsThenNullsPtrs) {
    std::vector<std::string> order;
    Event<> other;
    Ptr<Object> weak;
    EventSubscription outside;
    {
        Object object("Dying");
        weak = Ptr<Object>(&object);
        outside = object.DestructionEvent().Subscribe([&] {
            order.push_back("destruction:" + std::string(weak ? "alive" : "null"));
            other.Fire();  // the object's own subscriptions still run during its destruction event
        });
        object.AttachSubscription(other.Subscribe([&] { order.push_back("owned"); }));
    }
    other.Fire();  // the owned subscription was released with the object
    EXPECT_EQ(order, (std::vector<std::string>{"destruction:alive", "owned"}));
    EXPECT_FALSE(weak);
}

TEST(ObjectType, InheritanceIdentityAndCreation) {
    const ObjectType* node = Node::Type();
    EXPECT_EQ(Node::Type(), node);
    EXPECT_EQ(node->GetName(), "Vantel.Test.Node");
    EXPECT_TRUE(node->Inherits(Object::Type()));
    EXPECT_TRUE(node->Inherits(node));
    EXPECT_FALSE(Object::Type()->Inherits(node));
    EXPECT_FALSE(node->Inherits(nullptr));

    const ObjectType lookalike("Vantel.Test.Node", Object::Type(), nullptr);
    EXPECT_FALSE(node->IsSameTypeAs(&lookalike));
    EXPECT_FALSE(lookalike.CanCreate());
    EXPECT_EQ(lookalike.CreateInstance(), nullptr);
    EXPECT_FALSE(Object::Type()->CanCreate());

    const std::unique_ptr<Object> made = node->CreateInstance();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetType(), node);
}

}  // namespace
}  // namespace Vantel

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <Vantel/Objects/Event.h>
#include <Vantel/Objects/KeySettling.h>
#include <Vantel/Objects/Object.h>
#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Path.h>
#include <Vantel/Objects/Ptr.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Parameters/FloatParameter.h>
#include <Vantel/Parameters/ParameterRootGroup.h>

#include "Support/LogCapture.h"

namespace Vantel {
namespace {

using Testing::LogCapture;

// A container object: owns its children, settles their keys as they are attached.
class Node : public Object {
public:
    using Object::Object;

    VANTEL_OBJECT_TYPE(Node, Object, "Vantel.Test.Node");

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

TEST(Object, KeysAreValidatedFixedOnceAttachedAndSettledAmongSiblings) {
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

    Node root("Root");
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

    // Sibling keys are settled on attach, and generated where none was given.
    log.Clear();
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

TEST(Object, PtrReadsNullOnceItsObjectDiesAfterItsDestructionEvent) {
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

    // Destruction fires, then releases the object's subscriptions, then nulls the Ptrs.
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

// Firing runs the subscribers live when it starts, in order; whatever they do to the event meanwhile.
TEST(Event, FiringRunsTheLiveSubscribersInOrder) {
    {
        Event<int> event;
        event.Fire(0);  // never subscribed: nothing happens
        std::vector<std::string> calls;
        EventSubscription a = event.Subscribe([&](int v) { calls.push_back("a" + std::to_string(v)); });
        EventSubscription empty = event.Subscribe(nullptr);
        EventSubscription b = event.Subscribe([&](int v) { calls.push_back("b" + std::to_string(v)); });
        EXPECT_FALSE(empty.IsSubscribed());
        event.Fire(1);
        a.Reset();
        event.Fire(2);
        EXPECT_EQ(calls, (std::vector<std::string>{"a1", "b1", "b2"}));
    }
    {
        // A subscription destroyed before its turn is skipped; one added waits for the next firing.
        Event<> event;
        std::vector<std::string> calls;
        std::optional<EventSubscription> second;
        std::vector<EventSubscription> added;
        EventSubscription first = event.Subscribe([&] {
            calls.push_back("first");
            second.reset();
            added.push_back(event.Subscribe([&] { calls.push_back("late"); }));
        });
        second = event.Subscribe([&] { calls.push_back("second"); });
        EventSubscription third = event.Subscribe([&] { calls.push_back("third"); });
        event.Fire();
        EXPECT_EQ(calls, (std::vector<std::string>{"first", "third"}));
        event.Fire();
        EXPECT_EQ(calls, (std::vector<std::string>{"first", "third", "first", "third", "late"}));
    }
    {
        auto event = std::make_unique<Event<>>();
        int calls = 0;
        EventSubscription killer = event->Subscribe([&] {
            ++calls;
            event.reset();
        });
        EventSubscription after = event->Subscribe([&] { ++calls; });
        event->Fire();
        EXPECT_EQ(calls, 2);  // the snapshot keeps the firing going
    }
}

TEST(Path, ParseAndPrintRoundTripAndRejectEmptyPiecesAndDotDot) {
    struct Row {
        const char* text;
        bool absolute;
        std::size_t size;
    };
    constexpr Row rows[] = {
        {"", false, 0},    {"/", true, 0},    {"a", false, 1},
        {"/a/b", true, 2}, {"./a", false, 2}, {"a b/. c", false, 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        const std::optional<Path> path = Path::Parse(row.text);
        ASSERT_TRUE(path.has_value());
        EXPECT_EQ(path->IsAbsolute(), row.absolute);
        EXPECT_EQ(path->Size(), row.size);
        EXPECT_EQ(path->ToString(), row.text);
    }
    EXPECT_EQ((*Path::Parse("./a"))[0], ".");
    EXPECT_NE(*Path::Parse(""), *Path::Parse("/"));
    for (const char* text : {"a//b", "a/", "//a", "a/../b", "..", "/.."}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(Path::Parse(text).has_value());
    }
}

TEST(Path, ParentChildAndRelative) {
    const Path root = *Path::Parse("/");
    EXPECT_EQ(root.GetParent(), root);
    EXPECT_EQ(Path::Parse("/a/b")->GetParent(), *Path::Parse("/a"));
    EXPECT_EQ(Path::Parse("a")->GetParent(), Path());
    EXPECT_EQ(root.GetChild("x").GetChild("y").ToString(), "/x/y");

    EXPECT_TRUE(Path::IsValidKey("...") && Path::IsValidKey("Blur [k3x]"));
    for (const char* key : {"..", "a/b", ""}) {
        SCOPED_TRACE(key);
        EXPECT_FALSE(Path::IsValidKey(key));
        try {
            (void)root.GetChild(key);
            ADD_FAILURE() << "no exception";
        } catch (const std::invalid_argument& error) {
            EXPECT_EQ(std::string(error.what()), std::string("Invalid path key: ") + key);
        }
    }

    const Path ab = *Path::Parse("/a/b");
    EXPECT_EQ(ab.MakeRelative(*Path::Parse("/a"))->ToString(), "b");
    EXPECT_EQ(ab.MakeRelative(ab), Path());
    EXPECT_EQ(ab.MakeRelative(root)->ToString(), "a/b");
    EXPECT_FALSE(ab.MakeRelative(*Path::Parse("a")).has_value());
    EXPECT_FALSE(Path::Parse("a/b")->MakeRelative(*Path::Parse("a")).has_value());
    EXPECT_FALSE(ab.MakeRelative(*Path::Parse("/b")).has_value());
    EXPECT_FALSE(Path::Parse("/a")->MakeRelative(ab).has_value());
    EXPECT_FALSE(Path::Parse("/ab")->MakeRelative(*Path::Parse("/a")).has_value());
}

TEST(GenerateKey, MakesBracketedBase36KeysThatTheCallerAcceptsOnEveryThread) {
    const auto any = [](std::string_view) { return true; };
    const std::string key = GenerateKey("a/b", any);
    ASSERT_EQ(key.size(), std::string("a b [xxx]").size());
    EXPECT_EQ(key.substr(0, 5), "a b [");
    EXPECT_EQ(key.back(), ']');
    EXPECT_EQ(key.find_first_not_of("0123456789abcdefghijklmnopqrstuvwxyz", 5), 8u);  // three base 36 digits

    const std::string bare = GenerateKey("", any);
    EXPECT_EQ(bare.size(), 5u);
    EXPECT_EQ(bare.front(), '[');

    // Ten refusals with three digits, then the candidates grow to four digits.
    int calls = 0;
    const std::string accepted = GenerateKey("Blur", [&](std::string_view candidate) {
        ++calls;
        return calls == 11 || candidate.empty();
    });
    EXPECT_EQ(accepted.size(), std::string("Blur [xxxx]").size());

    EXPECT_THROW(GenerateKey("x", nullptr), std::bad_function_call);

    // Threads draw from engines of their own.
    std::set<std::string> keys;
    for (int i = 0; i < 50; ++i) {
        keys.insert(GenerateKey("", any));
    }
    std::string other;
    std::thread([&] { other = GenerateKey("T", any); }).join();
    EXPECT_GT(keys.size(), 45u);  // 36^3 candidates: collisions are rare, repetition would be a bug
    EXPECT_EQ(other.substr(0, 3), "T [");
}

// A plug-in's class may declare no type of its own: it is cast as its nearest typed base.
class UntypedParameter : public FloatParameter {
public:
    explicit UntypedParameter(Operator* op) : FloatParameter(op, "Untyped", 0.0) {}
};

class CastOperator : public Operator {
public:
    VANTEL_OBJECT_TYPE(CastOperator, Operator, "Vantel.Test.CastOperator");
    FloatParameter plain{this, "Plain", 0.0};
    UntypedParameter untyped{this};
    DataInput in{this, "In"};
    DataOutput out{this, "Out"};
};

template <typename T>
void ExpectCastsAgree(const std::vector<Object*>& objects) {
    for (Object* object : objects) {
        const Object* constant = object;
        EXPECT_EQ(ObjectCast<T>(object), dynamic_cast<T*>(object)) << T::Type()->GetName();
        EXPECT_EQ(ObjectCast<T>(constant), dynamic_cast<const T*>(constant)) << T::Type()->GetName();
    }
}

TEST(ObjectCast, AgreesWithDynamicCast) {
    CastOperator op;
    Graph graph;
    Node node("Node");
    const std::vector<Object*> objects{
        &op, &graph, &node, &op.plain, &op.untyped, &op.in, &op.out, &op.GetParameterGroup(), nullptr};
    ExpectCastsAgree<Operator>(objects);
    ExpectCastsAgree<Graph>(objects);
    ExpectCastsAgree<Parameter>(objects);
    ExpectCastsAgree<FloatParameter>(objects);
    ExpectCastsAgree<ParameterGroup>(objects);
    ExpectCastsAgree<DataInput>(objects);
    ExpectCastsAgree<DataOutput>(objects);
    ExpectCastsAgree<Node>(objects);
}

}  // namespace
}  // namespace Vantel

// The configuration tree: nodes, schemas, changes and bindings. A tree is described by its data and schema texts, and
// by what is staged in it.
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "oom/sweep.hpp"
#include "qel/configuration/json.hpp"
#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "qel/configuration/node/vector.hpp"
#include "qel/configuration/property.hpp"

namespace qel::oom {
namespace {

using namespace configuration;
using configuration::node::Change;
using configuration::node::DynamicEnum;
using configuration::node::Map;
using configuration::node::Value;
using configuration::node::Vector;
using Text = configuration::node::Primitive<std::string>;
using Number = configuration::node::Primitive<std::int32_t>;

constexpr char Long[] = "a text that is too long to be kept without an allocation";
constexpr char Other[] = "another text that is too long to be kept without an allocation";

/// A tree with a node of each kind, and how often its nodes have fired.
struct Tree {
    std::shared_ptr<Map> root = Map::Make("root");
    std::shared_ptr<Text> text = Text::Make("text", "a text", Long, {}, Validator::Pattern("text|new"));
    std::shared_ptr<Number> number = Number::Make("number", "a number", 3, {}, Range{0, 9});
    std::shared_ptr<DynamicEnum> choice = DynamicEnum::Make("choice", {Long, Other, "x"}, Long, "a choice");
    std::shared_ptr<Vector> list =
        Vector::Make("list", "a list", {}, Schema("elements[*]", "an element", std::string()));
    std::shared_ptr<int> fired = std::make_shared<int>(0);
    std::vector<type::Binding> bindings{};

    Tree() {
        for (std::shared_ptr<Node> const& node :
             std::vector<std::shared_ptr<Node>>{text, number, choice, list, Map::Make("inner")}) {
            root->Insert(node);
            bindings.push_back(node->Bind([count = fired](auto const&) { ++*count; }));
        }
        bindings.push_back(root->Bind([count = fired](auto const&) { *count += 100; }));
        list->Add({{"", Long}, {"", "b"}});
        *fired = 0;
    }
};

std::string StagedText(Value const& node) {
    auto const staged = node.GetStaged();
    if (!staged) return "-";
    if (staged->Is<object::Primitive<std::string>>()) return staged->As<object::Primitive<std::string>>().Get();
    return std::to_string(staged->As<object::Primitive<std::int32_t>>().Get());
}

std::string TextOf(Tree const& tree) {
    return json::Data(*tree.root) + json::Schema(*tree.root) + " staged: " + StagedText(*tree.text) + ", " +
           StagedText(*tree.number) + ", " + StagedText(*tree.choice) + " fired: " + std::to_string(*tree.fired) +
           (tree.root->IsFrozen() ? " frozen" : "");
}

template <class Act>
Operation OnTree(std::string name, Act act) {
    return MakeOperation(
        "configuration/" + name, Promise::Strong, [] { return Tree(); }, act, [](Tree const& s) { return TextOf(s); });
}

/// The same on a tree that something has been done to before.
template <class Before, class Act>
Operation OnTreeAfter(std::string name, Before before, Act act) {
    return MakeOperation(
        "configuration/" + name, Promise::Strong,
        [before] {
            auto tree = std::make_unique<Tree>();
            before(*tree);
            return tree;
        },
        [act](auto& s) { act(*s); }, [](auto const& s) { return TextOf(*s); });
}

void StageAll(Tree& tree) {
    tree.text->Stage(std::string(Other));
    tree.number->Stage(7);
    tree.choice->Stage(Other);
    json::Stage(*tree.root, R"({"list": ["new element that is too long to be kept in place", "y", "z"]})");
}

Operations ValueOperations() {
    return {
        OnTree("ValueSet", [](Tree& t) { t.text->Set(std::string(Other)); }),
        OnTree("ValueSetObject", [](Tree& t) { t.number->Set(*object::Make("7")); }),
        OnTree("ValueSetEqual", [](Tree& t) { t.text->Set(std::string(Long)); }),
        OnTree("ValueStage", [](Tree& t) { t.text->Stage(std::string(Other)); }),
        OnTree("ValueStageObject", [](Tree& t) { t.number->Stage(*object::Make("7")); }),
        OnTree("ValueCopy", [](Tree& t) { t.text->Copy(*Text::Make("other", "", Other)); }),
        OnTree("ValueRefused",
               [](Tree& t) {
                   Caught<std::out_of_range>([&] { t.number->Set(10); });
                   Caught<std::out_of_range>([&] { t.text->Set("nothing that matches"); });
                   Caught<object::BadCast>([&] { t.text->Set(*object::Make(7)); });
                   Caught<object::BadCast>([&] { t.text->Copy(*t.number); });
               }),
        OnTree("ValueRead",
               [](Tree& t) {
                   static_cast<void>(t.text->Get());
                   static_cast<void>(t.text->GetDefault());
                   static_cast<void>(t.text->GetValidator()->GetPattern());
                   static_cast<void>(t.text->EqualTo(*t.text));
                   static_cast<void>(t.text->GetPath());
                   static_cast<void>(t.list->Find(1)->GetPath(t.root));
                   static_cast<void>(t.text->GetParent());
                   static_cast<void>(t.text->GetTimestamp());
                   static_cast<void>(t.root->GetChildren());
                   static_cast<void>(t.list->GetElements());
                   static_cast<void>(t.list->GetSize());
                   static_cast<void>(t.root->Find("list[1]"));
                   static_cast<void>(t.root->Find("inner.nothing"));
                   static_cast<void>(t.choice->Get());
                   static_cast<void>(t.choice->GetChoices());
                   static_cast<void>(t.text->GetPtr<Text>());
                   Caught<object::BadCast>([&] { t.text->GetPtr<Map>(); });
               }),
        OnTree("EnumSet", [](Tree& t) { t.choice->Set(Other); }),
        OnTree("EnumStage", [](Tree& t) { t.choice->Stage(Other); }),
        OnTree("EnumSetChoices",
               [](Tree& t) {
                   t.choice->SetChoices({Long, "y", "another choice that is too long to be kept in place"});
               }),
        OnTree("EnumCopy",
               [](Tree& t) {
                   t.choice->Copy(*DynamicEnum::Make("other", {Other, "z"}, Other, ""));
               }),
        OnTree("EnumRefused",
               [](Tree& t) {
                   Caught<std::out_of_range>([&] { t.choice->Set("none of them"); });
                   Caught<std::out_of_range>([] { DynamicEnum::Make("other", {Other, "z"}, "y", ""); });
               }),
    };
}

Operations NodeOperations() {
    return {
        OnTreeAfter("Commit", StageAll, [](Tree& t) { t.root->Commit(); }),
        OnTreeAfter("Discard", StageAll, [](Tree& t) { t.root->Discard(); }),
        OnTreeAfter("Freeze", StageAll, [](Tree& t) { t.root->Freeze(configuration::node::Freeze::Frozen); }),
        OnTreeAfter(
            "Fire",
            [](Tree& t) {
                StageAll(t);
                t.root->Commit();
            },
            [](Tree& t) { t.root->Fire(); }),
        OnTreeAfter(
            "FrozenRefused", [](Tree& t) { t.root->Freeze(configuration::node::Freeze::Frozen); },
            [](Tree& t) {
                Caught<std::logic_error>([&] { t.text->Set(std::string(Other)); });
                Caught<std::logic_error>([&] { t.root->Insert(Map::Make("more")); });
                Caught<std::logic_error>([&] { t.list->Add({{"", "c"}}); });
            }),
        OnTree("Bind",
               [](Tree& t) {
                   // The binding goes at once: a handler that stayed would be heard.
                   static_cast<void>(t.text->Bind([count = t.fired](auto const&) { *count += 1000; }));
                   t.text->Fire();
               }),
        OnTree("BindAndCallNow",
               [](Tree& t) {
                   std::string const captured = Long;
                   static_cast<void>(t.text->Bind([&t, captured](auto const&) { *t.fired += 1000; },
                                                  {configuration::node::binding::Option::CallNow}));
               }),
        OnTree("BindRefused",
               [](Tree& t) { Caught<std::invalid_argument>([&] { static_cast<void>(t.text->Bind({})); }); }),
        MakeOperation(
            "configuration/FireAfterAFailedBind", Promise::Strong, [] { return std::make_unique<Tree>(); },
            [](auto& s) {
                Tree& t = *s;
                bool outOfMemory = false;
                try {
                    static_cast<void>(t.number->Bind([count = t.fired](auto const&) { *count += 1000; }));
                } catch (std::bad_alloc const&) {
                    outOfMemory = true;
                }
                if (outOfMemory) throw std::bad_alloc();
            },
            [](auto const& s) {
                // What was not bound is not called.
                int const before = *s->fired;
                s->number->Fire();
                int const more = *s->fired - before;
                *s->fired = before;
                return std::to_string(more);
            }),
    };
}

Operations MapOperations() {
    return {
        OnTree("MapInsert", [](Tree& t) { t.root->Insert(Text::Make("more", "", Long)); }),
        OnTree("MapInsertSubtree",
               [](Tree& t) {
                   auto const inner = Map::Make("a map with a name that is too long to be kept in place");
                   inner->Insert(Text::Make("more", "", Long));
                   t.root->Insert(inner);
               }),
        OnTree("MapExchange",
               [](Tree& t) {
                   t.root->Exchange({"text", "nothing"}, {Text::Make("text", "", Other), Text::Make("more", "", Long)});
               }),
        OnTree("MapSet",
               [](Tree& t) {
                   t.root->Set({{"text", Other}, {"number", 7}, {"choice", Other}});
               }),
        OnTree("MapSetOne", [](Tree& t) { t.root->Set("list[1]", Other); }),
        OnTree("MapRefused",
               [](Tree& t) {
                   Caught<std::invalid_argument>([&] { t.root->Insert(nullptr); });
                   Caught<std::invalid_argument>([&] { t.root->Insert(Map::Make("")); });
                   Caught<std::invalid_argument>([&] { t.root->Insert(Map::Make("text")); });
                   Caught<std::invalid_argument>([&] { t.root->Exchange({"text"}, {Map::Make("number")}); });
                   Caught<std::out_of_range>([&] { t.root->Set("nothing", 1); });
                   Caught<std::out_of_range>([&] { t.root->Set({{"text", Other}, {"number", 70}}); });
                   Caught<std::invalid_argument>([&] { t.root->Set("number", nullptr); });
               }),
        MakeOperation(
            "configuration/MapSchema", Promise::Basic, [] { return Tree(); },
            [](Tree& t) {
                t.root->Schema({Schema("made.on.the.way", Long, 2.5, {}, Range{0.0, 5.0}),
                                Schema("made.list[*]", Long, Long), Schema("made.empty", ""),
                                Schema("made.choice", "", "x", {}, {"x", "y"})});
            },
            [](Tree const& s) { return json::Schema(*s.root); }),
        OnTree("MapSchemaRefused",
               [](Tree& t) { Caught<std::invalid_argument>([&] { t.root->Schema({Schema("text", "", 1)}); }); }),
        OnTree("VectorAdd",
               [](Tree& t) {
                   t.list->Add({{"", Other}, {"name", "c"}});
               }),
        OnTree("VectorReplace",
               [](Tree& t) {
                   t.list->Replace({{"", Other}, {"name", "c"}, {"", Long}});
               }),
        OnTree("VectorRefused",
               [](Tree& t) {
                   Caught<std::invalid_argument>([&] { t.list->Add({{"", nullptr}}); });
                   Caught<object::BadCast>([&] { t.list->Add({{"", 7}}); });
               }),
        OnTree("VectorWithoutSchema",
               [](Tree& t) {
                   auto const list = Vector::Make("numbers");
                   list->Add({{"", 7}, {"", Long}, {"", true}});
                   t.root->Insert(list);
               }),
    };
}

struct Made {
    std::string text{};
};

template <class Act>
Operation Making(std::string name, Act act) {
    return MakeOperation(
        "configuration/" + name, Promise::Strong, [] { return Made(); },
        [act](Made& made) { made.text = json::Schema(*act()); }, [](Made const& made) { return made.text; });
}

template <class T>
Operation MakingPrimitive(T value, Validator const& validator) {
    return Making(std::string("Make") + type::Name<configuration::node::Primitive<T>>::Value, [value, validator] {
        return configuration::node::Primitive<T>::Make("a name", Long, value, {}, validator);
    });
}

struct Owner {
    void SetName(std::string text) { name = std::move(text); }
    void SetSize(std::int32_t number) { size = number; }

    std::string name{};
    std::int32_t size = 0;
};

Operations SchemaOperations() {
    return {
        MakingPrimitive<std::string>(Long, Validator::Pattern("t(ext|oo)+.*")),
        MakingPrimitive<bool>(true, {}),
        MakingPrimitive<unsigned char>(7, Validator(Range{1, 9})),
        MakingPrimitive<std::int32_t>(-7, Validator::Minimum(-10)),
        MakingPrimitive<std::int64_t>(-7, Validator::Maximum(10)),
        MakingPrimitive<std::uint32_t>(7, {}),
        MakingPrimitive<double>(0.1, Validator(Range{0.0, 0.3})),
        Making("SchemaMake", [] { return Schema("a.path", Long, Long, {}, Validator::Pattern("a+")).Make(Other); }),
        Making("SchemaOfEnum",
               [] {
                   return Schema("a", Long, Long, {}, {Long, Other}).Make(Other);
               }),
        Making("ValidatorPattern",
               [] { return Text::Make("a", "", "aXbbb-", {}, Validator::Pattern("^(a|b)[A-Z](?:b{2,3}|\\d+)-$")); }),
        MakeOperation(
            "configuration/SchemaRefused", Promise::Strong, [] { return std::string(); },
            [](std::string& text) {
                std::string said = Caught<std::invalid_argument>([] { Schema("a..b", ""); });
                said += Caught<std::out_of_range>([] { Schema("a", "", 5, {}, Range{0, 1}); });
                said += Caught<std::invalid_argument>([] { Schema("a", "", Long, {}, Range{0, 1}); });
                said += Caught<std::invalid_argument>([] { Validator::Pattern("a(b"); });
                said += Caught<std::invalid_argument>([] { Validator(Range{1.5, 0.5}); });
                text = said;
            },
            [](std::string const& text) { return text; }),
        MakeOperation(
            "configuration/Property", Promise::Strong, [] { return Owner(); },
            [](Owner& owner) {
                auto const name =
                    MakeProperty<Owner>("name", Long, std::string("text"), {"text", Long}, &Owner::SetName);
                auto const size = MakeProperty<Owner>("size", Long, 3, Range{0, 9}, &Owner::SetSize);
                auto const node = name.schemas.front().Make(name.name, *object::Make(Long));
                auto const other = size.schemas.front().Make(size.name);
                name.setter(&owner, *node);
                size.setter(&owner, *other);
            },
            [](Owner const& owner) {
                return owner.name.empty() ? "untouched" : owner.name + std::to_string(owner.size);
            }),
    };
}

}  // namespace

Operations ConfigurationOperations() {
    Operations all;
    for (auto const& list : {ValueOperations, NodeOperations, MapOperations, SchemaOperations}) {
        for (Operation& operation : list()) all.push_back(std::move(operation));
    }
    return all;
}

}  // namespace qel::oom

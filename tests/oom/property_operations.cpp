// Properties and what ties them to nodes.
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "oom/sweep.hpp"
#include "property/tank.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "qel/property/properties.hpp"

namespace qel::oom {
namespace {

using configuration::node::Map;
using property::Binder;
using property::Properties;
using test::Tank;

constexpr char Long[] = "a text that is too long to be kept without an allocation";

property::Schema NoteSchema() {
    return property::MakeSchema<Tank, test::Base>(&Tank::GetMode, "note", Long, std::string(Long), &Tank::SetMode);
}

property::Schema KeptSchema() {
    // Without a getter: the value is what was set last.
    return property::Schema(configuration::Schema("kept", Long, Long), [](void*, object::Object const&) {});
}

std::vector<property::Schema> Schemas() {
    return {test::LevelSchema(), NoteSchema(), KeptSchema(), test::ChangesSchema()};
}

/// A tank whose properties are tied to a tree.
struct Bound {
    std::shared_ptr<Map> map = Map::Make("settings");
    std::shared_ptr<Tank> tank = std::make_shared<Tank>();
    std::shared_ptr<test::Base> base = tank;
    std::unique_ptr<Properties> properties{};
    std::string text{};

    Bound() {
        map->Schema({configuration::Schema("level", "", 2.0), configuration::Schema("note", "", Long),
                     configuration::Schema("kept", "", Long), configuration::Schema("changes", "", std::uint32_t{0})});
    }
    void Tie() {
        Binder binder(map);
        properties = std::make_unique<Properties>(binder, std::shared_ptr<void>(base, base.get()), Schemas());
    }
};

std::string TextOf(std::unique_ptr<Bound> const& s) {
    auto const node = [&](char const* name) { return s->map->Find(name)->As<configuration::node::Value>().GetValue(); };
    std::string text = s->text + std::to_string(s->tank->GetLevel()) + s->tank->GetMode() +
                       std::to_string(node("level")->As<object::Primitive<double>>().Get()) +
                       node("note")->As<object::Primitive<std::string>>().Get() +
                       node("kept")->As<object::Primitive<std::string>>().Get();
    if (s->properties) text += (*s->properties)["kept"].Get<std::string>();
    return text;
}

template <class Act>
Operation OnBound(std::string name, Promise promise, Act act) {
    return MakeOperation(
        "property/" + name, promise,
        [] {
            auto bound = std::make_unique<Bound>();
            bound->Tie();
            return bound;
        },
        [act](std::unique_ptr<Bound>& s) { act(*s); }, TextOf);
}

}  // namespace

Operations PropertyOperations() {
    auto const makeUntied = [] { return std::make_unique<Bound>(); };
    return {
        // The owner may have taken the values of some nodes.
        MakeOperation(
            "property/TieProperties", Promise::Basic, makeUntied, [](std::unique_ptr<Bound>& s) { s->Tie(); }, TextOf),
        MakeOperation(
            "property/PropertiesWithoutNodes", Promise::Strong, makeUntied,
            [](std::unique_ptr<Bound>& s) {
                Properties properties(std::shared_ptr<void>(s->base, s->base.get()), Schemas());
                Properties const moved(std::move(properties));
                auto const all = moved.GetAll();
                std::string text = all.front().get().GetName();
                text += Caught<std::out_of_range>([&] { moved["nothing"]; });
                text += moved == moved ? "same" : "other";
                text += Caught<std::invalid_argument>([] { Properties(nullptr, {NoteSchema(), NoteSchema()}); });
                s->text = text;
            },
            TextOf),
        MakeOperation(
            "property/CompareSchemas", Promise::Strong, makeUntied,
            [](std::unique_ptr<Bound>& s) {
                property::Schema const schema = NoteSchema();
                s->text = schema == NoteSchema() && !(schema == test::LevelSchema()) ? "equal" : "other";
            },
            TextOf),
        OnBound("SetNumber", Promise::Strong, [](Bound& s) { (*s.properties)["level"].Set(4.0); }),
        OnBound("SetText", Promise::Strong,
                [](Bound& s) { (*s.properties)["note"].Set("a new text, of some length"); }),
        OnBound("SetKept", Promise::Strong,
                [](Bound& s) { (*s.properties)["kept"].Set("a new text, of some length"); }),
        OnBound("SetRefused", Promise::Strong,
                [](Bound& s) {
                    s.text = Caught<std::out_of_range>([&] { (*s.properties)["level"].Set(40.0); }) +
                             Caught<std::logic_error>([&] { (*s.properties)["changes"].Set(std::uint32_t{7}); }) +
                             Caught<std::runtime_error>([&] { (*s.properties)["level"].Set(9.0); }) +
                             Caught<object::BadCast>([&] { (*s.properties)["note"].Set(true); });
                }),
        OnBound("Get", Promise::Strong,
                [](Bound& s) {
                    s.text = (*s.properties)["note"].Get<std::string>() +
                             std::to_string((*s.properties)["level"].Get<double>());
                }),
        // The property may fail to follow when the node has changed; it tries again when the node fires.
        OnBound("ChangeNode", Promise::Basic,
                [](Bound& s) {
                    s.map->Set("note", "a new text, of some length");
                    s.map->Find("note")->Fire();
                }),
        OnBound("Publish", Promise::Basic,
                [](Bound& s) {
                    s.tank->SetMode("a mode that the owner has chosen by itself");
                    (*s.properties)["note"].Publish();
                }),
    };
}

}  // namespace qel::oom

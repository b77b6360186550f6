// Video algorithms: the base, the registry, plug-ins, properties.
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "oom/sweep.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/algorithm/video/plugin/loader.hpp"
#include "qel/algorithm/video/properties.hpp"
#include "qel/algorithm/video/registry/get.hpp"
#include "qel/algorithm/video/registry/property.hpp"
#include "qel/algorithm/video/registry/register.hpp"
#include "qel/configuration/json.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/primitive.hpp"

namespace qel::oom {
namespace {

namespace video = algorithm::video;
namespace registry = algorithm::video::registry;
using configuration::Property;
using configuration::node::Map;
using hash::MurmurThree32;
using inference::backend::Manager;
using media::ColourFormat;

constexpr char Long[] = "a text that is too long to be kept without an allocation";
constexpr char const* TypeName = "test.oom.Note";

class Note final : public video::passthrough::Algorithm {
public:
    Note() : Algorithm(MurmurThree32(TypeName), {ColourFormat::Grey8, ColourFormat::Nv12}) {}

    void Process(media::video::FrameBase<void const> const&, video::Result&) override {}
    std::string GetText() const { return text_; }
    void SetText(std::string text) { text_ = std::move(text); }
    double GetSize() const { return size_; }
    void SetSize(double size) { size_ = size; }

private:
    std::string text_{};
    double size_ = 0;
};

std::vector<Property> const& Properties() {
    static std::vector<Property> const properties{
        registry::MakeProperty<Note>("text", Long, std::string(Long), &Note::SetText),
        registry::MakeProperty<Note>("size", "how large", 2.0, configuration::Range{0.0, 9.0}, &Note::SetSize),
    };
    return properties;
}

std::shared_ptr<video::Algorithm> MakeNote(Manager&) { return std::make_shared<Note>(); }

registry::Info MakeInfo(char const* name) {
    return {MurmurThree32(name), name, MakeNote, Properties, registry::CreateNodes(Properties)};
}

[[maybe_unused]] bool const Registered = registry::Register(MakeInfo(TypeName));

/// An algorithm and a map with the nodes of its properties.
struct Configured {
    Manager manager{};
    std::shared_ptr<Map> map = Map::Make("note");
    std::shared_ptr<Note> note = std::make_shared<Note>();
    std::vector<type::Binding> bindings{};
    std::string text{};

    void CreateNodes() {
        auto const entries = registry::Get().GetMap();
        entries->at(MurmurThree32(TypeName)).CreateConfigNodes(manager, map);
    }
};

std::string TextOf(std::unique_ptr<Configured> const& s) {
    return s->text + configuration::json::Data(*s->map) + s->note->GetText() + std::to_string(s->note->GetSize()) +
           std::to_string(s->bindings.size());
}

template <class Act>
Operation OnConfigured(std::string name, Promise promise, Act act) {
    return MakeOperation(
        "video/" + name, promise,
        [] {
            auto s = std::make_unique<Configured>();
            s->CreateNodes();
            return s;
        },
        [act](std::unique_ptr<Configured>& s) { act(*s); }, TextOf);
}

std::vector<property::Schema> Schemas() {
    return {
        property::MakeSchema<Note, video::Algorithm>(&Note::GetText, "text", Long, std::string(Long), &Note::SetText),
        property::MakeSchema<Note, video::Algorithm>(&Note::GetSize, "size", "how large", 2.0,
                                                     configuration::Range{0.0, 9.0}, &Note::SetSize)};
}

Operations AlgorithmOperations() {
    return {
        OnConfigured("Construct", Promise::Strong, [](Configured& s) { s.note = std::make_shared<Note>(); }),
        OnConfigured("CopyAndCompare", Promise::Strong,
                     [](Configured& s) {
                         Note copy(*s.note);
                         copy = *s.note;
                         Note const moved(std::move(copy));
                         s.text = moved == *s.note ? "same" : "other";
                     }),
        MakeOperation(
            "video/CreateConfigNodes", Promise::Basic, [] { return std::make_unique<Configured>(); },
            [](std::unique_ptr<Configured>& s) { s->CreateNodes(); }, TextOf),
        // A setter that has been called stays called.
        OnConfigured("BindToConfiguration", Promise::Basic,
                     [](Configured& s) { s.bindings = s.note->BindToConfiguration(*s.map); }),
        OnConfigured("MakeFromRegistry", Promise::Strong,
                     [](Configured& s) {
                         auto const entries = registry::Get().GetMap();
                         s.note =
                             std::dynamic_pointer_cast<Note>(entries->at(MurmurThree32(TypeName)).GetMake()(s.manager));
                     }),
        OnConfigured("RegisterAgain", Promise::Strong,
                     [](Configured& s) { s.text = registry::Register(MakeInfo(TypeName)) ? "new" : "taken"; }),
        OnConfigured("Properties", Promise::Basic,
                     [](Configured& s) {
                         property::Binder binder(s.map);
                         video::Properties const properties(s.note, binder, Schemas());
                         properties.GetProperty("text").Set("a new text, of some length");
                         s.text = Caught<std::out_of_range>([&] { properties.GetProperty("nothing"); });
                         s.text += properties == properties ? "same" : "other";
                         s.text += properties.GetAlgorithmPtr() == s.note ? "own" : "foreign";
                     }),
        OnConfigured("PropertiesWithoutAlgorithm", Promise::Strong,
                     [](Configured& s) {
                         video::Properties properties(nullptr, Schemas());
                         video::Properties const moved(std::move(properties));
                         s.text = Caught<std::logic_error>([&] { static_cast<void>(moved.GetAlgorithm()); }) +
                                  Caught<std::logic_error>([&] { static_cast<void>(properties.GetProperties()); });
                     }),
        // All plug-ins are loaded by then; what is left is to find that out.
        OnConfigured("LoadPluginsAgain", Promise::Strong, [](Configured&) { video::plugin::Loader const loader; }),
        MakeOperation(
            "video/Result", Promise::Basic, [] { return video::Result(); },
            [](video::Result& result) {
                video::Result made;
                made.objects.push_back({{1, 2, 3, 4}, 5, Long, 0.5F});
                made.objects.back().attributes["height_m"] = 1.5;
                made.foreground = algorithm::BitMask({40, 4});
                result = made;
            },
            [](video::Result const& result) { return std::to_string(result.objects.size()); }),
    };
}

}  // namespace

Operations VideoOperations() { return AlgorithmOperations(); }

}  // namespace qel::oom

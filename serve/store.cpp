#include "store.hpp"

#include <algorithm>
#include <exception>
#include <mutex>
#include <shared_mutex>
#include <utility>

#include <boost/json.hpp>

#include "config_file.hpp"
#include "config_tree.hpp"
#include "document.hpp"
#include "error.hpp"
#include "json_text.hpp"
#include "qel/configuration/json.hpp"
#include "qel/logging/logger.hpp"
#include "read_json.hpp"
#include "signal.hpp"

namespace qel::serve {
namespace {

namespace json = boost::json;
using configuration::Node;
using configuration::node::Map;

logging::Logger const log(logging::Name("qel.serve.Store"));

json::object MakeEmpty() { return {{"streams", json::object()}, {"algorithms", json::object()}}; }

std::string Explain(Refused const& refused) {
    constexpr std::size_t Most = 5;
    auto const& faults = refused.GetFaults();
    std::string text;
    for (std::size_t i = 0; i < faults.size() && i < Most; ++i) {
        text += (i == 0 ? "" : "; ") + (faults[i].path.empty() ? "" : faults[i].path + ": ") + faults[i].reason;
    }
    return faults.size() > Most ? text + "; and " + std::to_string(faults.size() - Most) + " more" : text;
}

/// Whether streams came or went, or one of them is to do something else; values of settings aside.
bool IsOther(std::vector<StreamSpec> const& left, std::vector<StreamSpec> const& right) {
    return !std::equal(left.begin(), left.end(), right.begin(), right.end(), [](auto const& a, auto const& b) {
        return a.id == b.id && !a.NeedsRestart(b) && a.settings == b.settings;
    });
}

}  // namespace

struct Store::Impl {
    Impl(host::Runtime& runtime, boost::filesystem::path const& path) : file(path), tree(runtime) {
        Load();
        Tell("values", [&] { tree.GetRoot().Fire(); });
    }

    void Load();
    void Create();
    void Use(std::string const& text);
    void UseLastGood(std::string const& reason);
    void Apply(ConfigTree::Plan plan, json::object next);
    std::vector<std::string> Change(json::object const& patch);
    template <class Call>
    void Tell(char const* what, Call const& call) const;

    /// What is read is of one state. A writer that waits goes before readers that come after it.
    std::shared_lock<std::shared_mutex> LockToRead() const {
        std::lock_guard const turn(turnstile);
        return std::shared_lock(state);
    }
    std::unique_lock<std::shared_mutex> LockToWrite() const {
        std::lock_guard const turn(turnstile);
        return std::unique_lock(state);
    }

    /// The node at a path; null where there is none that may be read.
    std::shared_ptr<Node const> Find(std::string_view path);

    ConfigFile file;
    ConfigTree tree;
    // Held from the check of a change until it is in effect, not while it is told of. Locked before the others.
    std::mutex changing;
    // Guards what follows, and the values and the shape of the tree against being changed while they are read.
    mutable std::mutex turnstile;
    mutable std::shared_mutex state;
    json::object document = MakeEmpty();
    std::vector<StreamSpec> streams;
    std::vector<Fault> problems;
    std::optional<std::string> safeModeReason;
    Signal streamsSignal;
    Signal changesSignal;
};

void Store::Impl::Load() {
    file.Lock();
    auto const text = file.Read();
    if (!text) return Create();
    try {
        Use(*text);
    } catch (Refused const& refused) {
        return UseLastGood(Explain(refused));
    }
    // A disk that is full keeps nobody from starting who changes nothing.
    if (file.ReadLastGood() != text) file.SaveLastGood(*text);
}

void Store::Impl::Create() {
    std::string const text = FormatDocument(document);
    file.Save(text);
    Use(text);
}

void Store::Impl::Use(std::string const& text) {
    json::object next = ParseDocument(text);
    // Whoever wrote the file may have known algorithms that are not here now.
    auto plan = tree.Prepare(next, {}, next);
    Apply(std::move(plan), std::move(next));
}

void Store::Impl::UseLastGood(std::string const& reason) {
    std::string text = "'" + file.GetPath().string() + "' is not used: " + reason + ". ";
    auto const lastGood = file.ReadLastGood();
    try {
        if (!lastGood) throw Refused(Fault{"", "there is none"});
        Use(*lastGood);
        text += "The last good configuration is in effect";
    } catch (Refused const& refused) {
        text += "Nothing is set, as the last good configuration cannot be used either: " + Explain(refused);
        Use(FormatDocument(MakeEmpty()));
    }
    safeModeReason = text;
    log.Log(logging::Level::Warning, "%0%", text);
}

void Store::Impl::Apply(ConfigTree::Plan plan, json::object next) {
    auto const lock = LockToWrite();
    problems = std::move(plan.problems);
    tree.Apply(std::move(plan));
    document = std::move(next);
    streams = tree.MakeSpecs(document, file.GetPath().parent_path());
    safeModeReason.reset();
}

std::vector<std::string> Store::Impl::Change(json::object const& patch) {
    if (auto faults = CheckPatch(patch); !faults.empty()) throw Refused(std::move(faults));
    std::unique_lock change(changing);
    // Only changes write the document, and this is the only one now.
    json::object next = document;
    MergePatch(next, patch);
    for (char const* const part : {"streams", "algorithms"}) {
        if (!next.contains(part)) next.emplace(part, json::object());
    }
    std::string const text = FormatDocument(next);
    // What will be in effect is what the file will say, to the last digit.
    next = ParseDocument(text);
    auto plan = tree.Prepare(next, document, document);
    if (next == document && !safeModeReason) return {};
    try {
        if (safeModeReason) file.KeepBroken();
        file.Save(text);
    } catch (host::Error const&) {
        tree.Discard();
        throw;
    }
    std::vector<std::string> changed = plan.changed;
    std::vector<StreamSpec> const before = streams;
    Apply(std::move(plan), std::move(next));
    bool const isOther = IsOther(before, streams);
    change.unlock();
    if (changed.empty()) return changed;
    Tell("values", [&] { tree.GetRoot().Fire(); });
    if (isOther) Tell("streams", [&] { streamsSignal.Fire(changed); });
    Tell("paths", [&] { changesSignal.Fire(changed); });
    return changed;
}

template <class Call>
void Store::Impl::Tell(char const* what, Call const& call) const {
    try {
        call();
    } catch (std::exception const& error) {
        log.Log(logging::Level::Error, "Somebody who was told of changed %0% failed: %1%", what, error.what());
    }
}

std::shared_ptr<Node const> Store::Impl::Find(std::string_view path) {
    auto node = path.empty() ? tree.GetRoot().GetPtr() : tree.GetRoot().Find(path);
    if (node && node->GetOptions().Test(configuration::node::Option::WriteOnly)) return nullptr;
    return node;
}

Store::Store(host::Runtime& runtime, boost::filesystem::path const& file)
    : impl_(std::make_unique<Impl>(runtime, file)) {}

Store::~Store() = default;

std::optional<std::string> Store::GetSafeModeReason() const {
    auto const lock = impl_->LockToRead();
    return impl_->safeModeReason;
}

std::vector<Fault> Store::GetProblems() const {
    auto const lock = impl_->LockToRead();
    return impl_->problems;
}

std::optional<std::string> Store::GetData(std::string_view path) const {
    auto const lock = impl_->LockToRead();
    auto const node = impl_->Find(path);
    if (!node) return std::nullopt;
    std::string text = configuration::json::Data(*node);
    if (node->Is<Map>()) return text;
    // The value alone, without the member that it stands in.
    return host::SerializeJson(ReadJson(text).get_object().begin()->value());
}

std::optional<std::string> Store::GetSchema(std::string_view path) const {
    auto const lock = impl_->LockToRead();
    auto const node = impl_->Find(path);
    if (!node) return std::nullopt;
    json::object schema{{"$schema", "https://json-schema.org/draft/2020-12/schema"}};
    json::value const own = ReadJson(configuration::json::Schema(*node));
    for (auto const& [name, value] : own.get_object()) schema.emplace(name, value);
    auto const describeStreams = [](json::object& streams) {
        json::object stream = ConfigTree::MakeStreamSchema();
        stream.emplace("required", json::array{"source", "algorithms"});
        streams.emplace("additionalProperties", std::move(stream));
        streams.emplace("propertyNames", json::object{{"pattern", "^[A-Za-z0-9_-]{1,64}$"}});
    };
    if (path == "streams") describeStreams(schema);
    if (path.empty()) describeStreams(schema.at("properties").at("streams").as_object());
    return host::SerializeJson(schema);
}

json::object Store::GetDocument() const {
    auto const lock = impl_->LockToRead();
    return impl_->document;
}

std::vector<std::string> Store::Patch(json::object const& patch) { return impl_->Change(patch); }

std::vector<StreamSpec> Store::GetStreams() const {
    auto const lock = impl_->LockToRead();
    return impl_->streams;
}

type::Binding Store::BindStreams(StreamsChanged handler) {
    return impl_->streamsSignal.Bind([handler = std::move(handler)](auto const&) { handler(); });
}

type::Binding Store::BindChanges(std::function<void(std::vector<std::string> const&)> handler) {
    return impl_->changesSignal.Bind(std::move(handler));
}

}  // namespace qel::serve

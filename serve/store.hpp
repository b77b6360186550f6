#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/filesystem/path.hpp>
#include <boost/json/object.hpp>

#include "fault.hpp"
#include "qel/type/binding.hpp"
#include "runtime.hpp"
#include "stream_spec.hpp"

namespace qel::serve {

/// The configuration of a server: the file that a person may write, the document of what has been set, and the tree of
/// what is in effect.
///
///     {"streams": {"gate": {"source": "gate.avi", "loop": true, "enabled": true, "algorithms": ["motion"],
///                           "calibration": "gate.json", "settings": {"Motion": {"minimum_area": 120}}}},
///      "algorithms": {"Motion": {"threshold": 4}}}
///
/// A setting of a stream that the document does not hold follows the algorithm's ("algorithms.Motion.threshold"), and
/// that one, where it is not held either, is the algorithm's own default. "algorithms.info" is read only.
///
/// The file is replaced in one step before a change takes effect: at any time it holds one whole state. What was in
/// effect last is kept as FILE.last-good too, for the day on which somebody breaks the file. Any thread; changes wait
/// for each other.
class Store {
public:
    /// Which streams are there, or what one of them is to do, has changed.
    using StreamsChanged = std::function<void()>;

    /// Reads the file, or creates an empty configuration where there is none. Where the file is broken, or says what
    /// cannot be, the last good one is used, and the store is in safe mode until the next change is saved; the file is
    /// kept as FILE.broken then.
    /// runtime: outlives the store; one store of a runtime, and of a file. Throws Error when another store uses the
    /// file, also in another process, when it cannot be read or the folder not be written.
    Store(host::Runtime& runtime, boost::filesystem::path const& file);
    Store(Store const&) = delete;
    Store& operator=(Store const&) = delete;
    ~Store();

    /// What is wrong with the file, with line and column where it is no JSON; nothing when it was read.
    std::optional<std::string> GetSafeModeReason() const;

    /// What the configuration names and nobody knows, such as an algorithm whose plug-in is gone: kept as it is.
    std::vector<Fault> GetProblems() const;

    /// The values in effect at a dotted path ("" for all) as JSON text, all of one state; nothing where there is no
    /// node that may be read.
    std::optional<std::string> GetData(std::string_view path) const;
    /// The JSON schema (2020-12) of the node at a path, made of the nodes' own; nothing where there is no node. That of
    /// "streams" tells under "additionalProperties" what a new stream may hold.
    std::optional<std::string> GetSchema(std::string_view path) const;
    /// What has been set, as the file holds it.
    boost::json::object GetDocument() const;

    /// Changes the document by a JSON merge patch (RFC 7396): null takes a setting back. Everything is checked and
    /// staged, then saved, then committed and fired together; handlers run without a lock of the store, and what one of
    /// them throws is a line of the log. Returns the dotted paths of the values in effect that changed; a stream, or an
    /// algorithm's settings in it, that has come or gone is one path.
    /// Throws Refused with every fault, or Error when the file cannot be written; nothing has changed then.
    std::vector<std::string> Patch(boost::json::object const& patch);

    /// All streams, in the order in which they were added.
    std::vector<StreamSpec> GetStreams() const;

    /// Calls the handler after a change of what GetStreams tells, other than the settings' values, on the thread that
    /// made it, until the binding is dropped.
    type::Binding BindStreams(StreamsChanged handler);
    /// Calls the handler after each change with the paths that Patch returns.
    type::Binding BindChanges(std::function<void(std::vector<std::string> const&)> handler);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace qel::serve

// The small platform libraries: hashes, types, objects, media, logging, system.
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "oom/sweep.hpp"
#include "qel/hash/murmur_three_32.hpp"
#include "qel/logging/configure.hpp"
#include "qel/logging/logger.hpp"
#include "qel/logging/sink.hpp"
#include "qel/media/colour_format.hpp"
#include "qel/media/time_point.hpp"
#include "qel/media/video/frame/rotation.hpp"
#include "qel/object/parse.hpp"
#include "qel/object/primitive.hpp"
#include "qel/system/get_library_path.hpp"
#include "qel/system/plugin/find_file.hpp"
#include "qel/system/plugin/load_all.hpp"
#include "qel/system/plugin/load_error.hpp"
#include "qel/system/plugin/report.hpp"
#include "qel/type/binding.hpp"
#include "qel/type/flags.hpp"
#include "qel/type/registry.hpp"
#include "qel/type/to_string.hpp"
#include "support/temporary_directory.hpp"

namespace qel::oom {
namespace {

constexpr char Long[] = "a text that is too long to be kept without an allocation";

template <class Act>
Operation OnText(std::string name, Act act) {
    return MakeOperation(
        std::move(name), Promise::Strong, [] { return std::string(); }, act,
        [](std::string const& text) { return text; });
}

template <class T>
Operation Printing(std::string name, T const& value) {
    return MakeOperation(
        std::move(name), Promise::Stream, [] { return std::make_unique<std::ostringstream>(); },
        [value](auto& stream) {
            stream->clear();
            stream->str("");
            // More than a stream's text holds in place.
            for (int i = 0; i < 4; ++i) *stream << value;
        },
        [](auto const& stream) { return (*stream ? "good: " : "bad: ") + stream->str(); });
}

Operations TypeOperations() {
    using type::Registry;
    using Entries = Registry<std::string>;
    return {
        Printing("hash/Print", hash::MurmurThree32(Long)),
        Printing("media/PrintColourFormat", media::ColourFormat::Nv12),
        OnText("media/EnumerationTexts",
               [](std::string& text) {
                   text = type::ToString(media::ColourFormat::Nv12) +
                          type::ToString(media::video::frame::Rotation::Clockwise180) +
                          type::ToString(logging::Level::Warning) + Long;
               }),
        OnText("type/Flags",
               [](std::string& text) {
                   text = Caught<std::out_of_range>([] {
                       type::Flags<media::ColourFormat, unsigned char, 4> flags;
                       flags.Set(media::ColourFormat::Nv12);
                   });
               }),
        OnText("type/Binding",
               [](std::string& text) {
                   std::string const captured = Long;
                   std::string released;
                   type::Binding binding(
                       [captured, &released]() noexcept { released.swap(const_cast<std::string&>(captured)); });
                   type::Binding moved(std::move(binding));
                   binding = std::move(moved);
                   binding.Release();
                   text = "released";
               }),
        MakeOperation(
            "type/Registry", Promise::Strong, [] { return std::make_unique<Entries>(); },
            [](std::unique_ptr<Entries>& registry) { registry->Register(hash::MurmurThree32("a"), Long); },
            [](std::unique_ptr<Entries> const& registry) { return std::to_string(registry->GetMap()->size()); }),
    };
}

Operations ObjectOperations() {
    using object::Parse;
    return {
        OnText("object/Parse",
               [](std::string& text) {
                   std::string made = Parse<std::string>(Long) + std::to_string(Parse<std::int32_t>("-7"));
                   made += Caught<std::invalid_argument>([] { Parse<bool>(Long); });
                   made += Caught<std::out_of_range>([] { Parse<unsigned char>("1000"); });
                   made += Caught<std::invalid_argument>([] { Parse<unsigned char>(Long); });
                   made += Caught<std::out_of_range>([] { Parse<std::int32_t>("99999999999"); });
                   made += Caught<std::out_of_range>([] { Parse<std::uint32_t>("-1"); });
                   made += Caught<std::invalid_argument>([] { Parse<std::int64_t>("99999999999999999999"); });
                   made += Caught<std::invalid_argument>([] { Parse<double>("1.2.3"); });
                   text = made;
               }),
        MakeOperation(
            "object/Primitive", Promise::Strong, [] { return object::Primitive<std::string>("short"); },
            [](object::Primitive<std::string>& object) {
                auto const made = object::Make(Long);
                object::Primitive<std::string> const copy(*made);
                Caught<object::BadCast>([&] { static_cast<void>(made->As<object::Primitive<bool>>()); });
                Caught<object::BadCast>([&] { object.Set(*object::Make(7)); });
                object.Set(copy);
            },
            [](object::Primitive<std::string> const& object) { return object.Get(); }),
    };
}

/// Lines that are logged while it lives.
struct Lines {
    std::vector<std::string> lines{};
    type::Binding binding = logging::BindSink(
        [this](auto, auto name, auto text) { lines.push_back(std::string(name) + ": " + std::string(text)); });
};

Operations LoggingOperations() {
    static logging::Logger const log(logging::Name("test.oom.with.a.name.that.needs.memory"));
    return {
        // A line for which there is no memory is lost; the next one is not.
        MakeOperation(
            "logging/Log", Promise::Silent, [] { return std::make_unique<Lines>(); },
            [](std::unique_ptr<Lines>& lines) {
                lines->lines.clear();
                log.Log(logging::Level::Error, "%0% is no %1%, and no %2%", Long, 7, 0.5);
            },
            [](std::unique_ptr<Lines> const& lines) { return lines->lines.empty() ? "lost" : lines->lines.front(); }),
        MakeOperation(
            "logging/BindSink", Promise::Strong, [] { return std::make_unique<Lines>(); },
            [](std::unique_ptr<Lines>&) {
                std::string const captured = Long;
                type::Binding const binding = logging::BindSink([captured](auto, auto, auto) {});
            },
            [](std::unique_ptr<Lines> const& lines) {
                lines->lines.clear();
                log.Log(logging::Level::Error, "heard");
                return std::to_string(lines->lines.size());
            }),
        MakeOperation(
            "logging/Configure", Promise::Strong, [] { return 0; },
            [](int&) {
                logging::Configure("error, test.oom.with.a.name.that.needs.memory=notice");
                logging::Configure("");
                Caught<std::invalid_argument>([] { logging::Configure("a=b=c, none"); });
            },
            [](int) { return log.IsEnabled(logging::Level::Warning) ? "on" : "off"; }),
        // Channels of loggers are kept for good, so only the first of a name takes memory.
        OnText("logging/LoggerAgain",
               [](std::string& text) {
                   logging::Logger const logger(logging::Name("test.oom.with.a.name.that.needs.memory"));
                   text = "made";
               }),
    };
}

/// A folder with files that are no plug-ins.
struct Folder {
    test::TemporaryDirectory folder{};
    std::string text{};

    Folder() {
        test::WriteFile(folder / "libtest_text.so",
                        "this is text, and long enough for the header of an ELF file, "
                        "which is sixty-four bytes");
        test::WriteFile(folder / "libtest_short.so", "short");
        std::filesystem::create_symlink("nowhere", folder / "libtest_link.so");
        std::filesystem::copy_file(std::filesystem::read_symlink("/proc/self/exe"), folder / "libtest_program.so");
    }
};

Operations SystemOperations() {
    namespace plugin = system::plugin;
    return {
        OnText("system/GetLibraryPath",
               [](std::string& text) {
                   text = system::GetLibraryPath("qel_system").string() +
                          Caught<std::runtime_error>([] { system::GetLibraryPath("no_such_library_in_this_process"); });
               }),
        OnText("system/FindFile",
               [](std::string& text) {
                   text = plugin::FindFile(reinterpret_cast<void const*>(&system::GetLibraryPath)).string() +
                          plugin::FindFile(Long).string() + plugin::FindFile(&text).string();
               }),
        MakeOperation(
            "system/LoadAllRefuses", Promise::Strong, [] { return std::make_unique<Folder>(); },
            [](std::unique_ptr<Folder>& s) {
                std::string text;
                try {
                    plugin::LoadAll("test_", {s->folder.GetPath().string(), "/no/such/folder"});
                } catch (plugin::LoadError const& error) {
                    plugin::LoadError const copy = error;
                    for (auto const& problem : copy.GetProblems()) text += problem.reason + "\n";
                }
                s->text = text;
            },
            [](std::unique_ptr<Folder> const& s) { return s->text; }),
        MakeOperation(
            "system/Report", Promise::Silent,
            [] {
                return plugin::Problem{"a/file/with/a/path/that/needs/memory", Long};
            },
            [](plugin::Problem& problem) { plugin::Report(std::move(problem)); },
            [](plugin::Problem const&) { return ""; }),
    };
}

}  // namespace

Operations PlatformOperations() {
    Operations all;
    for (auto const& list : {TypeOperations, ObjectOperations, LoggingOperations, SystemOperations}) {
        for (Operation& operation : list()) all.push_back(std::move(operation));
    }
    return all;
}

}  // namespace qel::oom

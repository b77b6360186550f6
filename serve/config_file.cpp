#include "config_file.hpp"

#include <utility>

#include <boost/filesystem/operations.hpp>

#include "document.hpp"
#include "error.hpp"
#include "qel/logging/logger.hpp"
#include "whole_file.hpp"

namespace qel::serve {
namespace {

logging::Logger const log(logging::Name("qel.serve.ConfigFile"));

// What is too large to be used is told by whoever parses it.
std::string ReadAll(boost::filesystem::path const& file) {
    return host::ReadFile(file.string(), MaximumDocumentSize * 2);
}

}  // namespace

ConfigFile::ConfigFile(boost::filesystem::path const& file)
    : file_(boost::filesystem::absolute(file).lexically_normal()) {}

// The file itself goes with each change, and a lock on it would go with it. Where it is a link, what it points to is
// what is replaced, and whoever comes by another link is kept out as well.
void ConfigFile::Lock() {
    boost::system::error_code ignored;
    auto const target = boost::filesystem::weakly_canonical(file_, ignored);
    std::string const path = (target.empty() ? file_ : target).string() + ".lock";
    bool isMine = false;
    try {
        auto lock = std::make_unique<File const>(path, File::Mode::Update);
        isMine = lock->Lock();
        lock_ = std::move(lock);
    } catch (host::Error const& error) {
        throw host::Error("cannot use '" + file_.string() + "': " + error.what());
    }
    if (!isMine) {
        throw host::Error("another program uses the configuration '" + file_.string() +
                          "': end it first, or give each a file of its own");
    }
    for (auto const& mine : {file_, GetLastGoodPath()}) host::RemoveUnfinished(mine.string());
}

std::optional<std::string> ConfigFile::Read() const {
    boost::system::error_code ignored;
    if (!boost::filesystem::exists(file_, ignored)) return std::nullopt;
    return ReadAll(file_);
}

std::optional<std::string> ConfigFile::ReadLastGood() const {
    try {
        return ReadAll(GetLastGoodPath());
    } catch (host::Error const&) {
        return std::nullopt;
    }
}

void ConfigFile::Save(std::string const& content) const {
    host::ReplaceFile(file_.string(), content);
    try {
        SaveLastGood(content);
    } catch (host::Error const& error) {
        log.Log(logging::Level::Warning, "The last good configuration is not kept: %0%", error.what());
    }
}

void ConfigFile::SaveLastGood(std::string const& content) const {
    host::ReplaceFile(GetLastGoodPath().string(), content);
}

void ConfigFile::KeepBroken() const {
    boost::system::error_code error;
    if (!boost::filesystem::exists(file_, error)) return;
    boost::filesystem::copy_file(file_, GetBrokenPath(), boost::filesystem::copy_options::overwrite_existing, error);
    if (error) {
        throw host::Error("cannot keep '" + file_.string() + "' as '" + GetBrokenPath().string() +
                          "': " + error.message());
    }
}

}  // namespace qel::serve

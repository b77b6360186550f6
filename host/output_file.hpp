#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "qel/system/descriptor.hpp"

namespace qel::host {

/// A file that is written from its beginning, or the standard output when its path is "-".
///
/// Whatever is written reaches the system at once, whole or not at all: what a failed Write left of its piece is taken
/// off a regular file again. Throws Error with the path and the reason.
class OutputFile {
public:
    /// Creates the file, or empties it.
    explicit OutputFile(std::string path);

    void Write(std::string_view bytes);
    /// Whether somebody can still read what is written: false for a pipe whose other end is closed. Requires an open
    /// file.
    bool HasReader() const noexcept;
    /// Closes the file; some systems report only here that it could not be stored.
    void Close();

    std::string const& GetName() const noexcept { return name_; }

private:
    void TakeBack(std::size_t count) const noexcept;
    [[noreturn]] void Fail(int error) const;

    std::string name_;
    system::Descriptor descriptor_;
};

}  // namespace qel::host

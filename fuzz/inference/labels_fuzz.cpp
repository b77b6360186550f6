// A model's "labels.txt" from anywhere, against a reader that decodes every character.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include "check.hpp"
#include "qel/inference/inference_error.hpp"
#include "qel/inference/load_labels.hpp"
#include "reference/labels.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static int const file = memfd_create("labels", 0);
    qel::fuzz::Check(ftruncate(file, 0) == 0 && pwrite(file, data, size, 0) == static_cast<ssize_t>(size),
                     "the file cannot be written");
    std::optional<std::vector<std::string>> labels;
    try {
        labels = qel::inference::LoadLabels("/proc/self/fd/" + std::to_string(file));
    } catch (qel::inference::InferenceError const&) {
        // Refused, as perhaps by the reference.
    }
    std::string const text(reinterpret_cast<char const*>(data), size);
    qel::fuzz::Check(labels == qel::reference::Labels(text, qel::inference::MaximumLabelSize),
                     "the labels are not those of the reference");
    return 0;
}

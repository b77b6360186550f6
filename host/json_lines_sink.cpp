#include "json_lines_sink.hpp"

#include <utility>

#include "result_line.hpp"

namespace qel::host {

JsonLinesSink::JsonLinesSink(std::string const& path, std::string source) : file_(path), source_(std::move(source)) {}

void JsonLinesSink::Take(AnalysedFrame const& analysed) { file_.Write(MakeResultLine(source_, analysed)); }

}  // namespace qel::host

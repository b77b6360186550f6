#include "qel/logging/sink.hpp"

#include <memory>
#include <utility>

#include "state.hpp"

namespace qel::logging {

type::Binding BindSink(Sink sink) {
    auto const shared = std::make_shared<Sink const>(std::move(sink));
    type::Binding binding([shared] { State::Get().RemoveSink(shared); });
    State::Get().AddSink(shared);
    return binding;
}

}  // namespace qel::logging

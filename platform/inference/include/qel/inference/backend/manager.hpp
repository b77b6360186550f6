#pragma once

#include "qel/inference/export.hpp"

namespace qel::inference::backend {

/// The back ends that run the models of algorithms; a host makes one and hands it to whatever needs models.
///
/// A base to derive from: this one has no back end.
class QEL_INFERENCE_EXPORT Manager {
public:
    Manager();
    Manager(Manager const&) = delete;
    Manager& operator=(Manager const&) = delete;
    virtual ~Manager();
};

}  // namespace qel::inference::backend

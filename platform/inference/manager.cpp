#include "qel/inference/backend/manager.hpp"

namespace qel::inference::backend {

Manager::Manager() = default;

Manager::~Manager() = default;

}  // namespace qel::inference::backend

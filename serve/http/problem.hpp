#pragma once

#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "fault.hpp"
#include "http/response.hpp"

namespace qel::serve::http {

/// Why a request is not answered as it was meant; thrown by handlers, and sent as a problem document (RFC 9457):
/// {"type": "about:blank", "title": "Not Found", "status": 404, "detail": ..., "faults": [{"path", "reason"}]}.
class Problem : public std::runtime_error {
public:
    /// detail: what is wrong and what to do, as one sentence without its full stop.
    Problem(unsigned int status, std::string const& detail, std::vector<Fault> faults = {});

    /// Of the same problem, with one more header.
    Problem& With(std::string name, std::string value);

    unsigned int GetStatus() const noexcept { return status_; }
    std::vector<Fault> const& GetFaults() const noexcept { return faults_; }
    Response ToResponse() const;

private:
    unsigned int status_;
    std::vector<Fault> faults_;
    std::vector<std::pair<std::string, std::string>> headers_;
};

/// The problem document of whatever a handler has thrown: Problem as it is, Refused and usage errors as 422, JSON that
/// is none as 400, a lack of memory as 503, and anything else as 500.
Response ToResponse(std::exception_ptr const& error);

}  // namespace qel::serve::http

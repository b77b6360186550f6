#include "http/problem.hpp"

#include <new>

#include <boost/json.hpp>

#include "error.hpp"
#include "qel/serialize/json_error.hpp"
#include "text.hpp"

namespace qel::serve::http {

Problem::Problem(unsigned int status, std::string const& detail, std::vector<Fault> faults)
    : std::runtime_error(detail), status_(status), faults_(std::move(faults)) {}

Problem& Problem::With(std::string name, std::string value) {
    headers_.emplace_back(std::move(name), std::move(value));
    return *this;
}

Response Problem::ToResponse() const {
    boost::json::object document{{"type", "about:blank"},
                                 {"title", GetReason(status_)},
                                 {"status", status_},
                                 {"detail", host::ToValidUtf8(what())}};
    if (!faults_.empty()) {
        boost::json::array& faults = document["faults"].emplace_array();
        for (Fault const& fault : faults_) {
            faults.push_back({{"path", host::ToValidUtf8(fault.path)}, {"reason", host::ToValidUtf8(fault.reason)}});
        }
    }
    Response response = MakeJson(document, status_);
    response.contentType = "application/problem+json";
    response.headers = headers_;
    return response;
}

Response ToResponse(std::exception_ptr const& error) {
    try {
        std::rethrow_exception(error);
    } catch (Problem const& problem) {
        return problem.ToResponse();
    } catch (Refused const& refused) {
        return Problem(422, refused.what(), refused.GetFaults()).ToResponse();
    } catch (serialize::JsonError const& wrong) {
        return Problem(400, std::string("the body is not the JSON it should be: ") + wrong.what()).ToResponse();
    } catch (host::UsageError const& wrong) {
        return Problem(422, wrong.what()).ToResponse();
    } catch (std::bad_alloc const&) {
        return Problem(503, "there is not enough memory for this just now").With("Retry-After", "5").ToResponse();
    } catch (std::exception const& failed) {
        return Problem(500, failed.what()).ToResponse();
    } catch (...) {
        return Problem(500, "something failed without a reason").ToResponse();
    }
}

}  // namespace qel::serve::http

#pragma once

#include <string>
#include <string_view>

#include <boost/json/object.hpp>

#include "api/services.hpp"
#include "http/problem.hpp"
#include "http/request.hpp"

namespace qel::serve::api {

// Each adds the routes of one thing.
void AddConfigurationRoutes(http::Router& router, Services const& services);
void AddStreamRoutes(http::Router& router, Services const& services);
void AddPictureRoutes(http::Router& router, Services const& services);
void AddEventRoutes(http::Router& router, Services const& services);
void AddCalibrationRoutes(http::Router& router, Services const& services);
void AddInformationRoutes(http::Router& router, Services const& services);
void AddSessionRoutes(http::Router& router, Services const& services);

/// The object that a body holds. Throws Problem 400 for one that holds something else.
boost::json::object ParseObject(std::string const& body);

/// Throws Problem 400 for a query with names other than these.
void RequireQueryAmong(http::Request const& request, std::initializer_list<std::string_view> names);

/// Throws Problem 404 unless there is a stream of the request's {id}; returns that.
std::string const& GetStreamId(http::Request const& request, Services const& services);

/// An answer without a body.
http::Response MakeEmpty();

}  // namespace qel::serve::api

#pragma once

namespace quorvex::service {

// The description of the pages for programs, served at /openapi.json.
extern const char* const kOpenApi;

} // namespace quorvex::service

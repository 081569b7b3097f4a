#pragma once

#include "service/metrics.h"

#include <string>
#include <string_view>
#include <vector>

namespace quorvex::service {

// Text as the content of an element or of a quoted attribute.
std::string Html(std::string_view text);

// Columns for the 60 minutes of an hour, with a table of the same figures for those who do not see it.
std::string HourChart(const std::string& title, const std::vector<Metrics::Minute>& hour,
                      std::uint64_t Metrics::Minute::*value, const char* colour);

std::string TableRow(const char* cell, const std::vector<std::string>& values);

// The whole page around its content.
std::string HtmlPage(const std::string& title, const std::string& content);

} // namespace quorvex::service

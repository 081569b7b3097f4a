#include "service/html.h"

#include <algorithm>

namespace quorvex::service {
namespace {

constexpr std::string_view kStyle = R"(
:root { color-scheme: light dark; --line: #8886; --quiet: #667; }
@media (prefers-color-scheme: dark) { :root { --quiet: #aab; } }
body { font: 16px/1.5 system-ui, sans-serif; max-width: 60rem; margin: 0 auto; padding: 1rem 1.25rem 3rem; }
h1 { font-size: 1.5rem; margin: 0 0 .25rem; } h2 { font-size: 1.1rem; margin: 2rem 0 .5rem; }
.state { display: inline-block; padding: 0 .6em; border-radius: 1em; color: #fff; background: #1b7f4b; }
.state.bad { background: #b3261e; }
table { border-collapse: collapse; width: 100%; } th, td { text-align: left; padding: .3rem .75rem .3rem 0;
 border-bottom: 1px solid var(--line); } td.number, th.number { text-align: right; }
form { display: flex; flex-wrap: wrap; gap: .75rem; align-items: end; }
label { display: grid; gap: .2rem; } input, button { font: inherit; padding: .35rem .6rem; }
.charts { display: flex; flex-wrap: wrap; gap: 1.5rem; } figure { margin: 0; flex: 1 1 20rem; }
figcaption, .quiet { color: var(--quiet); } svg { width: 100%; height: 6rem; display: block; }
details { margin-top: .25rem; } ul { padding-left: 1.2rem; } .error { color: #b3261e; font-weight: 600; }
@media (prefers-color-scheme: dark) { .error { color: #ff8a80; } }
)";

} // namespace

std::string Html(std::string_view text) {
    std::string html;
    for (const char c : text) {
        switch (c) {
        case '&':
            html += "&amp;";
            break;
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '"':
            html += "&quot;";
            break;
        case '\'':
            html += "&#39;";
            break;
        default:
            html.push_back(c);
        }
    }
    return html;
}

std::string TableRow(const char* cell, const std::vector<std::string>& values) {
    const std::string name = cell;
    std::string row = "<tr>";
    for (const std::string& value : values) row += "<" + name + ">" + Html(value) + "</" + name + ">";
    return row + "</tr>\n";
}

std::string HourChart(const std::string& title, const std::vector<Metrics::Minute>& hour,
                      std::uint64_t Metrics::Minute::*value, const char* colour) {
    std::uint64_t most = 0;
    std::uint64_t sum = 0;
    for (const Metrics::Minute& minute : hour) {
        most = std::max(most, minute.*value);
        sum += minute.*value;
    }
    const std::string caption =
        title + " in the last hour: " + std::to_string(sum) + ", at most " + std::to_string(most) + " a minute";
    std::string bars;
    std::string rows;
    for (std::size_t i = 0; i < hour.size(); ++i) {
        const std::uint64_t count = hour[i].*value;
        if (count == 0) continue;
        const std::uint64_t height = std::max<std::uint64_t>(2, count * 100 / most);
        bars += "<rect x=\"" + std::to_string(i * 10) + "\" y=\"" + std::to_string(100 - height) +
                "\" width=\"8\" height=\"" + std::to_string(height) + "\"/>";
        rows += TableRow("td", {std::to_string(hour.size() - 1 - i), std::to_string(count)});
    }
    std::string figure = "<figure><figcaption>" + Html(caption) + "</figcaption>\n<svg role=\"img\" aria-label=\"" +
                         Html(caption) + "\" viewBox=\"0 0 600 101\" preserveAspectRatio=\"none\" fill=\"" + colour +
                         "\"><path d=\"M0 100.5h600\" stroke=\"#888\" fill=\"none\"/>" + bars + "</svg>\n";
    if (!rows.empty()) {
        figure += "<details><summary>Figures</summary><table>" + TableRow("th", {"Minutes ago", title}) + rows +
                  "</table></details>";
    }
    return figure + "</figure>\n";
}

std::string HtmlPage(const std::string& title, const std::string& content) {
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           Html(title) + "</title>\n<style>" + std::string(kStyle) + "</style>\n</head>\n<body>\n" + content +
           "</body>\n</html>\n";
}

} // namespace quorvex::service

#include "service/service.h"

#include "support/files.h"

#include <httplib.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace quorvex::service {
namespace {

using Mode = TestControl::Mode;

void Remove(std::string& body, const std::string& element) {
    const std::size_t start = body.find("<" + element + ">");
    const std::size_t end = body.find("</" + element + ">");
    if (start != std::string::npos && end != std::string::npos) body.erase(start, end + element.size() + 3 - start);
}

// Promises a length and sends other bytes than that many; the connection ends with them.
void SendUnder(std::size_t promised, std::string body, const std::string& type, httplib::Response& response) {
    response.set_header("Connection", "close");
    response.set_content_provider(promised, type,
                                  [body = std::move(body)](std::size_t, std::size_t, httplib::DataSink& sink) {
                                      sink.write(body.data(), body.size());
                                      return false;
                                  });
}

} // namespace

void Service::Misbehave(TestControl::Order order, PageAnswer answer, httplib::Response& response) {
    if (answer.file) answer.body = support::ReadFileBytes(support::FromPath(*answer.file));
    response.status = answer.status;
    std::string& body = answer.body;
    const std::size_t size = body.size();
    switch (order.mode) {
    case Mode::Never:
        order.time = {};
        control_.Wait(order);
        response.status = 503;
        return;
    case Mode::Slow:
        control_.Wait(order);
        break;
    case Mode::Dribble:
        response.set_content_provider(size, answer.contentType,
                                      [this, order, body](std::size_t offset, std::size_t, httplib::DataSink& sink) {
                                          if (order.time.count() > 0 && !control_.Wait(order)) return false;
                                          return sink.write(body.data() + offset, 1);
                                      });
        return;
    case Mode::Cut:
        return SendUnder(size, body.substr(0, size / 2), answer.contentType, response);
    case Mode::Longer:
        return SendUnder(size + 1000, body, answer.contentType, response);
    case Mode::Shorter:
        return SendUnder(size / 2, body, answer.contentType, response);
    case Mode::NoLength:
        response.set_header("Connection", "close");
        response.set_content_provider(answer.contentType, [body](std::size_t, httplib::DataSink& sink) {
            sink.write(body.data(), body.size());
            return false; // ends the connection
        });
        return;
    case Mode::ErrorPage:
        response.status = 500;
        response.set_content("<html><body><h1>Server Error</h1></body></html>\n", "text/html; charset=utf-8");
        return;
    case Mode::NoConfirm:
        Remove(body, "confirm");
        Remove(body, "Confirm");
        break;
    case Mode::Empty:
        body.clear();
        break;
    case Mode::None:
        break;
    }
    response.set_content(body, answer.contentType);
}

} // namespace quorvex::service

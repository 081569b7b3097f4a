#include "service/misbehave.h"

#include <utility>

namespace quorvex::service {
namespace {

using Mode = TestControl::Mode;

void Remove(std::string& body, const std::string& element) {
    const std::size_t start = body.find("<" + element + ">");
    const std::size_t end = body.find("</" + element + ">");
    if (start != std::string::npos && end != std::string::npos) body.erase(start, end + element.size() + 3 - start);
}

} // namespace

http::Response Misbehaved(TestControl& control, TestControl::Order order, http::Response response) {
    std::string& body = response.body;
    if (response.file) {
        const http::FilePart part = *std::exchange(response.file, std::nullopt);
        body = part.file->Read(part.offset, static_cast<std::size_t>(part.length));
    }
    const std::size_t size = body.size();
    const auto promise = [&response](std::optional<std::uint64_t> length) {
        response.distortion.emplace();
        response.distortion->promisedLength = length;
    };
    switch (order.mode) {
    case Mode::Never:
        order.time = {};
        control.Wait(order);
        response.status = 503;
        body.clear();
        break;
    case Mode::Slow:
        control.Wait(order);
        break;
    case Mode::Dribble:
        promise(size);
        response.distortion->byteByByte = true;
        response.distortion->pause = order.time;
        response.distortion->goOn = [&control, order] { return control.Stands(order); };
        break;
    case Mode::Cut:
        promise(size);
        body.resize(size / 2);
        break;
    case Mode::Longer:
        promise(size + 1000);
        break;
    case Mode::Shorter:
        promise(size / 2);
        break;
    case Mode::NoLength:
        promise(std::nullopt);
        break;
    case Mode::ErrorPage:
        response.status = 500;
        response.contentType = "text/html; charset=utf-8";
        body = "<html><body><h1>Server Error</h1></body></html>\n";
        break;
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
    return response;
}

} // namespace quorvex::service

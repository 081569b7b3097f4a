#include "service/http/connection.h"

#include "service/http/head.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>

#include <array>
#include <utility>

namespace quorvex::service::http {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using ErrorCode = boost::system::error_code;
using TlsStream = asio::ssl::stream<tcp::socket>;

constexpr std::size_t kReadBytes = 4096;
constexpr std::size_t kFilePieceBytes = 128 * 1024;
constexpr std::chrono::seconds kLinger(2); // for a client that still sends when its request was refused
constexpr auto kNever = Clock::time_point::max();

template <typename Stream>
class Connection final : public AnyConnection, public std::enable_shared_from_this<Connection<Stream>> {
  public:
    Connection(Stream stream, std::string client, bool counted, Loop& loop, std::shared_ptr<Shared> shared)
        : stream_(std::move(stream)), client_(std::move(client)), counted_(counted), loop_(loop),
          shared_(std::move(shared)), timer_(loop.context) {
        loop_.connections.insert(this);
        ++shared_->counts.open;
    }

    ~Connection() override {
        loop_.connections.erase(this);
        --shared_->counts.open;
        if (counted_) shared_->clients.Leave(client_);
    }

    void Start() {
        if constexpr (kSecure) {
            deadline_ = Clock::now() + shared_->limits.header;
            stream_.async_handshake(asio::ssl::stream_base::server, [self = this->shared_from_this()](ErrorCode error) {
                if (error) return self->Close();
                self->WaitForRequest();
            });
        } else {
            WaitForRequest();
        }
    }

    void Close() override {
        ErrorCode ignored;
        Socket().close(ignored);
        timer_.cancel();
    }

    void CloseIfLate(Clock::time_point now) override {
        if (now < deadline_) return;
        deadline_ = kNever;
        if (!idle_) ++shared_->counts.timedOut;
        if (!readingHead_) return Close();
        // The reading under way ends first, then says so.
        late_ = true;
        ErrorCode ignored;
        Socket().cancel(ignored);
    }

    void CloseIfIdle() override {
        if (idle_) Close();
    }

  private:
    static constexpr bool kSecure = std::is_same_v<Stream, TlsStream>;

    tcp::socket& Socket() {
        if constexpr (kSecure) {
            return stream_.next_layer();
        } else {
            return stream_;
        }
    }

    void WaitForRequest() {
        head_.emplace(shared_->limits);
        idle_ = true;
        deadline_ = Clock::now() + shared_->limits.idle;
        if (buffer_.size() > 0) return ReadHead();
        if (shared_->draining) return Close();
        ReadMore();
    }

    void ReadMore() {
        stream_.async_read_some(buffer_.prepare(kReadBytes),
                                [self = this->shared_from_this()](ErrorCode error, std::size_t count) {
                                    if (error && self->late_) return self->Reject(408);
                                    if (error) return self->Close();
                                    self->buffer_.commit(count);
                                    self->ReadHead();
                                });
    }

    void ReadHead() {
        if (idle_) deadline_ = Clock::now() + shared_->limits.header;
        idle_ = false;
        readingHead_ = true;
        const auto bytes = buffer_.data();
        const Head::Progress progress = head_->Put({static_cast<const char*>(bytes.data()), bytes.size()});
        buffer_.consume(progress.used);
        if (progress.rejection != 0) return Reject(progress.rejection);
        if (!progress.done) return ReadMore();
        readingHead_ = false;
        deadline_ = kNever;
        Ask();
    }

    void Ask() {
        Request request = head_->TakeRequest();
        request.client = client_;
        request.secure = kSecure;
        withBody_ = request.method != "HEAD";
        keep_ = head_->KeepsAlive();
        shared_->handlers.request(std::move(request), [self = this->shared_from_this()](Response response) {
            asio::post(self->loop_.context,
                       [self, response = std::move(response)]() mutable { self->Answer(std::move(response)); });
        });
    }

    void Reject(int status) {
        readingHead_ = false;
        keep_ = false;
        withBody_ = true;
        shared_->handlers.rejected(client_, status);
        Response response;
        response.status = status;
        response.contentType = "text/plain; charset=utf-8";
        response.body = std::string(Phrase(status)) + "\n";
        if (status == 405) response.headers.emplace_back("Allow", "GET, HEAD");
        Answer(std::move(response));
    }

    void Answer(Response response) {
        response_ = std::move(response);
        const std::uint64_t length = response_.file ? response_.file->length : response_.body.size();
        keep_ = keep_ && !shared_->draining && !response_.distortion;
        text_ = HeadText(response_, response_.distortion ? response_.distortion->promisedLength : length, keep_);
        deadline_ = Clock::now() + shared_->limits.write;
        const auto then = [self = this->shared_from_this()](ErrorCode error, std::size_t) {
            if (error) return self->Close();
            self->SendRest();
        };
        if (!withBody_) response_.body.clear(), response_.file.reset();
        if (response_.file || (response_.distortion && response_.distortion->byteByByte)) {
            asio::async_write(stream_, asio::buffer(text_), then);
        } else if (kSecure || response_.body.size() < 16 * 1024) {
            text_ += response_.body;
            response_.body.clear();
            asio::async_write(stream_, asio::buffer(text_), then);
        } else {
            const std::array<asio::const_buffer, 2> both = {asio::buffer(text_), asio::buffer(response_.body)};
            asio::async_write(stream_, both, then);
        }
    }

    // After the head, and after each piece.
    void SendRest() {
        deadline_ = Clock::now() + shared_->limits.write;
        if (response_.file) return SendFilePiece();
        if (response_.distortion && response_.distortion->byteByByte) return SendByte();
        Finish();
    }

    void SendFilePiece() {
        FilePart& part = *response_.file;
        if (part.length == 0) return Finish();
        text_ = part.file->Read(part.offset,
                                static_cast<std::size_t>(std::min<std::uint64_t>(part.length, kFilePieceBytes)));
        if (text_.empty()) return Close(); // the file became shorter: the promised length shows it
        part.offset += text_.size();
        part.length -= text_.size();
        asio::async_write(stream_, asio::buffer(text_),
                          [self = this->shared_from_this()](ErrorCode error, std::size_t) {
                              if (error) return self->Close();
                              self->SendRest();
                          });
    }

    void SendByte() {
        deadline_ = kNever;
        const Distortion& distortion = *response_.distortion;
        if (sent_ == response_.body.size()) return Finish();
        if (distortion.goOn && !distortion.goOn()) return Close();
        timer_.expires_after(distortion.pause);
        timer_.async_wait([self = this->shared_from_this()](ErrorCode error) {
            if (error) return;
            asio::async_write(self->stream_, asio::buffer(self->response_.body.data() + self->sent_++, 1),
                              [self](ErrorCode failed, std::size_t) {
                                  if (failed) return self->Close();
                                  self->SendByte();
                              });
        });
    }

    void Finish() {
        response_ = {};
        if (keep_) return WaitForRequest();
        deadline_ = Clock::now() + kLinger;
        if constexpr (kSecure) {
            stream_.async_shutdown([self = this->shared_from_this()](ErrorCode) { self->Close(); });
        } else {
            // Closing while bytes of the client lie unread would reset the connection under the answer.
            ErrorCode ignored;
            stream_.shutdown(tcp::socket::shutdown_send, ignored);
            if (ignored) return Close();
            Discard();
        }
    }

    void Discard() {
        buffer_.consume(buffer_.size());
        stream_.async_read_some(buffer_.prepare(kReadBytes),
                                [self = this->shared_from_this()](ErrorCode error, std::size_t) {
                                    if (error) return self->Close();
                                    self->Discard();
                                });
    }

    Stream stream_;
    std::string client_;
    bool counted_;
    Loop& loop_;
    std::shared_ptr<Shared> shared_;
    asio::steady_timer timer_;
    boost::beast::flat_buffer buffer_;
    std::optional<Head> head_;
    Clock::time_point deadline_ = kNever;
    bool idle_ = false;
    bool readingHead_ = false;
    bool late_ = false;
    bool withBody_ = true;
    bool keep_ = false;
    std::string text_;
    Response response_;
    std::size_t sent_ = 0;
};

template <typename Stream>
void Begin(Stream stream, std::string client, bool counted, Loop& loop, std::shared_ptr<Shared> shared) {
    std::make_shared<Connection<Stream>>(std::move(stream), std::move(client), counted, loop, std::move(shared))
        ->Start();
}

} // namespace

bool ClientCounts::Enter(const std::string& client, std::size_t limit) {
    const std::lock_guard lock(mutex_);
    std::size_t& count = counts_[client];
    if (count >= limit) return false;
    ++count;
    return true;
}

void ClientCounts::Leave(const std::string& client) {
    const std::lock_guard lock(mutex_);
    const auto found = counts_.find(client);
    if (found != counts_.end() && --found->second == 0) counts_.erase(found);
}

void Serve(tcp::socket socket, std::string client, bool counted, Loop& loop, std::shared_ptr<Shared> shared,
           std::shared_ptr<asio::ssl::context> tls) {
    if (tls) {
        Begin(TlsStream(std::move(socket), *tls), std::move(client), counted, loop, std::move(shared));
    } else {
        Begin(std::move(socket), std::move(client), counted, loop, std::move(shared));
    }
}

} // namespace quorvex::service::http

// SPDX-License-Identifier: MIT
#include "platform/linux/sway/ipc.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>

#include <glib-unix.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/linux/session/glib_ref.h"

namespace lexwend::platform {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kAnswerTime{1000};
constexpr std::chrono::milliseconds kAnswerTimeWhileSilent{100};
constexpr std::string_view kMagic = "i3-ipc";
// The magic, the length of the payload and the type of the message.
constexpr std::size_t kHeadSize = 14;
// Far more than the tree of a thousand windows.
constexpr std::uint32_t kMaxPayload = 64U * 1024 * 1024;

constexpr std::uint32_t kRunCommand = 0;
constexpr std::uint32_t kSubscribe = 2;
constexpr std::uint32_t kGetTree = 4;
constexpr std::uint32_t kGetVersion = 7;
constexpr std::uint32_t kSendTick = 10;
constexpr std::uint32_t kGetInputs = 100;
constexpr std::uint32_t kWorkspaceEvent = 0x80000000;
constexpr std::uint32_t kBindingEvent = 0x80000005;
constexpr std::uint32_t kTickEvent = 0x80000007;
constexpr std::uint32_t kInputEvent = 0x80000015;

struct Message {
  std::uint32_t type;
  std::string payload;
};

JsonRef parsed(const std::string& text) {
  return JsonRef(json_from_string(text.c_str(), nullptr));
}

bool isSuccess(JsonObject* object) {
  return object != nullptr && json_object_get_boolean_member_with_default(object, "success", FALSE) != FALSE;
}

}  // namespace

/// One connection: messages out, messages in.
class SwayIpc::Stream {
 public:
  static std::unique_ptr<Stream> open() {
    const char* path = std::getenv("SWAYSOCK");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path == nullptr || std::strlen(path) >= sizeof address.sun_path) return nullptr;
    std::memcpy(address.sun_path, path, std::strlen(path) + 1);
    auto stream = std::make_unique<Stream>(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const bool connects =
        connect(stream->socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    return connects ? std::move(stream) : nullptr;
  }
  explicit Stream(int socket) : socket_(socket) {}
  ~Stream() {
    if (socket_ >= 0) close(socket_);
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  int descriptor() const { return socket_; }

  bool send(std::uint32_t type, std::string_view payload) {
    const std::uint32_t numbers[] = {static_cast<std::uint32_t>(payload.size()), type};
    std::string message(kMagic);
    message.append(reinterpret_cast<const char*>(numbers), sizeof numbers).append(payload);
    const Clock::time_point end = Clock::now() + kAnswerTime;
    std::size_t sent = 0;
    while (sent < message.size()) {
      const ssize_t count = ::send(socket_, message.data() + sent, message.size() - sent, MSG_NOSIGNAL);
      if (count > 0) sent += static_cast<std::size_t>(count);
      if (count < 0 && errno != EINTR && (errno != EAGAIN || !wait(POLLOUT, end))) return false;
    }
    return true;
  }

  /// The next message, waiting for it until the time.
  std::optional<Message> receive(Clock::time_point end) {
    for (;;) {
      if (auto message = take()) return message;
      char bytes[65536];
      const ssize_t count = recv(socket_, bytes, sizeof bytes, 0);
      if (count > 0) {
        unread_.append(bytes, static_cast<std::size_t>(count));
      } else if (count == 0) {
        isEnded_ = true;
        return std::nullopt;
      } else if (errno != EINTR && (errno != EAGAIN || !wait(POLLIN, end))) {
        return std::nullopt;
      }
    }
  }
  /// Whether the other end has closed it, or has sent what is no message.
  bool isEnded() const { return isEnded_; }

 private:
  bool wait(short events, Clock::time_point end) const {
    const Clock::time_point now = Clock::now();
    if (end <= now) return false;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - now);
    pollfd waited{socket_, events, 0};
    return poll(&waited, 1, static_cast<int>(left.count())) > 0;
  }
  std::optional<Message> take() {
    if (unread_.size() < kHeadSize) return std::nullopt;
    std::uint32_t numbers[2];
    std::memcpy(numbers, unread_.data() + kMagic.size(), sizeof numbers);
    if (unread_.compare(0, kMagic.size(), kMagic) != 0 || numbers[0] > kMaxPayload) {
      isEnded_ = true;
      unread_.clear();
      return std::nullopt;
    }
    if (unread_.size() < kHeadSize + numbers[0]) return std::nullopt;
    Message message{numbers[1], unread_.substr(kHeadSize, numbers[0])};
    unread_.erase(0, kHeadSize + numbers[0]);
    return message;
  }

  int socket_;
  std::string unread_;
  bool isEnded_ = false;
};

std::shared_ptr<SwayIpc> SwayIpc::open() {
  auto questions = Stream::open();
  auto events = Stream::open();
  if (!questions || !events) return nullptr;
  std::shared_ptr<SwayIpc> sway(new SwayIpc(std::move(questions), std::move(events)));
  return sway->ask(kGetVersion, "") != nullptr && sway->events_ != nullptr ? sway : nullptr;
}

SwayIpc::SwayIpc(std::unique_ptr<Stream> questions, std::unique_ptr<Stream> events)
    : questions_(std::move(questions)), events_(std::move(events)) {
  const auto answer = events_->send(kSubscribe, R"(["binding","input","tick","workspace"])")
                          ? events_->receive(Clock::now() + kAnswerTime)
                          : std::nullopt;
  const JsonRef node = answer ? parsed(answer->payload) : nullptr;
  if (!node || !JSON_NODE_HOLDS_OBJECT(node.get()) || !isSuccess(json_node_get_object(node.get()))) {
    events_.reset();
    return;
  }
  source_ = g_unix_fd_add(
      events_->descriptor(), static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR),
      [](gint, GIOCondition, gpointer self) -> gboolean {
        auto& sway = *static_cast<SwayIpc*>(self);
        sway.handleEvents();
        if (sway.events_ && !sway.events_->isEnded()) return G_SOURCE_CONTINUE;
        sway.source_ = 0;
        return G_SOURCE_REMOVE;
      },
      this);
}

SwayIpc::~SwayIpc() {
  if (source_ != 0) g_source_remove(source_);
}

JsonRef SwayIpc::ask(std::uint32_t type, std::string_view payload) {
  // On a new connection no late answer is taken for this one.
  const bool wasSilent = !questions_;
  if (wasSilent) questions_ = Stream::open();
  if (!questions_) return nullptr;
  const Clock::time_point end = Clock::now() + (wasSilent ? kAnswerTimeWhileSilent : kAnswerTime);
  auto answer = questions_->send(type, payload) ? questions_->receive(end) : std::nullopt;
  // Nobody waits for the answer of a tick.
  while (answer && answer->type != type) answer = questions_->receive(end);
  if (!answer) {
    questions_.reset();
    return nullptr;
  }
  return parsed(answer->payload);
}

bool SwayIpc::run(const std::string& command) {
  const JsonRef answer = ask(kRunCommand, command);
  if (!answer || !JSON_NODE_HOLDS_ARRAY(answer.get())) return false;
  JsonArray* results = json_node_get_array(answer.get());
  bool all = json_array_get_length(results) > 0;
  for (guint i = 0; i < json_array_get_length(results); ++i) {
    all = all && isSuccess(json_array_get_object_element(results, i));
  }
  return all;
}

JsonRef SwayIpc::inputs() {
  JsonRef answer = ask(kGetInputs, "");
  return answer && JSON_NODE_HOLDS_ARRAY(answer.get()) ? std::move(answer) : nullptr;
}

JsonRef SwayIpc::tree() {
  JsonRef answer = ask(kGetTree, "");
  return answer && JSON_NODE_HOLDS_OBJECT(answer.get()) ? std::move(answer) : nullptr;
}

void SwayIpc::sendTick(std::string_view text) {
  // Not by the connection of the questions, which may be closed before sway has read it.
  if (events_) events_->send(kSendTick, text);
}

Registration SwayIpc::observe(std::function<void(const SwayEvent&)> handler) {
  return handlers_.add(std::move(handler));
}

void SwayIpc::handleEvents() {
  while (const auto message = events_ ? events_->receive(Clock::time_point::min()) : std::nullopt) {
    const JsonRef node = parsed(message->payload);
    if (!node || !JSON_NODE_HOLDS_OBJECT(node.get())) continue;
    JsonObject* details = json_node_get_object(node.get());
    std::optional<SwayEventKind> kind;
    if (message->type == kBindingEvent) kind = SwayEventKind::binding;
    if (message->type == kInputEvent) kind = SwayEventKind::input;
    if (message->type == kTickEvent) kind = SwayEventKind::tick;
    if (message->type == kWorkspaceEvent && textOf(details, "change") == "reload") {
      kind = SwayEventKind::reload;
    }
    if (!kind) continue;
    for (const auto& handler : handlers_.all()) (*handler)({*kind, details});
  }
}

std::string textOf(JsonObject* object, const char* member) {
  const char* text = json_object_get_string_member_with_default(object, member, "");
  return text != nullptr ? text : "";
}

}  // namespace lexwend::platform

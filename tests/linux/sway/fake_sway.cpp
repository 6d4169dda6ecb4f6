// SPDX-License-Identifier: MIT
#include "tests/linux/sway/fake_sway.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace lexwend::platform {
namespace {

constexpr std::uint32_t kRunCommand = 0;
constexpr std::uint32_t kSubscribe = 2;
constexpr std::uint32_t kSendTick = 10;
constexpr std::size_t kHeadSize = 14;

void send(int client, std::uint32_t type, const std::string& payload) {
  const std::uint32_t numbers[] = {static_cast<std::uint32_t>(payload.size()), type};
  std::string message = "i3-ipc";
  message.append(reinterpret_cast<const char*>(numbers), sizeof numbers).append(payload);
  ::send(client, message.data(), message.size(), MSG_NOSIGNAL);
}

}  // namespace

FakeSway::FakeSway() : listener_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, folder_.file("sway").c_str(), sizeof address.sun_path - 1);
  const bool listens = bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                       listen(listener_, 8) == 0 && pipe(stop_) == 0;
  if (!listens) throw std::runtime_error("no socket");
  thread_ = std::thread(&FakeSway::run, this);
}

FakeSway::~FakeSway() {
  close(stop_[1]);
  thread_.join();
  close(stop_[0]);
  close(listener_);
  for (const int client : clients_) close(client);
}

void FakeSway::answer(std::uint32_t type, std::string payload) {
  const std::lock_guard lock(mutex_);
  answers_[type] = std::move(payload);
}

void FakeSway::fallSilent() {
  const std::lock_guard lock(mutex_);
  isSilent_ = true;
}

void FakeSway::speakAgain() {
  const std::lock_guard lock(mutex_);
  isSilent_ = false;
}

void FakeSway::tell(std::uint32_t type, const std::string& payload) {
  const std::lock_guard lock(mutex_);
  for (const int subscriber : subscribers_) send(subscriber, type, payload);
}

std::vector<std::string> FakeSway::commands() {
  const std::lock_guard lock(mutex_);
  return commands_;
}

std::vector<std::string> FakeSway::ticks() {
  const std::lock_guard lock(mutex_);
  return ticks_;
}

void FakeSway::run() {
  for (;;) {
    std::vector<pollfd> waited = {{stop_[0], POLLIN, 0}, {listener_, POLLIN, 0}};
    for (const int client : clients_) waited.push_back({client, POLLIN, 0});
    poll(waited.data(), waited.size(), -1);
    if (waited[0].revents != 0) return;
    for (std::size_t i = 2; i < waited.size(); ++i) {
      if (waited[i].revents != 0) handle(waited[i].fd);
    }
    if (waited[1].revents != 0) clients_.push_back(accept(listener_, nullptr, nullptr));
  }
}

void FakeSway::handle(int client) {
  char head[kHeadSize];
  if (recv(client, head, sizeof head, MSG_WAITALL) != static_cast<ssize_t>(sizeof head)) {
    const std::lock_guard lock(mutex_);
    std::erase(subscribers_, client);
    std::erase(clients_, client);
    close(client);
    return;
  }
  std::uint32_t numbers[2];
  std::memcpy(numbers, head + kHeadSize - sizeof numbers, sizeof numbers);
  std::string payload(numbers[0], '\0');
  if (!payload.empty()) recv(client, payload.data(), payload.size(), MSG_WAITALL);
  const std::lock_guard lock(mutex_);
  if (numbers[1] == kRunCommand) commands_.push_back(payload);
  if (numbers[1] == kSendTick) ticks_.push_back(payload);
  if (numbers[1] == kSubscribe) subscribers_.push_back(client);
  if (isSilent_) return;
  const auto known = answers_.find(numbers[1]);
  const std::string usual = numbers[1] == kRunCommand ? R"([{"success":true}])" : R"({"success":true})";
  send(client, numbers[1], known != answers_.end() ? known->second : usual);
}

}  // namespace lexwend::platform

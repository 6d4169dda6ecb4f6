// SPDX-License-Identifier: MIT
#include "platform/linux/clipboard/owner_thread.h"

#include <algorithm>
#include <csignal>
#include <utility>

#include <malloc.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "platform/linux/display/held_up.h"

namespace lexwend::platform {
namespace {

constexpr std::chrono::milliseconds kClearDelay{5};

// At the end of the program, when something may be over without an event.
constexpr std::chrono::milliseconds kLookAgain{50};

// A key event reaches the application with a time that may be a little later than its posting. A person does
// not press the next key so soon.
constexpr std::chrono::milliseconds kKeyEventTolerance{50};

}  // namespace

bool OwnerThread::isAnswerTo(const CopyShortcuts& shortcuts, const Change& change,
                             const XApplication& claimant) {
  return change.owner != XCB_WINDOW_NONE && mayBeTheSame(claimant, shortcuts.application) &&
         change.claimed >= shortcuts.first - kKeyEventTolerance &&
         change.claimed <= shortcuts.last + kKeyEventTolerance;
}

std::unique_ptr<OwnerThread> OwnerThread::open(const OwnerTimes& times, const Selections& selections) {
  std::unique_ptr<OwnerThread> thread(new OwnerThread(times, selections));
  if (!thread->owner_) return nullptr;
  return thread;
}

OwnerThread::OwnerThread(const OwnerTimes& times, const Selections& selections)
    : times_(times), wakeDescriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  owner_ = selections.openOwner([this](const SelectionOwner::Change& change) { noteChange(change); });
  if (!owner_) return;
  // Signals are for the main thread.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  thread_ = std::thread(&OwnerThread::run, this);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

OwnerThread::~OwnerThread() {
  if (thread_.joinable()) {
    post({.kind = CommandKind::stop, .contents = std::move(atEnd_)}, false);
    thread_.join();
  }
  close(wakeDescriptor_);
}

OwnerThread::Change OwnerThread::lastChange() {
  post({.kind = CommandKind::look}, true);
  const std::lock_guard<std::mutex> lock(mutex_);
  return lastChange_;
}

void OwnerThread::pass(ClipboardContents contents) {
  somethingMayWait_ = false;
  post({.kind = CommandKind::pass, .contents = std::move(contents)}, true);
}

void OwnerThread::stay(ClipboardContents contents, std::optional<PlayedShortcut> paste) {
  somethingMayWait_ = true;
  post({.kind = CommandKind::stay, .contents = std::move(contents), .paste = paste}, true);
}

void OwnerThread::clear(std::optional<PlayedShortcut> paste) {
  somethingMayWait_ = true;
  post({.kind = CommandKind::clear, .paste = paste}, true);  // until its time is taken
}

void OwnerThread::settle() {
  if (!somethingMayWait_) return;
  somethingMayWait_ = false;
  post({.kind = CommandKind::settle}, true);
}

std::optional<ClipboardContents> OwnerThread::waiting() {
  post({.kind = CommandKind::askForWaiting}, true);
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::exchange(waiting_, std::nullopt);
}

bool OwnerThread::awaitsFetch(const PlayedShortcut& paste) {
  post({.kind = CommandKind::askForFetch, .paste = paste}, true);
  const std::lock_guard<std::mutex> lock(mutex_);
  return awaitsFetch_;
}

void OwnerThread::putBackAfter(const CopyShortcuts& shortcuts, ClipboardContents contents) {
  post({.kind = CommandKind::putBackAfter, .contents = std::move(contents), .shortcuts = shortcuts}, true);
}

void OwnerThread::post(Command command, bool wait) {
  std::unique_lock<std::mutex> lock(mutex_);
  commands_.push_back(std::move(command));
  const std::uint64_t number = ++postedCommands_;
  const std::uint64_t one = 1;
  if (write(wakeDescriptor_, &one, sizeof one) < 0) {
    // the counter is full: the thread has been woken already
  }
  if (wait) {
    finished_.wait(lock, [&] { return finishedCommands_ >= number; });
  }
}

void OwnerThread::run() {
  for (;;) {
    owner_->handleEvents();
    while (std::optional<Command> command = takeCommand()) {
      if (command->kind == CommandKind::stop) {
        finish(command->contents);
        finishCommand();
        return;
      }
      carryOut(*command);
      finishCommand();
    }
    answerLateCopy();
    // To look for what is due asks the server, and an answer may bring events with it: they are handled
    // first.
    std::optional<Clock::time_point> until;
    do {
      if (deferred_ && isDue()) carryOutDeferred();
      until = nextDue();
    } while (owner_->handleEvents());
    waitForWork(until);
  }
}

std::optional<OwnerThread::Command> OwnerThread::takeCommand() {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (commands_.empty()) return std::nullopt;
  Command command = std::move(commands_.front());
  commands_.pop_front();
  return command;
}

void OwnerThread::carryOut(Command& command) {
  switch (command.kind) {
    case CommandKind::pass:
      deferred_.reset();
      lateCopy_.reset();
      owner_->claimForNow(command.contents, owner_->serverTime());
      passing_ = true;
      passedAt_ = Clock::now();
      break;
    case CommandKind::stay:
      defer(std::move(command.contents), std::chrono::milliseconds(0), command.paste);
      break;
    case CommandKind::clear:
      defer({}, kClearDelay, command.paste);
      break;
    case CommandKind::settle:
      if (deferred_ && !waitsForFetch()) carryOutDeferred();
      break;
    case CommandKind::putBackAfter:
      lateCopy_ = {*command.shortcuts, std::move(command.contents), changeCount(),
                   Clock::now() + times_.lateCopy};
      owner_->serverTime();  // for the comparison of the two clocks
      break;
    case CommandKind::look:
      lookedAt_ = owner_->timeOfLook();  // its answer comes after the notifications
      break;
    case CommandKind::askForFetch: {
      const PlayedShortcut& paste = *command.paste;
      const bool awaits = passing_ && owner_->owns() && paste.time >= passedAt_ &&
                          !owner_->firstFetchBy(paste.application, paste.time);
      const std::lock_guard<std::mutex> lock(mutex_);
      awaitsFetch_ = awaits;
      break;
    }
    case CommandKind::askForWaiting: {
      if (!deferred_ || !owner_->stillOwns()) break;
      const std::lock_guard<std::mutex> lock(mutex_);
      waiting_ = deferred_->contents;
      break;
    }
    case CommandKind::stop:
      break;
  }
}

void OwnerThread::finishCommand() {
  const std::lock_guard<std::mutex> lock(mutex_);
  ++finishedCommands_;
  finished_.notify_all();
}

std::optional<OwnerThread::Clock::time_point> OwnerThread::nextDue() {
  std::optional<Clock::time_point> until;
  if (deferred_) {
    until = deferred_->due;
    if (waitsForFetch()) until = pasteIsOver().value_or(deferred_->paste->time + times_.patience);
    if (deferred_->due > Clock::now()) until = std::min(*until, deferred_->due);
  }
  if (lateCopy_) until = std::min(until.value_or(lateCopy_->until), lateCopy_->until);
  return until;
}

/// Sleeps until an event or a command comes or the time has come.
void OwnerThread::waitForWork(std::optional<Clock::time_point> until) {
  owner_->wait(wakeDescriptor_, until);
  std::uint64_t count = 0;
  if (read(wakeDescriptor_, &count, sizeof count) < 0) {
    // an event or the time has woken the thread, no command
  }
}

void OwnerThread::noteChange(const SelectionOwner::Change& change) {
  const std::int64_t number = changeCount_.fetch_add(1) + 1;
  const bool isOwn = owner_ && owner_->isOwnWindow(change.owner);
  const Clock::time_point claimed = owner_ ? owner_->inOwnTime(change.claimed) : Clock::now();
  const std::lock_guard<std::mutex> lock(mutex_);
  lastChange_ = {number, change.owner, isOwn, claimed};
}

/// At once where nothing has to be waited for.
void OwnerThread::defer(ClipboardContents contents, std::chrono::milliseconds atLeast,
                        std::optional<PlayedShortcut> paste) {
  const bool mustWait = owner_->owns() && passing_;
  // The fix before has put back what it had to while this one's paste waits to be fetched.
  if (!paste && deferred_) paste = deferred_->paste;
  if (!mustWait || (paste && paste->time < passedAt_)) paste.reset();
  Clock::time_point due = Clock::now() + atLeast;
  if (mustWait && !paste) due = std::max(due, passedAt_ + times_.fetch);
  if (paste) {
    owner_->watch(paste->window);
    owner_->serveOthers(contents, paste->application);
  }
  const xcb_timestamp_t time = lookedAt_ != XCB_CURRENT_TIME ? lookedAt_ : owner_->timeOfLook();
  deferred_ = Deferred{std::move(contents), time, due, paste, {}};
  if (isDue()) carryOutDeferred();
}

bool OwnerThread::isDue() {
  const Clock::time_point now = Clock::now();
  if (now < deferred_->due) return false;
  if (!deferred_->paste || !owner_->owns()) return true;
  if (owner_->watchedIsGone() || now >= deferred_->paste->time + times_.patience) return true;
  if (now < pasteIsOver().value_or(Clock::time_point::max())) return false;
  if (!isHeldUp(deferred_->paste->process)) return true;
  deferred_->heldUpAt = now;
  return false;
}

/// Nothing as long as the paste has not been fetched.
std::optional<OwnerThread::Clock::time_point> OwnerThread::pasteIsOver() {
  const auto fetched = owner_->firstFetchBy(deferred_->paste->application, deferred_->paste->time);
  if (!fetched) return std::nullopt;
  return std::max(*fetched, deferred_->heldUpAt) + times_.secondFetch;
}

/// By the time of the last look, so that the server ignores it when somebody has copied since.
void OwnerThread::carryOutDeferred() {
  const Deferred deferred = std::move(*deferred_);
  deferred_.reset();
  passing_ = false;
  owner_->claim(deferred.contents, deferred.time);
  malloc_trim(0);  // the replacement has gone, perhaps long after the fix
}

/// The contents are put back each time: both shortcuts of a fix may be answered late.
void OwnerThread::answerLateCopy() {
  if (!lateCopy_) return;
  const Change change = lastChange_;  // only this thread writes it
  const bool isAnswer = change.owner != XCB_WINDOW_NONE && !change.isOwn &&
                        isAnswerTo(lateCopy_->shortcuts, change, owner_->application(change.owner));
  if (isAnswer) {
    passing_ = false;
    owner_->claim(lateCopy_->contents, owner_->serverTime());
  }
  const bool isSomebodyElses = !isAnswer && !change.isOwn && change.number > lateCopy_->changes;
  if (isSomebodyElses || Clock::now() >= lateCopy_->until) lateCopy_.reset();
}

void OwnerThread::serveUntil(Clock::time_point end, const std::function<bool()>& enough) {
  owner_->handleEvents();
  while (owner_->connected() && Clock::now() < end && !enough()) {
    owner_->wait(-1, std::min(end, Clock::now() + kLookAgain));
    owner_->handleEvents();
  }
}

void OwnerThread::finish(const ClipboardContents& instead) {
  if (waitsForFetch()) serveUntil(Clock::now() + times_.lastServe, [this] { return isDue(); });
  if (deferred_) carryOutDeferred();
  if (owner_->stillOwns() && passing_ && !instead.empty()) {
    passing_ = false;
    owner_->claim(instead, owner_->serverTime());
  }
  if (!owner_->stillOwns() || passing_) return;
  const Clock::time_point now = Clock::now();
  if (owner_->handOver(now + times_.handOver)) return;
  serveUntil(now + times_.lastServe,
             [&] { return !owner_->owns() || owner_->wasFetched(now + times_.watchers); });
  // Waits for the display: it may drop an answer that it has not read when the connection closes.
  owner_->stillOwns();
}

}  // namespace lexwend::platform

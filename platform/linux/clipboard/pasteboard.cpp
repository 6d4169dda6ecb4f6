// SPDX-License-Identifier: MIT
#include "platform/linux/clipboard/pasteboard.h"

#include <algorithm>

#include <glib.h>
#include <malloc.h>

namespace lexwend::platform {
namespace {

// After this time an application counts as one that does not paste.
constexpr std::chrono::seconds kPasteTime{2};

// Klipper fills an empty clipboard within a tenth of a second.
constexpr std::chrono::seconds kKeptEmpty{2};
constexpr guint kLookMilliseconds = 50;

/// An item that has been read already.
class ReadItem : public PasteboardItem {
 public:
  explicit ReadItem(ClipboardContents contents) : contents_(std::move(contents)) {}

  std::vector<std::string> types() override {
    std::vector<std::string> types;
    for (const ClipboardTarget& target : contents_) types.push_back(encodedTypeName(target));
    return types;
  }

  std::optional<Bytes> data(const std::string& type) override {
    const auto found = std::find_if(contents_.begin(), contents_.end(), [&](const ClipboardTarget& target) {
      return encodedTypeName(target) == type;
    });
    return found == contents_.end() ? std::nullopt : std::optional(found->bytes);
  }

 private:
  ClipboardContents contents_;
};

/// GLib takes a NUL for the end of a text.
bool isWellFormedUtf8(std::string_view text) {
  while (!text.empty()) {
    const char* end = nullptr;
    if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), &end) != FALSE) return true;
    if (*end != '\0') return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()) + 1);
  }
  return true;
}

}  // namespace

LinuxPasteboard::LinuxPasteboard(PasteboardBudget budget, Needs needs, const OwnerTimes& times,
                                 const Selections& selections)
    : budget_(budget), needs_(std::move(needs)), times_(times), selections_(selections) {
  connect();
}

bool LinuxPasteboard::connect() {
  if (reader_) return true;
  auto owner = OwnerThread::open(times_, selections_);
  auto reader = owner ? selections_.openReader("CLIPBOARD") : nullptr;
  if (!reader) return false;
  owner_ = std::move(owner);
  reader_ = std::move(reader);
  return true;
}

LinuxPasteboard::~LinuxPasteboard() {
  if (forgetting_ != 0) g_source_remove(forgetting_);
  stopKeepingEmpty();
  if (owner_ && lastRead_) owner_->replacePassingAtEnd(std::move(*lastRead_));
}

std::optional<std::vector<std::unique_ptr<PasteboardItem>>> LinuxPasteboard::items() {
  if (!connect()) {
    canBeGivenBack_ = false;
    return std::nullopt;
  }
  owner_->settle();
  isPutBack_ = false;
  earlierIsOver_ = isCopiedSinceThePaste();
  if (keepingEmpty_ != 0) emptyAgain();
  stopKeepingEmpty();
  readAt_ = Clock::now();
  stringTimeLeft_ = kStringTime;
  if (auto waiting = owner_->waiting()) {
    // The restore of the fix before waits for its paste to be fetched, and not every display can give this
    // program other contents than the one that pastes.
    lastRead_ = std::move(waiting);
    canBeGivenBack_ = true;
    typesLeftOut_.clear();
    forgetSoon();
  } else if (!lastRead_ || passingIsOver_ || !holdsPassingText()) {
    ClipboardReader::Result result =
        reader_->readAll({budget_.time, budget_.silence, budget_.bytes, budget_.picture});
    canBeGivenBack_ = result.outcome != ClipboardReader::Outcome::overBudget;
    typesLeftOut_ = std::move(result.leftOut);
    lastRead_ = std::move(result.contents);
    forgetSoon();
  }
  changesAtRead_ = owner_->changeCount();
  std::vector<std::unique_ptr<PasteboardItem>> items;
  if (!lastRead_->empty()) items.push_back(std::make_unique<ReadItem>(*lastRead_));
  return items;
}

std::int64_t LinuxPasteboard::changeCount() {
  if (!owner_) return 0;
  owner_->settle();
  return owner_->changeCount();
}

void LinuxPasteboard::clearContents() {
  if (!owner_ || nothingIsToPutBack()) return;
  const auto paste = pasteOfPassingText();
  owner_->clear(paste);
  passingIsOver_ = true;
  if (paste && copied_) keepEmpty();
  forgetSoon();
}

std::optional<std::string> LinuxPasteboard::string() {
  if (!reader_) return std::nullopt;
  owner_->settle();
  auto text = copiedText();
  // Half a character, say, that the selection cuts. What is pasted in its place would not be what it was.
  return text && isWellFormedUtf8(*text) ? std::move(text) : std::nullopt;
}

std::optional<std::string> LinuxPasteboard::copiedText() {
  const auto copy = copyOfThisFix();
  if (!copy) return reader_->readText({kStringTime, kStringTime, budget_.bytes});
  // What the fix before has given back since is nobody's copy, also where a display tells no owners.
  if (owner_->lastChange().isOwn) return std::nullopt;
  const std::int64_t change = owner_->changeCount();
  const Clock::time_point start = Clock::now();
  auto text = reader_->readText({stringTimeLeft_, stringTimeLeft_, budget_.bytes},
                                [&](xcb_window_t owner) { return isFromCopier(owner, copy->application); });
  stringTimeLeft_ -=
      std::min(stringTimeLeft_, std::chrono::ceil<std::chrono::milliseconds>(Clock::now() - start));
  copied_ = text;
  changeOfCopy_ = text && owner_->lastChange().number == change ? change : 0;
  return text;
}

void LinuxPasteboard::setString(std::string_view text) {
  if (!owner_) return;
  stopKeepingEmpty();
  owner_->pass(passingTextContents(text));
  passing_ = PassingText{std::string(text), Clock::now()};
  passingIsOver_ = false;
  isPutBack_ = false;
}

void LinuxPasteboard::writeItems(const std::vector<PasteboardItemData>& items) {
  if (!owner_ || nothingIsToPutBack()) return;
  stopKeepingEmpty();
  ClipboardContents contents;
  for (const PasteboardItemData& item : items) {
    for (const auto& [typeName, bytes] : item) {
      ClipboardTarget target = targetOfTypeName(typeName);
      const bool known = std::any_of(contents.begin(), contents.end(),
                                     [&](const ClipboardTarget& other) { return other.name == target.name; });
      if (!known) {
        target.bytes = bytes;
        contents.push_back(std::move(target));
      }
    }
  }
  // Of fixes in quick succession the restore of the first may come after the second has pasted. What the user
  // has copied between them is what the second has read.
  const auto paste = pasteOfPassingText();
  if (paste && lastRead_) contents = *lastRead_;
  owner_->stay(std::move(contents), paste);
  isPutBack_ = copyOfThisFix().has_value();
  passingIsOver_ = true;
  forgetSoon();
}

/// Nothing outside a fix.
std::optional<PlayedShortcut> LinuxPasteboard::copyOfThisFix() const {
  auto copy = needs_.lastCopy ? needs_.lastCopy() : std::nullopt;
  return copy && copy->time >= readAt_ ? copy : std::nullopt;
}

/// What the application claims while its copy is waited for is the answer, whatever time it bears: Qt claims
/// with the time of what it has handled last, which is not the key's when it was stopped meanwhile.
OwnerThread::CopyShortcuts LinuxPasteboard::copyShortcuts(const PlayedShortcut& copy) const {
  return {copy.application, readAt_, copied_ || passing_ ? copy.time : Clock::now()};
}

std::optional<PlayedShortcut> LinuxPasteboard::pasteOfPassingText() const {
  auto paste = needs_.lastPaste ? needs_.lastPaste() : std::nullopt;
  return paste && passing_ && paste->time >= passing_->since ? paste : std::nullopt;
}

bool LinuxPasteboard::isFromManager(const XApplication& application) {
  const xcb_window_t manager = reader_->ownerOf("CLIPBOARD_MANAGER");
  return manager != XCB_WINDOW_NONE && mayBeTheSame(application, reader_->application(manager));
}

/// A clipboard manager that has taken the copy over stands for the copier.
bool LinuxPasteboard::isFromCopier(xcb_window_t owner, const XApplication& copier) {
  const XApplication application = reader_->application(owner);
  return mayBeTheSame(application, copier) || isFromManager(application);
}

/// The restore of a fix may come after a later one has begun to read. What the user has copied between them
/// is then to stay, also where the later one goes no further than that.
bool LinuxPasteboard::isCopiedSinceThePaste() {
  const auto paste = needs_.lastPaste ? needs_.lastPaste() : std::nullopt;
  if (!paste) return false;
  const OwnerThread::Change change = owner_->lastChange();
  return change.owner != XCB_WINDOW_NONE && !change.isOwn && change.claimed > paste->time &&
         !isFromManager(reader_->application(change.owner)) && !passingTextStands();
}

bool LinuxPasteboard::nothingIsToPutBack() {
  if (isPutBack_ || somebodyElseHasCopied()) return true;
  const bool hasCopied = copyOfThisFix() && owner_->changeCount() != changesAtRead_;
  return earlierIsOver_ && !hasCopied;
}

/// A clipboard manager may have taken it over: the text tells, not the owner.
bool LinuxPasteboard::passingTextStands() {
  return passing_ && !passingIsOver_ &&
         reader_->readText({budget_.takenOver, budget_.takenOver, budget_.bytes}) == passing_->text;
}

bool LinuxPasteboard::holdsPassingText() {
  return owner_ && (owner_->lastChange().isOwn || passingTextStands());
}

bool LinuxPasteboard::pasteIsUnderWay() {
  const auto paste = needs_.lastPaste ? needs_.lastPaste() : std::nullopt;
  return owner_ && paste && Clock::now() < paste->time + kPasteTime && owner_->awaitsFetch(*paste);
}

/// Of a fix only: whoever clears or writes at another time wants what is there to go.
bool LinuxPasteboard::somebodyElseHasCopied() {
  const OwnerThread::Change change = owner_->lastChange();
  if (change.isOwn || change.owner == XCB_WINDOW_NONE || change.number == changeOfCopy_) return false;
  const auto copy = copyOfThisFix();
  const bool isAnswer =
      copy && OwnerThread::isAnswerTo(copyShortcuts(*copy), change, reader_->application(change.owner));
  if (isAnswer) return false;
  if (!pasteOfPassingText() && (!copy || change.number == changesAtRead_)) return false;
  // A clipboard manager may have taken over what this fix has put there: the text tells, not the owner.
  const auto stands = reader_->readText({budget_.takenOver, budget_.takenOver, budget_.bytes});
  return stands != (pasteOfPassingText() ? std::optional(passing_->text) : copied_);
}

void LinuxPasteboard::keepEmpty() {
  stopKeepingEmpty();
  keptEmptyUntil_ = Clock::now() + kKeptEmpty;
  const auto look = [](gpointer data) -> gboolean {
    auto& self = *static_cast<LinuxPasteboard*>(data);
    if (Clock::now() < self.keptEmptyUntil_ && !self.emptyAgain()) return G_SOURCE_CONTINUE;
    self.keepingEmpty_ = 0;
    self.copied_.reset();
    return G_SOURCE_REMOVE;
  };
  keepingEmpty_ = g_timeout_add(kLookMilliseconds, look, this);
}

void LinuxPasteboard::stopKeepingEmpty() {
  if (keepingEmpty_ != 0) g_source_remove(keepingEmpty_);
  keepingEmpty_ = 0;
}

/// Whether a history has put the copied text back and it was taken away again.
bool LinuxPasteboard::emptyAgain() {
  const OwnerThread::Change change = owner_->lastChange();
  if (change.isOwn || change.owner == XCB_WINDOW_NONE) return false;
  if (!copied_) return false;
  if (reader_->readText({budget_.takenOver, budget_.takenOver, budget_.bytes}) != copied_) return false;
  owner_->stay(nothingForHistories(), std::nullopt);
  owner_->settle();
  return true;
}

void LinuxPasteboard::forgetSoon() {
  const auto idle = [](gpointer data) -> gboolean {
    auto& self = *static_cast<LinuxPasteboard*>(data);
    self.forgetting_ = 0;
    self.forget();
    return G_SOURCE_REMOVE;
  };
  if (forgetting_ == 0) forgetting_ = g_idle_add(idle, this);
}

/// The fix that has read the clipboard has ended when the main loop turns, or the text that it has written
/// stands. What was read must not stay in memory, except for what a late copy would overwrite.
void LinuxPasteboard::forget() {
  if (!passingIsOver_) return;
  const auto copy = copyOfThisFix();
  const bool waitedInVain = copy && !passing_;
  if (waitedInVain && lastRead_) {
    owner_->putBackAfter(copyShortcuts(*copy), std::move(*lastRead_));
  }
  lastRead_.reset();
  passing_.reset();
  if (keepingEmpty_ == 0) copied_.reset();
  // The C library keeps what was large and is free for what may come, several times the size of the
  // selection.
  malloc_trim(0);
}

}  // namespace lexwend::platform

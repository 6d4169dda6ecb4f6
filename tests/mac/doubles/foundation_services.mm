// SPDX-License-Identifier: MIT
// Time, the run loop and the main queue; notifications; files, defaults, dates, the bundle and the process.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>
#include <stdexcept>
#include <utility>

#include "tests/mac/doubles/support.h"
#include "tests/mac/runtime/runtime.h"

using namespace lexwend;
using namespace lexwend::doubles;
using std::chrono::microseconds;

// -------------------------------------------------------------------------------------------------------
// time

@interface NSTimer () {
 @public
  void (^block_)(NSTimer*);
  microseconds interval_;
  microseconds due_;
  BOOL repeats_;
  BOOL isValid_;
  BOOL isScheduled_;
  BOOL isInCommonModes_;
}
@end

namespace {

struct OuterEvent {
  microseconds due;
  std::function<void()> run;
};
struct QueuedWork {
  microseconds due;
  microseconds delay;
  dispatch_block_t block;
};
struct PerformedBlock {
  bool isInCommonModes;
  dispatch_block_t block;
};
struct TimeState {
  microseconds now{0};
  microseconds slept{0};
  double wallClockAtZero = 1'700'000'000;
  std::vector<OuterEvent> outer;
  std::vector<QueuedWork> queue;
  bool isMainQueueBusy = false;           // the queue is serial: inside of its work nothing else of it runs
  std::vector<PerformedBlock> performed;  // blocks that the run loop runs in its next turn
  bool isWoken = false;                   // its next turn comes at once, not with whatever happens next
  std::vector<NSTimer*> timers;           // retained while they are scheduled and valid
  bool isPanelModal = false;              // the run loop is in the mode of a modal panel
  bool isBlocked = false;                 // the main thread sleeps, and no event reaches it
  std::size_t activities = 0;
};
TimeState& timeState() {
  static auto* the = new TimeState;
  return *the;
}

void dropTimer(NSTimer* timer) {
  auto& timers = timeState().timers;
  const auto place = std::find(timers.begin(), timers.end(), timer);
  if (place == timers.end()) return;
  timers.erase(place);
  [timer release];
}

void dropTimersAndQueue() {
  while (!timeState().timers.empty()) [timeState().timers.back() invalidate];
  for (QueuedWork& work : std::exchange(timeState().queue, {})) [(id)work.block release];
  for (PerformedBlock& each : std::exchange(timeState().performed, {})) [(id)each.block release];
}
const ProcessEndHook kEndTime([] { dropTimersAndQueue(); });
const ResetHook kResetTime([] {
  dropTimersAndQueue();
  timeState() = TimeState{};
});

microseconds fromSeconds(double seconds) { return microseconds(std::llround(seconds * 1e6)); }

constexpr microseconds kNever = microseconds::max();

/// The run loop is in the mode of a modal panel or of an open menu, both of which are common modes.
bool isInModeOfItsOwn() { return timeState().isPanelModal || isMenuOpen(); }

/// An application that nobody works with naps, unless it says that it is at something: what it waits for
/// comes much later.
microseconds nap() {
  constexpr microseconds kNap = std::chrono::seconds(30);
  const bool naps = NSApp != nil && !isApplicationActive() && timeState().activities == 0;
  return naps ? kNap : microseconds(0);
}
microseconds dueOf(NSTimer* timer) { return timer->due_ + nap(); }
microseconds dueOf(const QueuedWork& work) {
  // What is due at once is no timer.
  return work.delay == microseconds(0) ? work.due : work.due + nap();
}

microseconds earliestOuter() {
  microseconds due = kNever;
  for (const OuterEvent& event : timeState().outer) due = std::min(due, event.due);
  return due;
}
/// The valid timer that is due first, of those that the run loop's present mode knows; nil when there is
/// none.
NSTimer* nextTimer() {
  NSTimer* next = nil;
  for (NSTimer* each : timeState().timers) {
    if (isInModeOfItsOwn() && !each->isInCommonModes_) continue;
    if (next == nil || dueOf(each) < dueOf(next)) next = each;
  }
  return next;
}
/// The queued work that is due first; the end of the queue when there is none or the queue is busy.
std::vector<QueuedWork>::iterator nextQueued() {
  auto& queue = timeState().queue;
  if (timeState().isMainQueueBusy) return queue.end();
  return std::min_element(queue.begin(), queue.end(),
                          [](const auto& a, const auto& b) { return dueOf(a) < dueOf(b); });
}
microseconds earliestInRunLoop() {
  microseconds due = timeState().isWoken ? timeState().now : kNever;
  if (const auto work = nextQueued(); work != timeState().queue.end()) due = std::min(due, dueOf(*work));
  if (NSTimer* timer = nextTimer()) due = std::min(due, dueOf(timer));
  return due;
}

void runOuterDue() {
  while (earliestOuter() <= timeState().now) {
    auto& outer = timeState().outer;
    const auto next = std::min_element(outer.begin(), outer.end(),
                                       [](const auto& a, const auto& b) { return a.due < b.due; });
    const auto run = std::move(next->run);
    outer.erase(next);
    run();
  }
}

/// Time passes while the main thread is blocked: only the outer world moves.
void sleepFor(microseconds duration) {
  const microseconds end = timeState().now + duration;
  const bool wasBlocked = std::exchange(timeState().isBlocked, true);
  while (earliestOuter() <= end) {
    timeState().now = std::max(timeState().now, earliestOuter());
    runOuterDue();
  }
  timeState().isBlocked = wasBlocked;
  timeState().now = end;
}

void enqueue(microseconds due, dispatch_block_t block) {
  timeState().queue.push_back({due, due - timeState().now, (dispatch_block_t)[(id)block copy]});
}

/// Those that wait for a mode that the run loop is not in stay.
void runPerformedBlocks() {
  for (PerformedBlock& each : std::exchange(timeState().performed, {})) {
    if (isInModeOfItsOwn() && !each.isInCommonModes) {
      timeState().performed.push_back(each);
      continue;
    }
    each.block();
    [(id)each.block release];
  }
}

void requireMainQueue(dispatch_queue_t queue, const char* what) {
  if ((void*)queue != (void*)dispatch_get_main_queue()) die(std::string(what) + ": not the main queue");
}

}  // namespace

namespace lexwend::doubles {

bool isMainThreadBlocked() { return timeState().isBlocked; }
void wakeRunLoop() { timeState().isWoken = true; }
void runMainQueueAndTimersDue() {
  deliverQueuedPresses();
  runOuterDue();
  while (earliestInRunLoop() <= timeState().now) {
    @autoreleasepool {
      // A turn begins with the blocks that were there before it.
      timeState().isWoken = false;
      runPerformedBlocks();
      auto& queue = timeState().queue;
      const auto work = nextQueued();
      NSTimer* timer = nextTimer();
      const microseconds workDue = work == queue.end() ? kNever : dueOf(*work);
      const microseconds timerDue = timer == nil ? kNever : dueOf(timer);
      if (std::min(workDue, timerDue) > timeState().now) {
        // The turn was for the blocks alone.
      } else if (workDue <= timerDue) {
        const dispatch_block_t block = work->block;
        queue.erase(work);
        timeState().isMainQueueBusy = true;
        block();
        timeState().isMainQueueBusy = false;
        [(id)block release];
      } else {
        [[timer retain] autorelease];
        // A timer that was held up fires once for all the times that it missed.
        timer->due_ += ((timeState().now - timer->due_) / timer->interval_ + 1) * timer->interval_;
        [timer fire];
      }
    }
    runOuterDue();
  }
}

namespace time {
void advance(microseconds duration) {
  const microseconds end = timeState().now + duration;
  runMainQueueAndTimersDue();
  for (;;) {
    const microseconds next = std::min(earliestOuter(), earliestInRunLoop());
    if (next > end) break;
    timeState().now = std::max(timeState().now, next);
    runMainQueueAndTimersDue();
  }
  // Work that slept may have gone beyond the end already.
  timeState().now = std::max(timeState().now, end);
}
void advanceInModalPanel(microseconds duration) {
  const bool wasModal = timeState().isPanelModal;
  timeState().isPanelModal = true;
  advance(duration);
  timeState().isPanelModal = wasModal;
}
void block(microseconds duration) { sleepFor(duration); }
void later(microseconds delay, std::function<void()> event) {
  timeState().outer.push_back({timeState().now + delay, std::move(event)});
}
microseconds now() { return timeState().now; }
microseconds slept() { return timeState().slept; }
std::size_t scheduledTimers() { return timeState().timers.size(); }
std::size_t pendingMainQueueWork() { return timeState().queue.size() + timeState().performed.size(); }
void setWallClock(double secondsSince1970) {
  timeState().wallClockAtZero = secondsSince1970 - static_cast<double>(timeState().now.count()) / 1e6;
}
}  // namespace time

}  // namespace lexwend::doubles

// The C library's own function gives way to this one in the program that links it.
int usleep(useconds_t duration) {
  record(std::to_string(duration));
  timeState().slept += microseconds(duration);
  sleepFor(microseconds(duration));
  return 0;
}

@implementation NSTimer
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval
                          repeats:(BOOL)repeats
                            block:(void (^)(NSTimer*))block {
  requireNonnull((void*)block);
  NSTimer* made = [[[self alloc] init] autorelease];
  made->block_ = (void (^)(NSTimer*))[(id)block copy];
  // The system replaces an interval that is not positive by a tenth of a millisecond.
  made->interval_ = std::max(fromSeconds(interval), microseconds(100));
  made->repeats_ = repeats;
  made->isValid_ = YES;
  return made;
}
+ (NSTimer*)scheduledTimerWithTimeInterval:(NSTimeInterval)interval
                                   repeats:(BOOL)repeats
                                     block:(void (^)(NSTimer*))block {
  called(decimal(interval) + ", repeats=" + truth(repeats));
  NSTimer* made = [self timerWithTimeInterval:interval repeats:repeats block:block];
  // In the default mode alone: it stands still while a modal panel or a menu is open.
  [[NSRunLoop mainRunLoop] addTimer:made forMode:NSDefaultRunLoopMode];
  return made;
}
- (void)dealloc {
  [(id)block_ release];
  [super dealloc];
}
- (void)fire {
  if (!isValid_) return;
  // The block may drop its own timer.
  [[self retain] autorelease];
  block_(self);
  if (!repeats_) [self invalidate];
}
- (void)invalidate {
  record();
  if (!isValid_) return;
  isValid_ = NO;
  // The block goes at once, even when it is the one that is running.
  [(id)block_ release];
  block_ = nil;
  dropTimer(self);
}
@end

NSRunLoopMode const NSDefaultRunLoopMode = @"kCFRunLoopDefaultMode";
NSRunLoopMode const NSRunLoopCommonModes = @"kCFRunLoopCommonModes";
@implementation NSRunLoop
+ (NSRunLoop*)mainRunLoop {
  static NSRunLoop* the = keptForever([[NSRunLoop alloc] init]);
  return the;
}
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode {
  if (!timer->isValid_) die("-[NSRunLoop addTimer:forMode:] with a timer that is no longer valid");
  record(utf8(mode));
  if ([mode isEqualToString:NSRunLoopCommonModes]) timer->isInCommonModes_ = YES;
  if (timer->isScheduled_) return;
  timer->isScheduled_ = YES;
  timer->due_ = timeState().now + timer->interval_;
  timeState().timers.push_back([timer retain]);
}
@end

extern "C" {
const CFRunLoopMode kCFRunLoopDefaultMode = CFSTR("kCFRunLoopDefaultMode");
const CFRunLoopMode kCFRunLoopCommonModes = CFSTR("kCFRunLoopCommonModes");
CFRunLoopRef CFRunLoopGetMain() { return (CFRunLoopRef)[NSRunLoop mainRunLoop]; }
CFRunLoopRef CFRunLoopGetCurrent() { return (CFRunLoopRef)[NSRunLoop currentRunLoop]; }
void CFRunLoopPerformBlock(CFRunLoopRef runLoop, CFTypeRef mode, void (^block)(void)) {
  requireNonnull(runLoop, "CFRunLoopPerformBlock: the run loop");
  requireKind(mode, [NSString class], "CFRunLoopPerformBlock: the mode");
  requireNonnull((void*)block, "CFRunLoopPerformBlock: the block");
  record(utf8((NSString*)mode));
  timeState().performed.push_back(
      {[(NSString*)mode isEqualToString:NSRunLoopCommonModes] != NO, (dispatch_block_t)[(id)block copy]});
}
void CFRunLoopWakeUp(CFRunLoopRef runLoop) {
  requireNonnull(runLoop, "CFRunLoopWakeUp: the run loop");
  record();
  wakeRunLoop();
}

// Only the queue's address is used. Its isa makes it an object that is never counted.
extern void* lexwend_constantStringClass[] __asm__("OBJC_CLASS_$_NSConstantString");
struct dispatch_queue_s {
  void* isa;
};
struct dispatch_queue_s _dispatch_main_q = {lexwend_constantStringClass};

dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta) {
  // A point in time is the session's nanoseconds, moved away from the value that means now.
  const auto now = static_cast<std::uint64_t>(timeState().now.count()) * NSEC_PER_USEC + 1;
  return (when == DISPATCH_TIME_NOW ? now : when) + static_cast<std::uint64_t>(delta);
}
void dispatch_after(dispatch_time_t when, dispatch_queue_t queue, dispatch_block_t block) {
  requireMainQueue(queue, "dispatch_after");
  requireNonnull((void*)block, "dispatch_after: the block");
  const auto due = microseconds(static_cast<std::int64_t>((when - 1) / NSEC_PER_USEC));
  record(std::to_string((due - timeState().now).count()) + " us");
  enqueue(due, block);
}
}

// ----------------------------------------------------------------------------------------------
// notifications

@implementation NSOperationQueue
+ (NSOperationQueue*)mainQueue {
  static NSOperationQueue* the = keptForever([[NSOperationQueue alloc] init]);
  return the;
}
- (void)addOperationWithBlock:(void (^)(void))block {
  enqueue(timeState().now, block);
}
@end

@interface NSNotification () {
  NSString* name_;
  id object_;
}
@end
@implementation NSNotification
+ (instancetype)notificationWithName:(NSNotificationName)name object:(id)object {
  NSNotification* made = [[self alloc] init];
  made->name_ = [name copy];
  made->object_ = [object retain];
  return [made autorelease];
}
- (void)dealloc {
  [name_ release];
  [object_ release];
  [super dealloc];
}
@end

/// The token of a block that observes; the centre keeps it until it is removed.
@interface LXWObserver : NSObject {
 @public
  __unsafe_unretained id target;  // of an observer with a selector; not kept
  SEL selector;
  BOOL isImmediate;
  BOOL isHeld;  // a notification waits for the application to be active; several become one
  NSString* name;
  NSOperationQueue* queue;
  void (^block)(NSNotification*);
}
@end
@implementation LXWObserver
- (void)dealloc {
  [name release];
  [(id)block release];
  [super dealloc];
}
@end

namespace {
std::vector<NSNotificationCenter*>& centers() {
  static auto* the = new std::vector<NSNotificationCenter*>;
  return *the;
}
}  // namespace

@interface NSNotificationCenter () {
 @public
  std::string kind_;
  std::vector<LXWObserver*> observers_;
}
@end
@implementation NSNotificationCenter
+ (NSNotificationCenter*)makeOfKind:(const char*)kind {
  NSNotificationCenter* made = keptForever([[self alloc] init]);
  made->kind_ = kind;
  centers().push_back(made);
  return made;
}
- (id<NSObject>)addObserverForName:(NSNotificationName)name
                            object:(id)object
                             queue:(NSOperationQueue*)queue
                        usingBlock:(void (^)(NSNotification*))block {
  requireNonnull((void*)block);
  record(kind_ + ", " + utf8(name) + ", object=" + (object == nil ? "nil" : "set") + ", queue=" +
         (queue == nil                            ? "nil"
          : queue == [NSOperationQueue mainQueue] ? "main"
                                                  : "other"));
  LXWObserver* observer = [[LXWObserver alloc] init];
  observer->name = [name copy];
  observer->queue = queue;
  observer->block = (void (^)(NSNotification*))[(id)block copy];
  observers_.push_back(observer);
  return [[observer retain] autorelease];
}
- (void)removeObserver:(id)observer {
  record(kind_);
  const auto place = std::find_if(observers_.begin(), observers_.end(), [&](LXWObserver* each) {
    return each == (LXWObserver*)observer || each->target == observer;
  });
  if (place == observers_.end()) return;
  LXWObserver* removed = *place;
  observers_.erase(place);
  [removed release];
}
- (void)postNotificationName:(NSNotificationName)name object:(id)object {
  @autoreleasepool {
    NSNotification* notification = [NSNotification notificationWithName:name object:object];
    for (LXWObserver* observer : std::vector<LXWObserver*>(observers_)) {
      if (observer->name != nil && ![observer->name isEqualToString:name]) continue;
      if (kind_ == "distributed" && NSApp != nil && !isApplicationActive() && !observer->isImmediate) {
        observer->isHeld = YES;
        continue;
      }
      if (observer->target != nil) {
        [observer->target performSelector:observer->selector withObject:notification];
        continue;
      }
      if (observer->queue == nil) die("an observer without a queue: it would run on the thread that posts");
      [[observer retain] autorelease];
      if (observer->queue == [NSOperationQueue mainQueue] && timeState().isMainQueueBusy) {
        enqueue(timeState().now, ^{
          observer->block(notification);
        });
      } else {
        observer->block(notification);
      }
    }
  }
}
@end
@implementation NSDistributedNotificationCenter
+ (NSDistributedNotificationCenter*)defaultCenter {
  static auto* the = (NSDistributedNotificationCenter*)[self makeOfKind:"distributed"];
  return the;
}
- (void)addObserver:(id)observer
              selector:(SEL)selector
                  name:(NSNotificationName)name
                object:(NSString*)object
    suspensionBehavior:(NSNotificationSuspensionBehavior)suspensionBehavior {
  requireNonnull(observer, "-[NSDistributedNotificationCenter addObserver:...]: the observer");
  if (![observer respondsToSelector:selector]) die("an observer that does not answer to its selector");
  if (object != nil) return;  // nobody posts with an object here
  LXWObserver* added = [[LXWObserver alloc] init];
  added->target = observer;
  added->selector = selector;
  added->isImmediate = suspensionBehavior == NSNotificationSuspensionBehaviorDeliverImmediately;
  added->name = [name copy];
  observers_.push_back(added);
}
@end

namespace lexwend::doubles {
void deliverHeldNotifications() {
  NSNotificationCenter* center = [NSDistributedNotificationCenter defaultCenter];
  for (LXWObserver* observer : std::vector<LXWObserver*>(center->observers_)) {
    if (!std::exchange(observer->isHeld, NO) || observer->target != nil) continue;
    [[observer retain] autorelease];
    const NSNotificationName name = observer->name;
    enqueue(timeState().now, ^{
      observer->block([NSNotification notificationWithName:name object:nil]);
    });
  }
}
/// The session begins with the system.
double secondsSinceStartup() { return static_cast<double>(timeState().now.count()) / 1e6; }
void postTo(NSNotificationCenter* center, NSString* name) { [center postNotificationName:name object:nil]; }
namespace workspace {
std::size_t observers() {
  std::size_t count = 0;
  for (NSNotificationCenter* center : centers()) {
    for (LXWObserver* observer : center->observers_) count += observer->target == nil ? 1 : 0;
  }
  return count;
}
}  // namespace workspace
}  // namespace lexwend::doubles
namespace {
void dropObservers() {
  for (NSNotificationCenter* center : centers()) {
    for (LXWObserver* observer : center->observers_) [observer release];
    center->observers_.clear();
  }
}
const ResetHook kResetObservers([] { dropObservers(); });
const ProcessEndHook kEndObservers([] { dropObservers(); });
}  // namespace

// ------------------------------------------------------------------------------------- the process and its
// files

namespace {
struct ProcessState {
  std::int32_t pid = 4711;
  std::optional<std::string> bundleIdentifier = "org.lexwend.Lexwend";
  std::map<std::string, Value> info{{"CFBundleShortVersionString", std::string("1.0")},
                                    {"CFBundleName", std::string("Lexwend")}};
  bool isInfoAbsent = false;
  std::string home = "/nonexistent";
  std::vector<std::string> readOnlyPaths;
  std::optional<std::chrono::minutes> eastOfGreenwich;
  int yearsAhead = 0;
  NSMutableDictionary* defaults = nil;
};
ProcessState& processState() {
  static auto* the = new ProcessState;
  return *the;
}
const ResetHook kResetProcess([] {
  [processState().defaults release];
  processState() = ProcessState{};
});
NSMutableDictionary* storedDefaults() {
  if (processState().defaults == nil) processState().defaults = [[NSMutableDictionary alloc] init];
  return processState().defaults;
}
}  // namespace

namespace lexwend::doubles::process {
void setIdentifier(std::int32_t pid) { processState().pid = pid; }
void setBundleIdentifier(const std::optional<std::string>& identifier) {
  processState().bundleIdentifier = identifier;
}
void setInfo(const std::string& key, const Value& value) { processState().info[key] = value; }
void infoIsAbsent() { processState().isInfoAbsent = true; }
void setHomeDirectory(const std::string& path) { processState().home = path; }
void setLocalTime(std::chrono::minutes eastOfGreenwich, int yearsAhead) {
  processState().eastOfGreenwich = eastOfGreenwich;
  processState().yearsAhead = yearsAhead;
}
std::size_t activities() { return timeState().activities; }
void setReadOnly(const std::string& path) { processState().readOnlyPaths.push_back(path); }
}  // namespace lexwend::doubles::process

bool lexwend::doubles::isReadOnly(const std::string& path) {
  const auto& paths = processState().readOnlyPaths;
  return std::find(paths.begin(), paths.end(), path) != paths.end();
}

namespace lexwend::doubles::defaults {
void set(const std::string& key, const Value& value) {
  @autoreleasepool {
    [storedDefaults() setObject:objectOf(value) forKey:string(key)];
  }
}
std::optional<Value> get(const std::string& key) {
  @autoreleasepool {
    const id stored = [storedDefaults() objectForKey:string(key)];
    if (stored == nil) return std::nullopt;
    return valueOf(stored);
  }
}
}  // namespace lexwend::doubles::defaults

@implementation NSUserDefaults
+ (NSUserDefaults*)standardUserDefaults {
  record();
  static NSUserDefaults* the = keptForever([[NSUserDefaults alloc] init]);
  return the;
}
- (id)objectForKey:(NSString*)key {
  requireKind(key, [NSString class]);
  record(utf8(key));
  return [[[storedDefaults() objectForKey:key] retain] autorelease];
}
- (BOOL)boolForKey:(NSString*)key {
  requireKind(key, [NSString class]);
  record(utf8(key));
  const id stored = [storedDefaults() objectForKey:key];
  if ([stored isKindOfClass:[NSNumber class]]) return [stored boolValue];
  if ([stored isKindOfClass:[NSString class]]) {
    return utf8(stored) == "YES" || utf8(stored) == "true" || [stored integerValue] != 0;
  }
  return NO;
}
- (void)setInteger:(NSInteger)value forKey:(NSString*)key {
  requireKind(key, [NSString class]);
  record(std::to_string(value) + ", " + utf8(key));
  [storedDefaults() setObject:[NSNumber numberWithInteger:value] forKey:key];
}
- (void)setBool:(BOOL)value forKey:(NSString*)key {
  requireKind(key, [NSString class]);
  record(truth(value) + ", " + utf8(key));
  [storedDefaults() setObject:[NSNumber numberWithBool:value] forKey:key];
}
@end

@implementation NSFileManager
+ (NSFileManager*)defaultManager {
  record();
  static NSFileManager* the = keptForever([[NSFileManager alloc] init]);
  return the;
}
- (NSURL*)homeDirectoryForCurrentUser {
  record();
  return [NSURL fileURLWithPath:string(processState().home)];
}
@end
NSString* NSHomeDirectory() { return string(processState().home); }

@interface NSFileHandle () {
  std::FILE* file_;
}
@end
@implementation NSFileHandle
+ (instancetype)fileHandleForWritingToURL:(NSURL*)url error:(NSError**)error {
  requireKind(url, [NSURL class]);
  record(utf8(url.path));
  // Neither creates the file nor cuts it; the position is its beginning.
  const bool isRefused = isReadOnly(utf8(url.path)) || takeFailure();
  std::FILE* file = isRefused ? nullptr : std::fopen(utf8(url.path).c_str(), "r+b");
  if (file == nullptr) {
    if (error != nullptr) *error = [NSError errorWithDomain:NSCocoaErrorDomain code:4 userInfo:nil];
    return nil;
  }
  NSFileHandle* made = [[self alloc] init];
  made->file_ = file;
  return [made autorelease];
}
- (void)dealloc {
  if (file_ != nullptr) std::fclose(file_);
  [super dealloc];
}
static std::FILE* openFile(NSFileHandle* handle, const char* what) {
  if (handle->file_ == nullptr) die(std::string(what) + " on a closed file handle");
  return handle->file_;
}
- (unsigned long long)seekToEndOfFile {
  record();
  std::fseek(openFile(self, "-[NSFileHandle seekToEndOfFile]"), 0, SEEK_END);
  return (unsigned long long)std::ftell(file_);
}
- (void)writeData:(NSData*)data {
  requireKind(data, [NSData class]);
  record(std::to_string(data.length) + " bytes");
  std::FILE* file = openFile(self, "-[NSFileHandle writeData:]");
  // The real one raises an exception here, which unwinds as one of C++.
  if (takeFailure()) {
    throw std::runtime_error("-[NSFileHandle writeData:] raised");
  }
  if (std::fwrite(data.bytes, 1, data.length, file) != data.length) die("-[NSFileHandle writeData:] failed");
}
- (BOOL)closeAndReturnError:(NSError**)error {
  record();
  const bool isClosed =
      std::fclose(openFile(self, "-[NSFileHandle closeAndReturnError:]")) == 0 && !takeFailure();
  file_ = nullptr;
  if (!isClosed && error != nullptr) {
    *error = [NSError errorWithDomain:NSPOSIXErrorDomain code:5 userInfo:nil];
  }
  return isClosed;
}
@end

@interface NSDate () {
  double secondsSince1970_;
}
@end
@implementation NSDate
+ (instancetype)date {
  return [self dateWithTimeIntervalSinceNow:0];
}
+ (instancetype)dateWithTimeIntervalSince1970:(NSTimeInterval)seconds {
  NSDate* made = [[self alloc] init];
  made->secondsSince1970_ = seconds;
  return [made autorelease];
}
+ (instancetype)dateWithTimeIntervalSinceNow:(NSTimeInterval)seconds {
  const double now = timeState().wallClockAtZero + static_cast<double>(timeState().now.count()) / 1e6;
  return [self dateWithTimeIntervalSince1970:now + seconds];
}
- (NSTimeInterval)timeIntervalSince1970 {
  return secondsSince1970_;
}
@end

@implementation NSFormatter
@end

@interface NSDateFormatter () {
  NSString* format_;
}
@end
@implementation NSDateFormatter
- (void)dealloc {
  [format_ release];
  [super dealloc];
}
- (void)setDateFormat:(NSString*)format {
  record(utf8(format));
  [format_ release];
  format_ = [format copy];
}
/// Numbers in the fields of the pattern, each run of one letter a field of that many digits.
- (NSString*)stringFromDate:(NSDate*)date {
  requireKind(date, [NSDate class]);
  // To the microsecond: a number of this size holds no more than that.
  constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;
  const std::int64_t moment = std::llround(date.timeIntervalSince1970 * 1e6);
  const std::int64_t whole = moment / kMicrosecondsPerSecond - (moment % kMicrosecondsPerSecond < 0 ? 1 : 0);
  const double fraction = static_cast<double>(moment - whole * kMicrosecondsPerSecond) / 1e6;
  std::tm local{};
  if (const auto shift = processState().eastOfGreenwich) {
    const std::time_t seconds = whole + std::chrono::seconds(*shift).count();
    gmtime_r(&seconds, &local);
  } else {
    const std::time_t seconds = whole;
    localtime_r(&seconds, &local);
  }
  const std::string pattern = utf8(format_);
  std::string text;
  for (std::size_t i = 0; i < pattern.size();) {
    const char letter = pattern[i];
    std::size_t end = i;
    while (end < pattern.size() && pattern[end] == letter) ++end;
    const int width = static_cast<int>(end - i);
    int number = -1;
    switch (letter) {
      case 'y':
        number = local.tm_year + 1900 + processState().yearsAhead;
        break;
      case 'M':
        number = local.tm_mon + 1;
        break;
      case 'd':
        number = local.tm_mday;
        break;
      case 'H':
        number = local.tm_hour;
        break;
      case 'm':
        number = local.tm_min;
        break;
      case 's':
        number = local.tm_sec;
        break;
      case 'S':
        number = static_cast<int>(fraction * std::pow(10, width) + 1e-6);
        break;
      default:
        if ((letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || letter == '\'') {
          die(std::string("a date field that the doubles do not know: ") + letter);
        }
        text += pattern.substr(i, end - i);
    }
    if (number >= 0) {
      char field[16];
      std::snprintf(field, sizeof field, "%0*d", width, number);
      text += field;
    }
    i = end;
  }
  return string(text);
}
@end

@implementation NSBundle
+ (NSBundle*)mainBundle {
  record();
  static NSBundle* the = keptForever([[NSBundle alloc] init]);
  return the;
}
- (NSString*)bundleIdentifier {
  record();
  return processState().bundleIdentifier ? string(*processState().bundleIdentifier) : nil;
}
- (NSDictionary*)infoDictionary {
  record();
  if (processState().isInfoAbsent) return nil;
  NSMutableDictionary* info = [NSMutableDictionary dictionary];
  for (const auto& [key, value] : processState().info) {
    if (const id object = objectOf(value)) [info setObject:object forKey:string(key)];
  }
  return info;
}
@end

/// One that nobody ends ends with its last reference.
@interface LXWActivity : NSObject {
 @public
  BOOL holdsOffNaps;
}
- (void)end;
@end
@implementation LXWActivity
- (void)end {
  if (std::exchange(holdsOffNaps, NO) && timeState().activities > 0) --timeState().activities;
}
- (void)dealloc {
  [self end];
  [super dealloc];
}
@end

@implementation NSProcessInfo
+ (NSProcessInfo*)processInfo {
  record();
  static NSProcessInfo* the = keptForever([[NSProcessInfo alloc] init]);
  return the;
}
- (int)processIdentifier {
  record();
  return processState().pid;
}
- (id<NSObject>)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason {
  requireKind(reason, [NSString class], "-[NSProcessInfo beginActivityWithOptions:reason:]: the reason");
  if ((options & NSActivityIdleSystemSleepDisabled) != 0) die("an activity that keeps the computer awake");
  LXWActivity* activity = [[[LXWActivity alloc] init] autorelease];
  activity->holdsOffNaps = (options & NSActivityUserInitiatedAllowingIdleSystemSleep) ==
                           NSActivityUserInitiatedAllowingIdleSystemSleep;
  if (activity->holdsOffNaps) ++timeState().activities;
  return activity;
}
- (void)endActivity:(id<NSObject>)activity {
  requireKind(activity, [LXWActivity class]);
  [(LXWActivity*)activity end];
}
@end

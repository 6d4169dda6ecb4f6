// SPDX-License-Identifier: MIT
#include "platform/mac/files.h"

#import <Foundation/Foundation.h>

#include "platform/mac/cf_text.h"

namespace lexwend::platform::mac {
namespace {

NSData* nsData(std::string_view bytes) { return [NSData dataWithBytes:bytes.data() length:bytes.size()]; }

/// Null when the path is no UTF-8. Said to be no folder, so that nobody asks the disk.
NSURL* fileUrl(const std::string& path) {
  const CFRef<CFStringRef> text = cfText(path);
  if (!text) return nil;
  return [NSURL fileURLWithPath:(__bridge NSString*)text.get() isDirectory:NO];
}

/// The two plain operations raise an exception of the system when the disk refuses (full, gone, read-only).
/// The 64-bit runtime unwinds those as C++ exceptions, so that they can be ended here: a lost write is
/// silent.
template <typename Operation>
void givingUpSilently(const Operation& operation) noexcept {
  try {
    operation();
  } catch (...) {
  }
}

class MacFileHandle : public FileHandle {
 public:
  explicit MacFileHandle(NSFileHandle* handle) : handle_(handle) {}
  void seekToEndOfFile() override {
    givingUpSilently([this] { [handle_ seekToEndOfFile]; });
  }
  void write(std::string_view bytes) override {
    givingUpSilently([this, bytes] { [handle_ writeData:nsData(bytes)]; });
  }
  bool close() override { return [handle_ closeAndReturnError:nil]; }

 private:
  NSFileHandle* handle_;  ///< closes its file when it goes
};

}  // namespace

std::string MacFiles::homeDirectoryForCurrentUser() {
  NSString* path = [[[NSFileManager defaultManager] homeDirectoryForCurrentUser] path];
  return path == nil ? std::string() : utf8((__bridge CFStringRef)path);
}

std::unique_ptr<FileHandle> MacFiles::fileHandleForWriting(const std::string& path) {
  NSURL* url = fileUrl(path);
  if (url == nil) return nullptr;
  NSFileHandle* handle = [NSFileHandle fileHandleForWritingToURL:url error:nil];
  if (handle == nil) return nullptr;
  return std::make_unique<MacFileHandle>(handle);
}

bool MacFiles::writeWholeFile(const std::string& path, std::string_view bytes) {
  NSURL* url = fileUrl(path);
  if (url == nil) return false;
  constexpr NSDataWritingOptions kNoOptions = 0;
  return [nsData(bytes) writeToURL:url options:kNoOptions error:nil];
}

}  // namespace lexwend::platform::mac

// SPDX-License-Identifier: MIT
// The objects behind the opaque handles of the C interfaces.
#pragma once

#include <memory>
#include <optional>

#include "tests/mac/doubles/support.h"

@interface LXWAccessibilityElement : NSObject {
 @public
  BOOL isSystemWide;
  std::shared_ptr<void> identity;  // what a test calls it, when it answers itself
}
@end

@interface LXWInputSource : NSObject {
 @public
  lexwend::doubles::input_sources::Source source;
  std::size_t index;
  NSMutableDictionary* properties;  // answers are owned by the source, as a Get function says
}
@end

@interface LXWEventSource : NSObject {
 @public
  std::int32_t state;
}
@end

@interface LXWKeyEvent : NSObject {
 @public
  lexwend::doubles::key_events::Posted event;
}
@end

/// A Core Graphics colour made of a named colour.
@interface LXWColorValue : NSObject {
 @public
  std::string name;
}
@end

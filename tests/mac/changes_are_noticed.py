#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Changes the macOS host in one place at a time and shows that a test then fails.

usage: changes_are_noticed.py BUILD_DIRECTORY [WORD]   (the build must be up to date; WORD picks changes by file)

Each change is compiled outside of the sources and linked in front of the unchanged host, so nothing in the tree and in
the build is touched. Ends with 1 when a change went unnoticed, with 2 when one no longer fits the sources.
"""
import pathlib
import shlex
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
HOST = ROOT / "platform" / "mac"
# The programs that may notice, asked in this order, and what each is told to run.
TESTS = {"mac_host_test": [], "lexwend_contract_mac": [], "mac_agent_test": [],
         "mac_scenarios": sorted(map(str, (ROOT / "tests" / "scenarios").glob("*.scenario")))}

CHANGES = [
    ("input_sources.mm", "return kTISPropertyInputSourceLanguages;", "return kTISPropertyInputSourceID;"),
    ("input_sources.mm", "if (filter.isEnabled)\n", "if (false)\n"),
    ("input_sources.mm", "TISCreateInputSourceList(properties.get(), includeAllInstalled)",
     "TISCreateInputSourceList(properties.get(), !includeAllInstalled)"),
    ("input_sources.mm", "CFGetTypeID(element) != CFStringGetTypeID()", "false"),
    ("input_sources.mm", "if (CFGetTypeID(value) != CFDataGetTypeID()) return MistypedProperty{};", ""),
    ("input_sources.mm", "CFRef<TISInputSourceRef>::share(source)", "CFRef<TISInputSourceRef>::adopt(source)"),
    ("input_sources.mm", "CFRef<TISInputSourceRef>::adopt(TISCopyCurrent", "CFRef<TISInputSourceRef>::share(TISCopyCurrent"),
    ("input_sources.mm", "if (status != noErr) return std::nullopt;", ""),
    ("input_sources.mm", "TISSelectInputSource(tisSource(source));", "(void)source;"),
    ("input_sources.mm", "kTISNotifyEnabledKeyboardInputSourcesChanged", "kTISNotifySelectedKeyboardInputSourceChanged"),
    ("input_sources.mm", "[NSDistributedNotificationCenter defaultCenter]", "[NSNotificationCenter defaultCenter]"),
    ("input_sources.mm", "number(translation.modifiers) >> kModifierShift,", "0,"),
    ("accessibility.mm", "kCFBooleanTrue", "kCFBooleanFalse"),
    ("accessibility.mm", "if (type == AXUIElementGetTypeID())", "if (type != CFStringGetTypeID())"),
    ("accessibility.mm", "if (error != kAXErrorSuccess) return {.error = error, .value = {}};", ""),
    ("accessibility.mm", "const auto value = CFRef<CFTypeRef>::adopt(copied);", "const auto value = CFRef<CFTypeRef>::share(copied);"),
    ("accessibility.mm", "CFRef<AXUIElementRef>::adopt(AXUIElementCreateSystemWide())",
     "CFRef<AXUIElementRef>::share(AXUIElementCreateSystemWide())"),
    ("key_events.mm", "CGEventSetFlags(event_.get(), number(flags));", "CGEventSetFlags(event_.get(), number(flags) | 0x100);"),
    ("key_events.mm", "CGEventSourceFlagsState(static_cast<CGEventSourceStateID>(state))",
     "CGEventSourceFlagsState(kCGEventSourceStateHIDSystemState)"),
    ("key_events.mm", "CGEventSourceCreate(static_cast<CGEventSourceStateID>(state))",
     "CGEventSourceCreate(kCGEventSourceStateCombinedSessionState)"),
    ("key_events.mm", "CGEventPost(static_cast<CGEventTapLocation>(tap),", "CGEventPost(kCGSessionEventTap,"),
    ("key_events.mm", "(from, code, keyDown)", "(from, code, true)"),
    ("hot_key_service.mm", "kEventHotKeyPressed}", "kEventHotKeyReleased}"),
    ("hot_key_service.mm", "InstallEventHandler(GetApplicationEventTarget()", "InstallEventHandler(GetEventDispatcherTarget()"),
    ("hot_key_service.mm", "GetApplicationEventTarget(), kEventHotKeyNoOptions", "GetEventDispatcherTarget(), kEventHotKeyNoOptions"),
    ("hot_key_service.mm", "kEventHotKeyNoOptions, &registration", "kEventHotKeyExclusive, &registration"),
    ("hot_key_service.mm", "kEventParamDirectObject", "0"),
    ("hot_key_service.mm", "if (status == noErr) out", "out"),
    ("hot_key_service.mm", "UnregisterEventHotKey(registration);", "(void)registration;"),
    ("pasteboard.mm", "[pasteboard_ clearContents];", ""),
    ("pasteboard.mm", "stringForType:NSPasteboardTypeString", "stringForType:NSPasteboardTypeHTML"),
    ("pasteboard.mm", "forType:NSPasteboardTypeString];", "forType:NSPasteboardTypeRTF];"),
    ("pasteboard.mm", "[pasteboard_ writeObjects:written];",
     "for (NSPasteboardItem* each in written) [pasteboard_ writeObjects:@[ each ]];"),
    ("pasteboard.mm", "if (data == nil) return std::nullopt;", ""),
    ("status_item.mm", "[image_ setTemplate:isTemplate];", "(void)isTemplate;"),
    ("status_item.mm", "item_.target = NSApp;", ""),
    ("status_item.mm", "menu_.autoenablesItems = autoenables;", "(void)autoenables;"),
    ("status_item.mm", "[[NSStatusBar systemStatusBar] removeStatusItem:item_];", ""),
    ("status_item.mm", "statusItemWithLength:length", "statusItemWithLength:NSVariableStatusItemLength"),
    ("status_item.mm", "items_.push_back(item);", ""),
    ("status_item.mm", "const auto action = action_;\n  lexwend::platform::mac::guarded(*action);", "(*action_)();"),
    ("recorder_window.mm", "mask |= NSWindowStyleMaskClosable;", "mask |= NSWindowStyleMaskResizable;"),
    ("recorder_window.mm", "window.level = look.level;", ""),
    ("recorder_window.mm", "window.releasedWhenClosed = look.releasedWhenClosed;", ""),
    ("recorder_window.mm", "if (look.centered) [window center];", ""),
    ("recorder_window.mm", "[NSColor quaternaryLabelColor]", "[NSColor tertiaryLabelColor]"),
    ("recorder_window.mm", "label.layer.cornerRadius = look.cornerRadius;", ""),
    ("recorder_window.mm", "self.window.delegate = self;", ""),
    ("recorder_window.mm", "return NSTextAlignmentRight;", "return NSTextAlignmentLeft;"),
    ("recorder_window.mm", "[controller_.window makeKeyAndOrderFront:nil];", ""),
    ("recorder_window.mm", "[controller_ showWindow:nil];", ""),
    ("recorder_window.mm", "~MacRecorderWindow() override { [controller_ abandonWindow]; }", "~MacRecorderWindow() override {}"),
    ("key_monitor.mm", "NSEventMaskKeyDown", "NSEventMaskKeyUp"),
    ("key_monitor.mm", "[NSEvent removeMonitor:monitor];", "(void)monitor;"),
    ("key_monitor.mm", "? nil : event", "? event : nil"),
    ("alerts.mm", "window.informativeText =", "window.messageText ="),
    ("workspace.mm", "[[NSWorkspace sharedWorkspace] notificationCenter]", "[NSNotificationCenter defaultCenter]"),
    ("workspace.mm", "NSWorkspaceDidWakeNotification", "NSWorkspaceWillSleepNotification"),
    ("workspace.mm", "queue:[NSOperationQueue mainQueue]", "queue:nil"),
    ("input_sources.mm", "queue:[NSOperationQueue mainQueue]", "queue:nil"),
    ("workspace.mm", "[[NSWorkspace sharedWorkspace] openURL:static_cast<const MacUrl&>(*url).get()];", "(void)url;"),
    ("login_item.mm", "return [[SMAppService mainAppService] registerAndReturnError:nil];",
     "return [[SMAppService mainAppService] unregisterAndReturnError:nil];"),
    ("login_item.mm", "return LoginItemStatus::requiresApproval;", "return LoginItemStatus::enabled;"),
    ("user_defaults.mm", "if (type == CFBooleanGetTypeID())", "if (false)"),
    ("user_defaults.mm", "!CFNumberIsFloatType(number) && ", ""),
    ("user_defaults.mm", "return defaultsNumber(real)", "return real"),
    ("user_defaults.mm", "[defaults_ setBool:value", "[defaults_ setInteger:value"),
    ("run_loop.mm", "addTimer:scheduled forMode:NSRunLoopCommonModes", "addTimer:scheduled forMode:NSDefaultRunLoopMode"),
    ("run_loop.mm", "repeats:YES", "repeats:NO"),
    ("run_loop.mm", "[scheduled invalidate];", "(void)scheduled;"),
    ("run_loop.mm", "usleep(static_cast<useconds_t>(duration.count()));", "(void)duration;"),
    ("run_loop.mm", "const auto running = kept;\n      guarded(*running);", "(*kept)();"),
    ("application.mm", "application_.delegate = delegate_;", ""),
    ("application.mm", "setActivationPolicy:static_cast<NSApplicationActivationPolicy>(policy)", "setActivationPolicy:NSApplicationActivationPolicyRegular"),
    ("application.mm", "if (![value isKindOfClass:[NSString class]]) return std::nullopt;", ""),
    ("application.mm", "activateIgnoringOtherApps:ignoringOtherApps", "activateIgnoringOtherApps:NO"),
    ("application.mm", "NSBeep();", ""),
    ("running_applications.mm", "application.processIdentifier", "0"),
    ("files.mm", "[handle_ seekToEndOfFile];", ""),
    ("files.mm", "return [handle_ closeAndReturnError:nil];", "return true;"),
    ("files.mm", "fileHandleForWritingToURL:url error:nil", "fileHandleForUpdatingURL:url error:nil"),
    ("files.mm", "constexpr NSDataWritingOptions kNoOptions = 0;", "constexpr NSDataWritingOptions kNoOptions = NSDataWritingWithoutOverwriting;"),
    ("date_formatter.mm", "formatter_.dateFormat =", "NSString* unused __attribute__((unused)) ="),
    ("secure_input.mm", "return IsSecureEventInputEnabled();", "return false;"),
    ("cf_text.mm", "scalar = kReplacementCharacter;", "scalar = '?';"),
    ("input_sources.mm", " || CFGetTypeID(list.get()) != CFArrayGetTypeID()", ""),
    ("files.mm", "isDirectory:NO", "isDirectory:YES"),
    ("files.mm", " isDirectory:NO", ""),
    ("application.mm", "@autoreleasepool {\n      [application_ run];\n    }", "[application_ run];"),
    ("pasteboard.mm", "@autoreleasepool {\n      NSData* data", "{\n      NSData* data"),
    ("pasteboard.mm", "@autoreleasepool {\n      // A pasteboard item", "{\n      // A pasteboard item"),
    ("recorder_window.mm", "[controller_ showWindow:nil];\n    [controller_.window makeKeyAndOrderFront:nil];",
     "[controller_.window makeKeyAndOrderFront:nil];\n    [controller_ showWindow:nil];"),
    ("recorder_window.mm", "save:(id)sender {\n  [self outliveThisEvent];", "save:(id)sender {"),
    ("recorder_window.mm", "cancel:(id)sender {\n  [self outliveThisEvent];", "cancel:(id)sender {"),
    ("recorder_window.mm", "closed_ = YES;\n  [self outliveThisEvent];", "closed_ = YES;"),
    ("run_loop.mm", "[NSRunLoop mainRunLoop]", "[NSRunLoop currentRunLoop]"),
    ("run_loop.mm", "CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopCommonModes, ^{\n        guarded(*kept);\n      });",
     "guarded(*kept);"),
    ("run_loop.mm", "CFRunLoopGetMain(), kCFRunLoopCommonModes", "CFRunLoopGetMain(), kCFRunLoopDefaultMode"),
    ("run_loop.mm", "CFRunLoopWakeUp(CFRunLoopGetMain());", ""),
]


def commands(build, target):
    text = subprocess.run(["ninja", "-C", build, "-t", "commands", target], check=True, capture_output=True, text=True)
    return text.stdout.splitlines()


def compile_command(build, name, source, output):
    """How the build compiles that file, for a changed copy of it."""
    for command in commands(build, "mac_host_test"):
        if f" -c {HOST / name} " in command:
            words = shlex.split(command.split(" && ")[1])
            words = words[: words.index("-o")]
            for option in ("-MD", "-MF"):
                at = words.index(option)
                del words[at : at + (2 if option == "-MF" else 1)]
            words[words.index("-c") + 1] = str(source)
            # Some changes leave something unused or shadowed behind, which is not the question here.
            return [word for word in words if word != "ccache"] + ["-w", "-o", str(output)]
    sys.exit(f"the build does not compile {name}")


def link_command(build, test, changed, output):
    command = next(c for c in reversed(commands(build, test)) if f"-o tests/mac/{test} " in c)
    words = shlex.split(command.split(" && ")[1])
    at = words.index("-o")
    words[at + 1] = str(output)
    return words[:at] + [str(changed)] + words[at:]


def main():
    build = sys.argv[1]
    picked = sys.argv[2] if len(sys.argv) > 2 else ""
    known = [t for t in TESTS if any(f"-o tests/mac/{t} " in c for c in commands(build, "all"))]
    unnoticed, unfit = [], []
    changes = [change for change in CHANGES if picked in change[0]]
    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        for name, before, after in changes:
            title = f"{name}: {' '.join(before.split())[:60]} -> {' '.join(after.split())[:60] or '(nothing)'}"
            text = (HOST / name).read_text(encoding="utf-8")
            if before not in text:
                unfit.append(title + "  (not there)")
                continue
            source, changed = folder / name, folder / (name + ".o")
            source.write_text(text.replace(before, after), encoding="utf-8")
            compiled = subprocess.run(compile_command(build, name, source, changed), capture_output=True, text=True, cwd=build)
            if compiled.returncode != 0:
                unfit.append(title + "  (does not compile)\n" + compiled.stderr[:500])
                continue
            noticed = None
            for test in known:
                program = folder / test
                subprocess.run(link_command(build, test, changed, program), check=True, cwd=build)
                run = subprocess.run([str(program), "--gtest_brief=1", *TESTS[test]], capture_output=True, text=True,
                                     errors="replace", timeout=120)
                if run.returncode != 0:
                    noticed = test
                    break
            print(f"{'noticed by ' + noticed if noticed else 'UNNOTICED':32} {title}", flush=True)
            if noticed is None:
                unnoticed.append(title)
    print(f"{len(changes)} changes: {len(unnoticed)} unnoticed, {len(unfit)} unfit")
    for title in unfit:
        print("UNFIT " + title)
    return 1 if unnoticed else 2 if unfit else 0


if __name__ == "__main__":
    sys.exit(main())
